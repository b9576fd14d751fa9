#include "toolkit/controls.h"

#include <algorithm>

#include "base/text.h"
#include "toolkit/form.h"

namespace toolkit {

void TextBox::setText(const std::string& text) {
    if (text == m_text) return;
    m_text = text;
    int length = static_cast<int>(base::Len(m_text));
    m_selStart = std::min(m_selStart, length);
    m_selLength = 0;
    notify(Property::Text);
    fireChange();
}

void TextBox::setSelection(int start, int length) {
    int total = static_cast<int>(base::Len(m_text));
    start = std::clamp(start, 0, total);
    length = std::clamp(length, 0, total - start);
    if (start == m_selStart && length == m_selLength) return;
    m_selStart = start;
    m_selLength = length;
    notify(Property::Selection);
}

void TextBox::copyFrom(const Control& model) {
    Control::copyFrom(model);
    if (auto* box = dynamic_cast<const TextBox*>(&model)) {
        m_maxLength = box->m_maxLength;
        m_multiLine = box->m_multiLine;
        m_text = box->m_text;
    }
}

const std::string& ListControl::list(int i) const {
    static const std::string empty;
    return i >= 0 && i < listCount() ? m_items[static_cast<std::size_t>(i)] : empty;
}

void ListControl::addItem(const std::string& item) {
    m_items.push_back(item);
    notify(Property::List);
}

void ListControl::clear() {
    m_items.clear();
    m_listIndex = -1;
    notify(Property::List);
    notify(Property::ListIndex);
}

void ListControl::setListIndex(int index) {
    if (index < -1 || index >= listCount()) index = -1;
    if (index == m_listIndex) return;
    m_listIndex = index;
    notify(Property::ListIndex);
    if (index >= 0) fireClick();
}

int ListControl::find(const std::string& item) const {
    auto it = std::find(m_items.begin(), m_items.end(), item);
    return it == m_items.end() ? -1 : static_cast<int>(it - m_items.begin());
}

void ListControl::copyFrom(const Control& model) {
    Control::copyFrom(model);
    if (auto* list = dynamic_cast<const ListControl*>(&model)) m_items = list->m_items;
}

void ComboBox::setText(const std::string& text) {
    if (text == m_text) return;
    m_text = text;
    int index = find(text);
    if (index != m_listIndex) {
        m_listIndex = index;
        notify(Property::ListIndex);
    }
    notify(Property::Text);
    fireChange();
}

void ComboBox::setListIndex(int index) {
    if (index < -1 || index >= listCount()) index = -1;
    if (index == m_listIndex) return;
    m_listIndex = index;
    if (index >= 0 && m_text != m_items[static_cast<std::size_t>(index)]) {
        m_text = m_items[static_cast<std::size_t>(index)];
        notify(Property::Text);
    }
    notify(Property::ListIndex);
    if (index >= 0) fireClick();
}

void ComboBox::copyFrom(const Control& model) {
    ListControl::copyFrom(model);
    if (auto* combo = dynamic_cast<const ComboBox*>(&model)) m_text = combo->m_text;
}

void OptionButton::setValue(bool value) {
    if (value == m_value) return;
    m_value = value;
    notify(Property::Value);
    if (!value) return;
    if (Control* container = parent()) {
        for (Control* sibling : container->children()) {
            if (sibling != this && sibling->kind() == Kind::OptionButton)
                static_cast<OptionButton*>(sibling)->setValue(false);
        }
    }
    fireClick();
}

void CheckBox::setValue(bool value) {
    if (value == m_value) return;
    m_value = value;
    notify(Property::Value);
    fireClick();
}

void Line::setEnds(double x1, double y1, double x2, double y2) {
    if (x1 == m_x1 && y1 == m_y1 && x2 == m_x2 && y2 == m_y2) return;
    m_x1 = x1;
    m_y1 = y1;
    m_x2 = x2;
    m_y2 = y2;
    notify(Property::Geometry);
}

void Line::copyFrom(const Control& model) {
    Control::copyFrom(model);
    if (auto* line = dynamic_cast<const Line*>(&model))
        setEnds(line->m_x1, line->m_y1, line->m_x2, line->m_y2);
}

void VScrollBar::setMin(int v) {
    if (v == m_min) return;
    m_min = v;
    notify(Property::Range);
    setValue(m_value);
}

void VScrollBar::setMax(int v) {
    if (v == m_max) return;
    m_max = v;
    notify(Property::Range);
    setValue(m_value);
}

void VScrollBar::setValue(int v) {
    // The bar may run either way (Min above Max); the value stays between the two.
    int low = std::min(m_min, m_max), high = std::max(m_min, m_max);
    v = std::clamp(v, low, high);
    if (v == m_value) return;
    m_value = v;
    notify(Property::Value);
    fireChange();
}

}  // namespace toolkit
