#include "toolkit/control.h"

#include <algorithm>
#include <iterator>

#include "toolkit/form.h"

namespace toolkit {

Control::Control(Kind kind, std::string name, Control* parent)
    : m_kind(kind), m_name(std::move(name)), m_parent(parent) {
    if (m_parent) {
        m_parent->attach(this);
        if (Form* f = form()) f->registerControl(this);
    }
}

Control::~Control() {
    if (m_parent) {
        if (Form* f = form()) f->unregisterControl(this);
        m_parent->detach(this);
    }
}

Form* Control::form() const {
    const Control* c = this;
    while (c->m_parent)
        c = c->m_parent;
    return c->m_kind == Kind::Form ? static_cast<Form*>(const_cast<Control*>(c)) : nullptr;
}

void Control::attach(Control* child) {
    m_children.push_back(child);
}

void Control::detach(Control* child) {
    eraseLatest(m_children, child);
}

void eraseLatest(std::vector<Control*>& controls, Control* control) {
    // Arrays unload their elements last made first: searching from the end finds them at once, where
    // a display that unloads thousands of labels would otherwise walk the list for each.
    auto it = std::find(controls.rbegin(), controls.rend(), control);
    if (it != controls.rend()) controls.erase(std::next(it).base());
}

void Control::setGeometry(double left, double top, double width, double height) {
    if (left == m_left && top == m_top && width == m_width && height == m_height) return;
    m_left = left;
    m_top = top;
    m_width = width;
    m_height = height;
    notify(Property::Geometry);
}

bool Control::effectivelyEnabled() const {
    for (const Control* c = this; c; c = c->m_parent) {
        if (!c->m_enabled) return false;
    }
    return true;
}

bool Control::effectivelyVisible() const {
    for (const Control* c = this; c && c->m_kind != Kind::Form; c = c->m_parent) {
        if (!c->m_visible) return false;
    }
    return true;
}

bool Control::hasBackColor() const {
    return m_kind != Kind::Line && m_kind != Kind::Menu && m_kind != Kind::VScrollBar;
}

void Control::setFocus() {
    if (Form* f = form()) f->moveFocus(this);
}

bool Control::hasFocus() const {
    Form* f = form();
    return f && f->activeControl() == this;
}

bool Control::canTakeFocus() const {
    switch (m_kind) {
        case Kind::Label:
        case Kind::Frame:
        case Kind::Line:
        case Kind::Menu:
        case Kind::Form:
            return false;
        default:
            return effectivelyVisible() && effectivelyEnabled();
    }
}

void Control::Drag() {
    if (Form* f = form()) f->beginDrag(*this);
}

void Control::fireClick() {
    if (Click) Click();
}

void Control::fireChange() {
    if (Change) Change();
}

void Control::copyFrom(const Control& model) {
    setGeometry(model.m_left, model.m_top, model.m_width, model.m_height);
    setVisible(model.m_visible);
    setEnabled(model.m_enabled);
    setBackColor(model.m_backColor);
    setForeColor(model.m_foreColor);
    setCaption(model.m_caption);
    setTag(model.m_tag);
    setToolTipText(model.m_toolTip);
    setLinkItem(model.m_linkItem);
    setFontName(model.m_fontName);
    setFontSize(model.m_fontSize);
    setFontBold(model.m_fontBold);
    setMousePointer(model.m_mousePointer);
    m_tabIndex = model.m_tabIndex;
    m_tabStop = model.m_tabStop;
    m_border = model.m_border;
}

void Control::notify(Property property) {
    if (m_quiet) return;
    if (Form* f = form()) f->changed(*this, property);
}

}  // namespace toolkit
