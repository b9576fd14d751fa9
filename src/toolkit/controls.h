#pragma once

#include <string>
#include <vector>

#include "toolkit/control.h"

namespace toolkit {

class Label : public Control {
public:
    Label(std::string name, Control* parent) : Control(Kind::Label, std::move(name), parent) {
        setTabStop(false);
    }
};

class Frame : public Control {
public:
    Frame(std::string name, Control* parent) : Control(Kind::Frame, std::move(name), parent) {
        setTabStop(false);
    }
};

class CommandButton : public Control {
public:
    CommandButton(std::string name, Control* parent)
        : Control(Kind::CommandButton, std::move(name), parent) {}
};

// A text box. A write of Text from code fires Change at once when the text differs.
class TextBox : public Control {
public:
    TextBox(std::string name, Control* parent) : Control(Kind::TextBox, std::move(name), parent) {}
    const std::string& text() const { return m_text; }
    void setText(const std::string& text);
    // Several lines, with a vertical scroll bar, instead of one.
    bool multiLine() const { return m_multiLine; }
    void setMultiLine(bool v) { m_multiLine = v; }
    // Characters, 0 for no limit; typing stops at the limit, code may write more.
    int maxLength() const { return m_maxLength; }
    void setMaxLength(int n) { m_maxLength = n; }
    // Caret and selection, in characters.
    int selStart() const { return m_selStart; }
    int selLength() const { return m_selLength; }
    void setSelection(int start, int length);
    void copyFrom(const Control& model) override;
    void saveState(ControlState& state) const override;
    void restoreState(const ControlState& state) override;

private:
    std::string m_text;
    int m_maxLength = 0;
    bool m_multiLine = false;
    int m_selStart = 0, m_selLength = 0;
};

// A list of texts with a current index (-1 for none).
class ListControl : public Control {
public:
    using Control::Control;
    const std::vector<std::string>& items() const { return m_items; }
    int listCount() const { return static_cast<int>(m_items.size()); }
    const std::string& list(int i) const;
    void addItem(const std::string& item);
    // Removes every item; the index becomes -1.
    void clear();
    int listIndex() const { return m_listIndex; }
    // Selects an item (or none with -1); fires Click when the index changes to an item.
    virtual void setListIndex(int index);
    int find(const std::string& item) const;
    void copyFrom(const Control& model) override;
    void saveState(ControlState& state) const override;
    void restoreState(const ControlState& state) override;

protected:
    std::vector<std::string> m_items;
    int m_listIndex = -1;
};

class ListBox : public ListControl {
public:
    ListBox(std::string name, Control* parent) : ListControl(Kind::ListBox, std::move(name), parent) {}
};

// A combo box with an editable text. Choosing an item writes its text into the box without Change, then
// fires Click; a write of Text fires Change and selects the item of that text, if any.
class ComboBox : public ListControl {
public:
    ComboBox(std::string name, Control* parent) : ListControl(Kind::ComboBox, std::move(name), parent) {}
    const std::string& text() const { return m_text; }
    void setText(const std::string& text);
    void setListIndex(int index) override;
    void copyFrom(const Control& model) override;
    void saveState(ControlState& state) const override;
    void restoreState(const ControlState& state) override;

private:
    std::string m_text;
};

// An option button: selecting one clears the others of the same container, and fires Click.
class OptionButton : public Control {
public:
    OptionButton(std::string name, Control* parent) : Control(Kind::OptionButton, std::move(name), parent) {}
    bool value() const { return m_value; }
    void setValue(bool value);
    void saveState(ControlState& state) const override;
    void restoreState(const ControlState& state) override;

private:
    bool m_value = false;
};

// A check box. A click toggles it; a change of value, a user's or a write from code, fires Click, as the
// toolkit's check box does.
class CheckBox : public Control {
public:
    CheckBox(std::string name, Control* parent) : Control(Kind::CheckBox, std::move(name), parent) {}
    bool value() const { return m_value; }
    void setValue(bool value);

private:
    bool m_value = false;
};

// A line from (X1, Y1) to (X2, Y2), in the coordinates of its parent.
class Line : public Control {
public:
    Line(std::string name, Control* parent) : Control(Kind::Line, std::move(name), parent) {
        setTabStop(false);
    }
    double x1() const { return m_x1; }
    double y1() const { return m_y1; }
    double x2() const { return m_x2; }
    double y2() const { return m_y2; }
    void setEnds(double x1, double y1, double x2, double y2);
    void copyFrom(const Control& model) override;
    void saveState(ControlState& state) const override;
    void restoreState(const ControlState& state) override;

private:
    double m_x1 = 0, m_y1 = 0, m_x2 = 0, m_y2 = 0;
};

// A vertical scroll bar. The value stays within Min and Max; a change of value fires Change.
class VScrollBar : public Control {
public:
    VScrollBar(std::string name, Control* parent) : Control(Kind::VScrollBar, std::move(name), parent) {}
    int min() const { return m_min; }
    int max() const { return m_max; }
    int value() const { return m_value; }
    void setMin(int v);
    void setMax(int v);
    void setValue(int v);
    int smallChange() const { return m_smallChange; }
    int largeChange() const { return m_largeChange; }
    void setSmallChange(int v) { m_smallChange = v; }
    void setLargeChange(int v) { m_largeChange = v; }
    void saveState(ControlState& state) const override;
    void restoreState(const ControlState& state) override;

private:
    int m_min = 0, m_max = 32767, m_value = 0;
    int m_smallChange = 1, m_largeChange = 1;
};

// A menu entry; its children are the entries of its sub-menu.
class Menu : public Control {
public:
    Menu(std::string name, Control* parent) : Control(Kind::Menu, std::move(name), parent) {
        setTabStop(false);
    }
};

}  // namespace toolkit
