#include "toolkit/form.h"

#include <algorithm>

namespace toolkit {

Form::Form(std::string name, Host& host) : Control(Kind::Form, std::move(name), nullptr), m_host(host) {}

Form::~Form() = default;

void Form::registerControl(Control* control) {
    m_controls.push_back(control);
}

void Form::unregisterControl(Control* control) {
    eraseLatest(m_controls, control);
    if (m_focus == control) m_focus = nullptr;
}

void Form::changed(Control& control, Property property) {
    if (m_observer) m_observer->changed(control, property);
}

Control* Form::find(const std::string& name, int index) const {
    if (ArrayBase* array = findArray(name)) return array->element(index < 0 ? 0 : index);
    if (name == this->name()) return const_cast<Form*>(this);
    for (Control* c : m_controls) {
        if (c->name() == name && c->index() < 0) return c;
    }
    return nullptr;
}

ArrayBase* Form::findArray(const std::string& name) const {
    auto it = m_arrays.find(name);
    return it == m_arrays.end() ? nullptr : it->second;
}

void Form::moveFocus(Control* target) {
    if (target == m_focus) return;
    Control* old = m_focus;
    bool oldArrived = m_focusArrived;
    m_focus = target;
    m_focusArrived = false;
    if (old && oldArrived && old->LostFocus) old->LostFocus();
    if (m_focus != target) return;  // the old holder's LostFocus sent the focus elsewhere
    m_focusArrived = true;
    if (target && target->GotFocus) target->GotFocus();
}

Control* Form::nextInTabOrder(Control* from, bool forward) const {
    std::vector<Control*> order;
    for (Control* c : m_controls) {
        if (c->tabStop() && c->tabIndex() >= 0 && c->canTakeFocus()) order.push_back(c);
    }
    if (order.empty()) return nullptr;
    std::stable_sort(order.begin(), order.end(),
                     [](Control* a, Control* b) { return a->tabIndex() < b->tabIndex(); });
    auto it = std::find(order.begin(), order.end(), from);
    if (it == order.end()) return order.front();
    if (forward) return ++it == order.end() ? order.front() : *it;
    return it == order.begin() ? order.back() : *--it;
}

void Form::origin(const Control& control, double& x, double& y) const {
    x = y = 0;
    for (const Control* c = &control; c && c != this; c = c->parent()) {
        x += c->left();
        y += c->top();
    }
}

Control* Form::controlAt(double x, double y, double* localX, double* localY) const {
    Control* found = const_cast<Form*>(this);
    // Later controls are drawn over earlier ones, and children over their containers.
    for (auto it = m_controls.rbegin(); it != m_controls.rend(); ++it) {
        Control* c = *it;
        if (c->kind() == Kind::Line || c->kind() == Kind::Menu || !c->effectivelyVisible()) continue;
        double ox, oy;
        origin(*c, ox, oy);
        if (x < ox || y < oy || x >= ox + c->width() || y >= oy + c->height()) continue;
        found = c;
        break;
    }
    while (found != this && !found->enabled())
        found = found->parent();
    if (localX || localY) {
        double ox, oy;
        origin(*found, ox, oy);
        if (localX) *localX = x - ox;
        if (localY) *localY = y - oy;
    }
    return found;
}

bool Form::unload(int mode) {
    int cancel = 0;
    if (QueryUnload) QueryUnload(cancel, mode);
    if (cancel != 0) return false;
    if (Unload) Unload(cancel);
    if (cancel != 0) return false;
    m_loaded = false;
    setVisible(false);
    return true;
}

}  // namespace toolkit
