#pragma once

#include <string>

namespace toolkit {

class Control;
class ComboBox;
class Form;
class VScrollBar;

// Keys a user presses, with the toolkit's key codes.
enum class Key { Enter = 13, Tab = 9, Backspace = 8, Delete = 46, Escape = 27 };

// What a user does, played on the forms model as the toolkit would deliver it: the screen adapter
// forwards real input through these, and the scenario runner plays script lines through them.
// Each fails with base::Error when the control cannot take the action (hidden, disabled).
namespace input {

// One character typed at the caret of the box that has the focus: KeyDown, KeyPress, and unless the
// key was swallowed, the edit. The screen adapter calls it for each key the user types.
void press(Control& box, int codePoint);
// A click: the focus moves to a control that can take it, then Click (an option is selected first;
// a check box is toggled, which fires it).
void click(Control& control);
// The focus, with LostFocus on the old holder and GotFocus on the new one.
void focus(Control& control);
// Typing: focus, then for each character KeyDown, KeyPress, and unless the key was swallowed (0), the
// edit at the caret, which fires Change.
void type(Control& box, const std::string& text);
// One key: Enter and Escape go through KeyPress; Backspace through KeyPress and then deletes; Delete
// through KeyDown and then deletes; Tab moves the focus to the next control in tab order.
void key(Control& control, Key key);
// Clearing a box as a user does: focus, select the whole text, Delete.
void clear(Control& box);
// Choosing an item of a combo's list: focus, then the item's text in the box and Click.
void choose(ComboBox& combo, const std::string& item);
// Moving a scroll bar's thumb.
void scroll(VScrollBar& bar, int value);
// During a drag, the pointer at (x, y) in the form's coordinates: DragOver on the control under it,
// with the point in that control's coordinates. Nothing when no drag is under way.
void dragOver(Form& form, double x, double y, int state);
// The drop at (x, y): DragDrop on the control under it; the drag ends.
void dragDrop(Form& form, double x, double y);

}  // namespace input
}  // namespace toolkit
