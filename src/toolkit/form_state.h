#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "toolkit/control.h"

// What a form shows, kept as plain values and put back later: every property of every control, the
// loaded elements of its control arrays, and the focus. Putting back fires no event (no Change, Click,
// GotFocus or LostFocus): it is the screen as it was, not input. Observers hear of every property put
// back, so a screen adapter mirrors it as any other change.
namespace toolkit {

// Every property of one control, the ones of its kind included.
struct ControlState {
    double left = 0, top = 0, width = 0, height = 0;
    bool visible = true, enabled = true;
    Colour backColor = 0, foreColor = 0;
    std::string caption, tag, toolTip, linkItem, fontName;
    double fontSize = 0;
    bool fontBold = false;
    int mousePointer = 0, tabIndex = -1;
    bool tabStop = true, border = false;
    // Text boxes and combo boxes.
    std::string text;
    int maxLength = 0, selStart = 0, selLength = 0;
    bool multiLine = false;
    // Lists.
    std::vector<std::string> items;
    int listIndex = -1;
    // Option buttons.
    bool value = false;
    // Scroll bars.
    int min = 0, max = 0, barValue = 0, smallChange = 0, largeChange = 0;
    // Lines.
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;

    bool operator==(const ControlState&) const = default;
};

// A control of a form by name, and its index in its control array (-1 outside one).
using ControlKey = std::pair<std::string, int>;

struct FormState {
    // A control's state is shared by the captures in which it did not change: a history of many
    // captures of one screen holds each state once.
    std::map<ControlKey, std::shared_ptr<const ControlState>> controls;  // the form itself: its name, -1
    ControlKey focus{"", -1};  // empty name: no control had the focus

    // Equal when every control's state is, shared or not.
    bool operator==(const FormState& other) const;
    // The loaded elements of one control array, the model included, by index.
    std::map<int, const ControlState*> elements(const std::string& array) const;
};

// Every control of the form as it stands. A state equal to the one `previous` holds for the same control
// is shared with it rather than copied.
FormState captureForm(const Form& form, const FormState* previous = nullptr);

// Puts back what differs between `from` and `to` as `to` has it: the controls whose state differs, the
// array elements loaded in one and not in the other (loaded or unloaded), and the focus when it moved.
// What is the same in both stays as the form has it now, so that what changed meanwhile elsewhere is
// kept. A state of another form, naming a control this one lacks, fails with base::Error.
void restoreForm(Form& form, const FormState& to, const FormState& from);

}  // namespace toolkit
