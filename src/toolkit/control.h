#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// The forms model: plain objects that behave like the controls of a classic forms toolkit, so that the
// screen's decisions run and are tested without any widget library. A host adapter mirrors them.
namespace toolkit {

using Colour =
    std::int32_t;  // colour number, blue in the high byte (0xC0E0FF is red 255, green 224, blue 192)

enum class Kind {
    Label,
    TextBox,
    ComboBox,
    ListBox,
    OptionButton,
    CheckBox,
    Frame,
    Line,
    CommandButton,
    VScrollBar,
    Menu,
    Form
};

// What changed on a control, for observers that mirror it.
enum class Property {
    Geometry,
    Visible,
    Enabled,
    BackColor,
    ForeColor,
    Caption,
    Text,
    Tag,
    ToolTipText,
    LinkItem,
    Font,
    MousePointer,
    List,
    ListIndex,
    Value,
    Range,
    Selection,
    Loaded,
    Unloaded
};

// Mouse pointers of the toolkit: 0 default, 11 hourglass.
inline constexpr int kPointerDefault = 0;
inline constexpr int kPointerHourglass = 11;

class Control;
class Form;
struct ControlState;

// Sees every property change of the controls of a form (the screen adapter mirrors them).
class Observer {
public:
    virtual ~Observer() = default;
    virtual void changed(Control& control, Property property) = 0;
};

// One control. Properties are plain values; a write from code that changes a value notifies the form's
// observer, and the properties that carry an event (Text, Value, ListIndex) fire it at once, inside the
// writer, exactly as a user's edit would.
class Control {
public:
    Control(Kind kind, std::string name, Control* parent);
    virtual ~Control();
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    Kind kind() const { return m_kind; }
    const std::string& name() const { return m_name; }
    // Index within its control array, -1 for a control that is not in one.
    int index() const { return m_index; }
    Control* parent() const { return m_parent; }
    Form* form() const;
    const std::vector<Control*>& children() const { return m_children; }

    double left() const { return m_left; }
    double top() const { return m_top; }
    double width() const { return m_width; }
    double height() const { return m_height; }
    void setLeft(double v) { setGeometry(v, m_top, m_width, m_height); }
    void setTop(double v) { setGeometry(m_left, v, m_width, m_height); }
    void setWidth(double v) { setGeometry(m_left, m_top, v, m_height); }
    void setHeight(double v) { setGeometry(m_left, m_top, m_width, v); }
    void setGeometry(double left, double top, double width, double height);

    bool visible() const { return m_visible; }
    void setVisible(bool v) { assign(m_visible, v, Property::Visible); }
    bool enabled() const { return m_enabled; }
    void setEnabled(bool v) { assign(m_enabled, v, Property::Enabled); }
    // Shown and usable: this control and every parent are visible and enabled.
    bool effectivelyEnabled() const;
    bool effectivelyVisible() const;

    Colour backColor() const { return m_backColor; }
    void setBackColor(Colour c) { assign(m_backColor, c, Property::BackColor); }
    Colour foreColor() const { return m_foreColor; }
    void setForeColor(Colour c) { assign(m_foreColor, c, Property::ForeColor); }
    // Lines, menus and scroll bars have no back colour: writing one fails, as the toolkit's does.
    bool hasBackColor() const;

    const std::string& caption() const { return m_caption; }
    void setCaption(const std::string& v) { assign(m_caption, v, Property::Caption); }
    const std::string& tag() const { return m_tag; }
    void setTag(const std::string& v) { assign(m_tag, v, Property::Tag); }
    const std::string& toolTipText() const { return m_toolTip; }
    void setToolTipText(const std::string& v) { assign(m_toolTip, v, Property::ToolTipText); }
    const std::string& linkItem() const { return m_linkItem; }
    void setLinkItem(const std::string& v) { assign(m_linkItem, v, Property::LinkItem); }

    const std::string& fontName() const { return m_fontName; }
    void setFontName(const std::string& v) { assign(m_fontName, v, Property::Font); }
    double fontSize() const { return m_fontSize; }
    void setFontSize(double v) { assign(m_fontSize, v, Property::Font); }
    bool fontBold() const { return m_fontBold; }
    void setFontBold(bool v) { assign(m_fontBold, v, Property::Font); }

    int mousePointer() const { return m_mousePointer; }
    void setMousePointer(int v) { assign(m_mousePointer, v, Property::MousePointer); }
    int tabIndex() const { return m_tabIndex; }
    void setTabIndex(int v) { m_tabIndex = v; }
    bool tabStop() const { return m_tabStop; }
    void setTabStop(bool v) { m_tabStop = v; }
    // Bordered (labels with a single-line border, frames with their outline).
    bool border() const { return m_border; }
    void setBorder(bool v) { m_border = v; }

    // Gives this control the focus: LostFocus on the old holder, then GotFocus here.
    void setFocus();
    bool hasFocus() const;
    bool canTakeFocus() const;

    // Events. Handlers are set by the screen; the toolkit calls them, synchronously.
    std::function<void()> Click, DblClick, GotFocus, LostFocus, Change;
    std::function<void(int& keyAscii)> KeyPress;
    std::function<void(int& keyCode, int shift)> KeyDown;
    std::function<void(int button, int shift, double x, double y)> MouseDown, MouseUp, MouseMove;
    std::function<void(Control& source, double x, double y, int state)> DragOver;
    std::function<void(Control& source, double x, double y)> DragDrop;

    // Begins a drag of this control at once (the toolkit's Drag with no argument); the drag ends at
    // the drop or when it is cancelled.
    void Drag();

    // Fires an event if a handler is set.
    void fireClick();
    void fireChange();

    // Copies the design-time properties of `model` (everything but name, index and parent), as a control
    // array does for a loaded element.
    virtual void copyFrom(const Control& model);

    // Every property as plain values, and back (toolkit/form_state.h). Putting back notifies the
    // observer of each property that changes and fires no event.
    virtual void saveState(ControlState& state) const;
    virtual void restoreState(const ControlState& state);

protected:
    template <typename T>
    void assign(T& member, const T& value, Property property) {
        if (member == value) return;
        member = value;
        notify(property);
    }
    void notify(Property property);

private:
    friend class Form;
    template <typename T>
    friend class ControlArray;
    void attach(Control* child);
    void detach(Control* child);

    Kind m_kind;
    std::string m_name;
    int m_index = -1;
    Control* m_parent;
    std::vector<Control*> m_children;

    double m_left = 0, m_top = 0, m_width = 0, m_height = 0;
    bool m_visible = true, m_enabled = true;
    Colour m_backColor = 0xFFFFFF, m_foreColor = 0;
    std::string m_caption, m_tag, m_toolTip, m_linkItem;
    std::string m_fontName = "MS Sans Serif";
    double m_fontSize = 8.25;
    bool m_fontBold = false;
    int m_mousePointer = kPointerDefault;
    int m_tabIndex = -1;
    bool m_tabStop = true;
    bool m_border = false;
    bool m_quiet = false;  // while an array element is being made: observers hear of it once, as Loaded
};

// Removes `control` from a list that holds it at most once; the list keeps its order.
void eraseLatest(std::vector<Control*>& controls, Control* control);

}  // namespace toolkit
