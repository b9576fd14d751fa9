#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "toolkit/control.h"

namespace toolkit {

class Host;

// A control array as the form sees it: its elements by index, for look-ups by name and index.
class ArrayBase {
public:
    virtual ~ArrayBase() = default;
    virtual Control* element(int index) const = 0;
    virtual std::vector<Control*> elements() const = 0;
    // Load and Unload of the array, reached without its element type.
    virtual Control& loadElement(int index) = 0;
    virtual void unloadElement(int index) = 0;
};

// A form or a user control: the root of a tree of controls. It knows its controls by name, holds the
// focus, and tells its observer of every property change of any of them.
class Form : public Control {
public:
    Form(std::string name, Host& host);
    ~Form() override;

    Host& host() const { return m_host; }
    void setObserver(Observer* observer) { m_observer = observer; }
    Observer* observer() const { return m_observer; }

    // Every control of the form, array elements included, in the order they were made.
    const std::vector<Control*>& controls() const { return m_controls; }
    // A control by name, or an array element by name and index; nullptr when there is none.
    Control* find(const std::string& name, int index = -1) const;
    ArrayBase* findArray(const std::string& name) const;

    Control* activeControl() const { return m_focus; }
    // Moves the focus: LostFocus on the old holder, then GotFocus on the new one. A LostFocus handler
    // that moves the focus elsewhere wins: the first target then gets no GotFocus.
    void moveFocus(Control* target);
    // Puts the focus back on a control, or on none, without LostFocus or GotFocus: for a screen put back
    // as it was, where no focus moves as the user's doing.
    void restoreFocus(Control* target) {
        m_focus = target;
        m_focusArrived = target != nullptr;
    }
    // The next control in tab order that can take the focus, after (or before) `from`.
    Control* nextInTabOrder(Control* from, bool forward) const;

    // The control being dragged, nullptr when no drag is under way.
    Control* dragSource() const { return m_dragSource; }
    void beginDrag(Control& source) { m_dragSource = &source; }
    void endDrag() { m_dragSource = nullptr; }

    // The control that a pointer at (x, y), in the form's coordinates, is over: the one drawn on top
    // among the visible controls that take mouse events (lines and menus do not; a disabled control
    // passes the pointer to its container). The form itself when no control is there. `local` receives
    // the point in the found control's own coordinates.
    Control* controlAt(double x, double y, double* localX = nullptr, double* localY = nullptr) const;
    // A control's position in the form's coordinates.
    void origin(const Control& control, double& x, double& y) const;

    // Loaded and shown as a form of its own (not for the user control, which is always loaded).
    bool isLoaded() const { return m_loaded; }
    // Unloads the form: QueryUnload may cancel (mode 0 for the close box, 1 from code); then Unload.
    // Returns false when cancelled.
    bool unload(int mode = 1);
    void setLoaded(bool loaded) { m_loaded = loaded; }

    std::function<void(int& cancel, int unloadMode)> QueryUnload;
    std::function<void(int& cancel)> Unload;

private:
    friend class Control;
    template <typename T>
    friend class ControlArray;
    void registerControl(Control* control);
    void unregisterControl(Control* control);
    void registerArray(const std::string& name, ArrayBase* array) { m_arrays[name] = array; }
    void changed(Control& control, Property property);

    Host& m_host;
    Observer* m_observer = nullptr;
    std::vector<Control*> m_controls;
    std::map<std::string, ArrayBase*> m_arrays;
    Control* m_focus = nullptr;
    Control* m_dragSource = nullptr;
    // False while a move is under way: a holder that never got GotFocus gets no LostFocus either.
    bool m_focusArrived = false;
    bool m_loaded = true;
};

}  // namespace toolkit
