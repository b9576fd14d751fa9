#include "toolkit/input.h"

#include "base/error.h"
#include "base/text.h"
#include "toolkit/controls.h"
#include "toolkit/form.h"

namespace toolkit::input {
namespace {

void requireUsable(const Control& c, const char* action) {
    if (!c.effectivelyVisible() || !c.effectivelyEnabled()) {
        throw base::Error(base::codes::kBadData, std::string(action) + " impossible : " + c.name() + " est " +
                                                     (c.effectivelyVisible() ? "désactivé" : "invisible"));
    }
}

// The text of a code point in UTF-8.
std::string utf8(int code) {
    std::string out;
    auto c = static_cast<unsigned>(code);
    if (c < 0x80) {
        out += static_cast<char>(c);
    } else if (c < 0x800) {
        out += static_cast<char>(0xC0 | (c >> 6));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        out += static_cast<char>(0xE0 | (c >> 12));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (c >> 18));
        out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (c & 0x3F));
    }
    return out;
}

// The code points of a UTF-8 text; an invalid byte stands for itself.
std::vector<int> codePoints(const std::string& text) {
    std::vector<int> out;
    for (std::size_t i = 0; i < text.size();) {
        auto lead = static_cast<unsigned char>(text[i]);
        int width = lead < 0x80         ? 1
                    : (lead >> 5) == 6  ? 2
                    : (lead >> 4) == 14 ? 3
                    : (lead >> 3) == 30 ? 4
                                        : 1;
        if (i + static_cast<std::size_t>(width) > text.size()) width = 1;
        int code = width == 1 ? lead : lead & (0x7F >> width);
        for (int k = 1; k < width; ++k)
            code = (code << 6) | (static_cast<unsigned char>(text[i + k]) & 0x3F);
        out.push_back(code);
        i += static_cast<std::size_t>(width);
    }
    return out;
}

// The edit of a text box: replaces the selection (or inserts at the caret) and fires Change.
void replaceSelection(TextBox& box, const std::string& with, int caretAfter) {
    const std::string& t = box.text();
    std::string text =
        base::Left(t, box.selStart()) + with + base::Mid(t, box.selStart() + box.selLength() + 1);
    box.setText(text);
    box.setSelection(caretAfter, 0);
}

std::string editText(Control& c) {
    if (c.kind() == Kind::TextBox) return static_cast<TextBox&>(c).text();
    return static_cast<ComboBox&>(c).text();
}

// Typing in a combo's box works on the end of its text: combos keep no caret here.
void insertCharacter(Control& c, const std::string& ch) {
    if (c.kind() == Kind::ComboBox) {
        auto& combo = static_cast<ComboBox&>(c);
        combo.setText(combo.text() + ch);
        return;
    }
    auto& box = static_cast<TextBox&>(c);
    int length = static_cast<int>(base::Len(box.text())) - box.selLength();
    if (box.maxLength() > 0 && length >= box.maxLength()) return;
    replaceSelection(box, ch, box.selStart() + 1);
}

void deleteBackward(Control& c) {
    if (c.kind() == Kind::ComboBox) {
        auto& combo = static_cast<ComboBox&>(c);
        std::size_t n = base::Len(combo.text());
        if (n > 0) combo.setText(base::Left(combo.text(), static_cast<std::int64_t>(n) - 1));
        return;
    }
    auto& box = static_cast<TextBox&>(c);
    if (box.selLength() > 0) return replaceSelection(box, "", box.selStart());
    if (box.selStart() == 0) return;
    box.setSelection(box.selStart() - 1, 1);
    replaceSelection(box, "", box.selStart());
}

void deleteForward(Control& c) {
    if (c.kind() == Kind::ComboBox) {
        static_cast<ComboBox&>(c).setText("");
        return;
    }
    auto& box = static_cast<TextBox&>(c);
    if (box.selLength() == 0) box.setSelection(box.selStart(), 1);
    replaceSelection(box, "", box.selStart());
}

// The key code KeyDown sees for a typed character. Only letters, digits and the space have their
// character's number; punctuation has codes of its own, so that "." (46) is not the Delete key.
int keyCodeOf(int code) {
    if (code >= 'a' && code <= 'z') return code - 32;
    if ((code >= 'A' && code <= 'Z') || (code >= '0' && code <= '9') || code == ' ') return code;
    switch (code) {
        case ',':
            return 188;
        case '-':
            return 189;
        case '.':
            return 190;
        case '/':
            return 191;
        default:
            return 222;
    }
}

void requireEditable(const Control& c) {
    if (c.kind() != Kind::TextBox && c.kind() != Kind::ComboBox) {
        throw base::Error(base::codes::kBadData,
                          "Saisie impossible : " + c.name() + " n'est pas une zone de texte");
    }
}

}  // namespace

void click(Control& control) {
    requireUsable(control, "Clic");
    if (control.canTakeFocus()) focus(control);
    if (control.kind() == Kind::OptionButton) {
        auto& option = static_cast<OptionButton&>(control);
        if (!option.value()) return option.setValue(true);  // selecting fires Click
    }
    if (control.kind() == Kind::CheckBox) {
        auto& box = static_cast<CheckBox&>(control);
        return box.setValue(!box.value());  // the change fires Click
    }
    control.fireClick();
}

void focus(Control& control) {
    requireUsable(control, "Focus");
    control.setFocus();
}

void press(Control& box, int code) {
    requireEditable(box);
    int keyCode = keyCodeOf(code);
    if (box.KeyDown) box.KeyDown(keyCode, 0);
    int keyAscii = code;
    if (box.KeyPress) box.KeyPress(keyAscii);
    if (keyAscii == 0) return;
    if (keyAscii == static_cast<int>(Key::Backspace)) {
        deleteBackward(box);
    } else if (keyAscii >= 32) {
        insertCharacter(box, utf8(keyAscii));
    }
}

void type(Control& box, const std::string& text) {
    requireEditable(box);
    focus(box);
    if (box.kind() == Kind::TextBox) {
        auto& t = static_cast<TextBox&>(box);
        t.setSelection(static_cast<int>(base::Len(t.text())), 0);
    }
    for (int code : codePoints(text))
        press(box, code);
}

void key(Control& control, Key key) {
    requireUsable(control, "Touche");
    int keyCode = static_cast<int>(key);
    if (control.KeyDown) control.KeyDown(keyCode, 0);
    if (keyCode == 0) return;
    switch (key) {
        case Key::Tab:
            if (Form* f = control.form()) {
                if (Control* next = f->nextInTabOrder(&control, true)) next->setFocus();
            }
            return;
        case Key::Delete:
            if (control.kind() == Kind::TextBox || control.kind() == Kind::ComboBox) deleteForward(control);
            return;
        case Key::Enter:
        case Key::Escape:
        case Key::Backspace:
            break;
    }
    int keyAscii = static_cast<int>(key);
    if (control.KeyPress) control.KeyPress(keyAscii);
    if (keyAscii == static_cast<int>(Key::Backspace) &&
        (control.kind() == Kind::TextBox || control.kind() == Kind::ComboBox)) {
        deleteBackward(control);
    }
}

void clear(Control& box) {
    requireEditable(box);
    focus(box);
    if (box.kind() == Kind::TextBox) {
        auto& t = static_cast<TextBox&>(box);
        t.setSelection(0, static_cast<int>(base::Len(t.text())));
    }
    if (editText(box).empty()) return;
    key(box, Key::Delete);
}

void choose(ComboBox& combo, const std::string& item) {
    requireUsable(combo, "Choix");
    int index = combo.find(item);
    if (index < 0) {
        throw base::Error(base::codes::kBadData,
                          "Choix impossible : « " + item + " » n'est pas dans la liste de " + combo.name());
    }
    focus(combo);
    if (index == combo.listIndex()) {
        combo.fireClick();  // choosing the item already chosen still clicks
        return;
    }
    combo.setListIndex(index);
}

void dragOver(Form& form, double x, double y, int state) {
    Control* source = form.dragSource();
    if (!source) return;
    double lx = 0, ly = 0;
    Control* target = form.controlAt(x, y, &lx, &ly);
    if (target->DragOver) target->DragOver(*source, lx, ly, state);
}

void dragDrop(Form& form, double x, double y) {
    Control* source = form.dragSource();
    if (!source) return;
    double lx = 0, ly = 0;
    Control* target = form.controlAt(x, y, &lx, &ly);
    form.endDrag();
    if (target->DragDrop) target->DragDrop(*source, lx, ly);
}

void scroll(VScrollBar& bar, int value) {
    requireUsable(bar, "Défilement");
    bar.setValue(value);
}

}  // namespace toolkit::input
