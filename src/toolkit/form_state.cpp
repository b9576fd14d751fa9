#include "toolkit/form_state.h"

#include <set>

#include "base/error.h"
#include "toolkit/controls.h"
#include "toolkit/form.h"

namespace toolkit {

namespace {

// Writes a member put back; true when its value changed, for the caller to tell the observer.
template <typename T>
bool putBack(T& member, const T& value) {
    if (member == value) return false;
    member = value;
    return true;
}

ControlKey keyOf(const Control& c) {
    return {c.name(), c.index()};
}

}  // namespace

void Control::saveState(ControlState& s) const {
    s.left = m_left;
    s.top = m_top;
    s.width = m_width;
    s.height = m_height;
    s.visible = m_visible;
    s.enabled = m_enabled;
    s.backColor = m_backColor;
    s.foreColor = m_foreColor;
    s.caption = m_caption;
    s.tag = m_tag;
    s.toolTip = m_toolTip;
    s.linkItem = m_linkItem;
    s.fontName = m_fontName;
    s.fontSize = m_fontSize;
    s.fontBold = m_fontBold;
    s.mousePointer = m_mousePointer;
    s.tabIndex = m_tabIndex;
    s.tabStop = m_tabStop;
    s.border = m_border;
}

void Control::restoreState(const ControlState& s) {
    // The setters of these properties notify and fire nothing.
    setGeometry(s.left, s.top, s.width, s.height);
    setVisible(s.visible);
    setEnabled(s.enabled);
    setBackColor(s.backColor);
    setForeColor(s.foreColor);
    setCaption(s.caption);
    setTag(s.tag);
    setToolTipText(s.toolTip);
    setLinkItem(s.linkItem);
    setFontName(s.fontName);
    setFontSize(s.fontSize);
    setFontBold(s.fontBold);
    setMousePointer(s.mousePointer);
    m_tabIndex = s.tabIndex;
    m_tabStop = s.tabStop;
    m_border = s.border;
}

void TextBox::saveState(ControlState& s) const {
    Control::saveState(s);
    s.text = m_text;
    s.maxLength = m_maxLength;
    s.multiLine = m_multiLine;
    s.selStart = m_selStart;
    s.selLength = m_selLength;
}

void TextBox::restoreState(const ControlState& s) {
    Control::restoreState(s);
    m_maxLength = s.maxLength;
    m_multiLine = s.multiLine;
    // Without Change: the text comes back as it was, nobody typed it.
    if (putBack(m_text, s.text)) notify(Property::Text);
    const bool start = putBack(m_selStart, s.selStart), length = putBack(m_selLength, s.selLength);
    if (start || length) notify(Property::Selection);
}

void ListControl::saveState(ControlState& s) const {
    Control::saveState(s);
    s.items = m_items;
    s.listIndex = m_listIndex;
}

void ListControl::restoreState(const ControlState& s) {
    Control::restoreState(s);
    if (putBack(m_items, s.items)) notify(Property::List);
    // Without Click.
    if (putBack(m_listIndex, s.listIndex)) notify(Property::ListIndex);
}

void ComboBox::saveState(ControlState& s) const {
    ListControl::saveState(s);
    s.text = m_text;
}

void ComboBox::restoreState(const ControlState& s) {
    ListControl::restoreState(s);
    if (putBack(m_text, s.text)) notify(Property::Text);
}

void OptionButton::saveState(ControlState& s) const {
    Control::saveState(s);
    s.value = m_value;
}

void OptionButton::restoreState(const ControlState& s) {
    Control::restoreState(s);
    // Neither Click nor the other options cleared: each option comes back with its own state.
    if (putBack(m_value, s.value)) notify(Property::Value);
}

void Line::saveState(ControlState& s) const {
    Control::saveState(s);
    s.x1 = m_x1;
    s.y1 = m_y1;
    s.x2 = m_x2;
    s.y2 = m_y2;
}

void Line::restoreState(const ControlState& s) {
    Control::restoreState(s);
    setEnds(s.x1, s.y1, s.x2, s.y2);
}

void VScrollBar::saveState(ControlState& s) const {
    Control::saveState(s);
    s.min = m_min;
    s.max = m_max;
    s.barValue = m_value;
    s.smallChange = m_smallChange;
    s.largeChange = m_largeChange;
}

void VScrollBar::restoreState(const ControlState& s) {
    Control::restoreState(s);
    m_smallChange = s.smallChange;
    m_largeChange = s.largeChange;
    const bool low = putBack(m_min, s.min), high = putBack(m_max, s.max);
    if (low || high) notify(Property::Range);
    // Without Change, which would lay out the rows again from the value: they come back as they were.
    if (putBack(m_value, s.barValue)) notify(Property::Value);
}

bool FormState::operator==(const FormState& other) const {
    if (focus != other.focus || controls.size() != other.controls.size()) return false;
    for (auto i = controls.begin(), j = other.controls.begin(); i != controls.end(); ++i, ++j) {
        if (i->first != j->first || (i->second != j->second && !(*i->second == *j->second))) return false;
    }
    return true;
}

std::map<int, const ControlState*> FormState::elements(const std::string& array) const {
    std::map<int, const ControlState*> out;
    for (auto it = controls.lower_bound({array, 0}); it != controls.end() && it->first.first == array; ++it)
        out.emplace(it->first.second, it->second.get());
    return out;
}

FormState captureForm(const Form& form, const FormState* previous) {
    FormState state;
    auto capture = [&](const Control& c) {
        ControlState now;
        c.saveState(now);
        ControlKey key = keyOf(c);
        if (previous) {
            const auto before = previous->controls.find(key);
            if (before != previous->controls.end() && *before->second == now) {
                state.controls.emplace(std::move(key), before->second);
                return;
            }
        }
        state.controls.emplace(std::move(key), std::make_shared<const ControlState>(std::move(now)));
    };
    capture(form);
    for (const Control* c : form.controls())
        capture(*c);
    if (const Control* focus = form.activeControl()) state.focus = keyOf(*focus);
    return state;
}

void restoreForm(Form& form, const FormState& to, const FormState& from) {
    auto control = [&form](const ControlKey& key) -> Control* {
        if (key.first == form.name()) return &form;
        Control* c = form.find(key.first, key.second);
        return c && c->index() == key.second ? c : nullptr;
    };
    auto missing = [](const ControlKey& key) {
        return base::Error(base::codes::kBadData,
                           "Le contrôle " + key.first +
                               (key.second < 0 ? "" : "(" + std::to_string(key.second) + ")") +
                               " n'existe pas sur cet écran");
    };

    // Elements first: those of `from` that `to` lacks go, those `to` has in addition come.
    std::set<ControlKey> keys;
    for (const auto& [key, s] : from.controls)
        keys.insert(key);
    for (const auto& [key, s] : to.controls)
        keys.insert(key);
    for (const ControlKey& key : keys) {
        const auto before = from.controls.find(key), after = to.controls.find(key);
        const bool inFrom = before != from.controls.end(), inTo = after != to.controls.end();
        if (inFrom == inTo) continue;
        ArrayBase* array = key.second > 0 ? form.findArray(key.first) : nullptr;
        if (!array) throw missing(key);
        if (inFrom && control(key)) array->unloadElement(key.second);
        if (inTo && !control(key)) array->loadElement(key.second);
    }
    for (const auto& [key, s] : to.controls) {
        const auto before = from.controls.find(key);
        if (before != from.controls.end() && (before->second == s || *before->second == *s)) continue;
        Control* c = control(key);
        if (!c) throw missing(key);
        c->restoreState(*s);
    }
    if (to.focus != from.focus) form.restoreFocus(to.focus.first.empty() ? nullptr : control(to.focus));
}

}  // namespace toolkit
