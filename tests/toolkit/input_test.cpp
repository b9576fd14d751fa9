#include "toolkit/input.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/error.h"
#include "toolkit/controls.h"
#include "toolkit/form.h"
#include "toolkit/headless_host.h"

namespace toolkit {
namespace {

// What the text box's handlers do to the keys, besides logging them.
enum class Rule { None, SwallowKeyPress, SlashForNonDigits, SwallowKeyDown, ClearOn12, MaxLength1 };

// A form with one of each control the rows act on, logging their events in order.
struct Screen {
    HeadlessHost host;
    Form form{"Ctr_Zandorel", host};
    Frame frame{"Frm_MatinSoir", &form};
    TextBox box{"Txt_Date", &form};
    TextBox next{"Txt_CodeTournee", &form};
    ComboBox combo{"Cbo_Date", &form};
    CommandButton button{"Cmd_Affichage", &form};
    OptionButton option{"Opt_Matin", &frame};
    Label label{"Etq_Aide", &form};
    VScrollBar bar{"VScroll", &form};
    Rule rule;
    std::string log;

    explicit Screen(Rule r = Rule::None) : rule(r) {
        box.KeyDown = [this](int& code, int) {
            add("down=" + std::to_string(code));
            if (rule == Rule::SwallowKeyDown) code = 0;
        };
        box.KeyPress = [this](int& k) {
            add("press=" + std::to_string(k));
            if (rule == Rule::SwallowKeyPress) k = 0;
            if (rule == Rule::SlashForNonDigits && k != 8 && k != 13 && (k < '0' || k > '9')) k = '/';
        };
        box.Change = [this] {
            add("change=" + box.text());
            if (rule == Rule::ClearOn12 && box.text() == "12") box.setText("");
        };
        box.setMaxLength(rule == Rule::MaxLength1 ? 1 : 0);
        for (Control* c : std::initializer_list<Control*>{&box, &next, &combo, &button, &option, &label}) {
            c->GotFocus = [this, c] { add("got=" + c->name()); };
            c->Click = [this, c] { add("click=" + c->name()); };
        }
        combo.Click = [this] { add("click=" + combo.text()); };
        for (const char* item : {"23/11/2026", "30/11/2026"})
            combo.addItem(item);
        // The scroll bar stands hidden between the two boxes in tab order.
        box.setTabIndex(0);
        bar.setTabIndex(1);
        bar.setVisible(false);
        next.setTabIndex(2);
        button.setTabIndex(3);
    }
    void add(const std::string& word) { log += (log.empty() ? "" : " ") + word; }
};

// One action on a fresh screen; the box has the focus and holds `text` with the caret at `caret`, the
// combo holds the same text.
struct Row {
    const char* name;
    Rule rule;
    const char* text;
    int caret;
    std::function<void(Screen&)> action;
    const char* expected;
};

template <std::size_t N>
void playAll(const Row (&rows)[N]) {
    for (const Row& row : rows) {
        Screen s(row.rule);
        s.box.setText(row.text);
        s.box.setSelection(row.caret, 0);
        s.combo.setText(row.text);
        input::focus(s.box);
        s.log.clear();
        row.action(s);
        EXPECT_EQ(s.log, row.expected) << row.name;
    }
}

std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const base::Error& e) {
        return e.what();
    }
    return "no error";
}

TEST(Input, RefusesWhatAUserCannotDo) {
    Screen s;
    s.button.setEnabled(false);
    s.next.setVisible(false);
    s.frame.setVisible(false);
    const std::pair<std::function<void()>, const char*> rows[] = {
        {[&] { input::click(s.button); }, "Clic impossible : Cmd_Affichage est désactivé"},
        {[&] { input::click(s.option); }, "Clic impossible : Opt_Matin est invisible"},
        {[&] { input::type(s.next, "1"); }, "Focus impossible : Txt_CodeTournee est invisible"},
        {[&] { input::type(s.label, "1"); }, "Saisie impossible : Etq_Aide n'est pas une zone de texte"},
        {[&] { input::key(s.next, Key::Enter); }, "Touche impossible : Txt_CodeTournee est invisible"},
        {[&] { input::choose(s.combo, "07/12/2026"); },
         "Choix impossible : « 07/12/2026 » n'est pas dans la liste de Cbo_Date"},
        {[&] { input::scroll(s.bar, 3); }, "Défilement impossible : VScroll est invisible"},
    };
    for (const auto& [action, expected] : rows)
        EXPECT_EQ(errorOf(action), expected);
    EXPECT_EQ(s.log, "");
}

TEST(Input, TypingGoesThroughTheKeyEvents) {
    const auto type = [](const char* text) { return [text](Screen& s) { input::type(s.box, text); }; };
    const Row rows[] = {
        {"swallowed key", Rule::SwallowKeyPress, "", 0, type("1"), "down=49 press=49"},
        {"MaxLength stops typing", Rule::MaxLength1, "", 0, type("12"),
         "down=49 press=49 change=1 down=50 press=50"},
        {"point is not Delete", Rule::None, "", 0, type("1."),
         "down=49 press=49 change=1 down=190 press=46 change=1."},
        {"KeyPress changes the character", Rule::SlashForNonDigits, "", 0, type("1-a"),
         "down=49 press=49 change=1 down=189 press=45 change=1/ down=65 press=97 change=1//"},
        {"typing goes at the end", Rule::None, "ab", 0, type("c"), "down=67 press=99 change=abc"},
        {"Change handler clears the box", Rule::ClearOn12, "", 0, type("123"),
         "down=49 press=49 change=1 down=50 press=50 change=12 change= down=51 press=51 change=3"},
    };
    playAll(rows);
}

TEST(Input, KeysAndClicks) {
    const auto key = [](Key k) { return [k](Screen& s) { input::key(s.box, k); }; };
    const auto choose = [](const char* item) { return [item](Screen& s) { input::choose(s.combo, item); }; };
    const auto click = [](auto member) { return [member](Screen& s) { input::click(s.*member); }; };
    const Row rows[] = {
        {"Backspace swallowed", Rule::SwallowKeyPress, "123", 1, key(Key::Backspace), "down=8 press=8"},
        {"Backspace at the start", Rule::None, "123", 0, key(Key::Backspace), "down=8 press=8"},
        {"Backspace deletes before the caret", Rule::None, "123", 1, key(Key::Backspace),
         "down=8 press=8 change=23"},
        {"Delete swallowed by KeyDown", Rule::SwallowKeyDown, "123", 0, key(Key::Delete), "down=46"},
        {"Delete after the caret, no KeyPress", Rule::None, "123", 0, key(Key::Delete), "down=46 change=23"},
        {"Enter goes through KeyPress", Rule::None, "", 0, key(Key::Enter), "down=13 press=13"},
        {"Tab skips the hidden", Rule::None, "", 0, key(Key::Tab), "down=9 got=Txt_CodeTournee"},
        {"clear of an empty box", Rule::None, "", 0, [](Screen& s) { input::clear(s.box); }, ""},
        {"clear selects all, one Change", Rule::None, "30/11", 2, [](Screen& s) { input::clear(s.box); },
         "down=46 change="},
        {"choose", Rule::None, "", 0, choose("30/11/2026"), "got=Cbo_Date click=30/11/2026"},
        {"choose the current item", Rule::None, "23/11/2026", 0, choose("23/11/2026"),
         "got=Cbo_Date click=23/11/2026"},
        {"option", Rule::None, "", 0, click(&Screen::option), "got=Opt_Matin click=Opt_Matin"},
        {"button", Rule::None, "", 0, click(&Screen::button), "got=Cmd_Affichage click=Cmd_Affichage"},
        {"a label takes no focus", Rule::None, "", 0, click(&Screen::label), "click=Etq_Aide"},
    };
    playAll(rows);
}

std::string unansweredOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const Unanswered& e) {
        return e.what();
    }
    return "answered";
}

TEST(HeadlessHost, AnswersBoxesFromItsQueue) {
    HeadlessHost host;
    host.queueAnswer(msgbox::kNo);
    EXPECT_EQ(host.MsgBox("Enregistré", msgbox::kOkOnly + msgbox::kExclamation, "Info"), msgbox::kOk);
    EXPECT_EQ(host.MsgBox("Voulez-vous ?", msgbox::kYesNoCancel + msgbox::kExclamation, "Message"),
              msgbox::kNo);
    EXPECT_EQ(unansweredOf([&] { host.MsgBox("Encore ?", msgbox::kYesNo, "Message"); }),
              "message sans réponse : « Encore ? »");
    std::string shown;
    for (const auto& box : host.takeShown()) {
        shown += box.title + "|" + box.text + "|" + std::to_string(box.style) + "|" +
                 std::to_string(box.answer) + ";";
    }
    EXPECT_EQ(shown, "Info|Enregistré|48|1;Message|Voulez-vous ?|51|7;Message|Encore ?|4|0;");
    EXPECT_TRUE(host.takeShown().empty());

    int ticks = 0;
    host.onDoEvents = [&] { ++ticks; };
    host.DoEvents();
    host.DoEvents();
    EXPECT_EQ(host.doEventsCount(), 2);
    EXPECT_EQ(ticks, 2);
}

TEST(HeadlessHost, PlaysModalFormsAndMenus) {
    HeadlessHost host;
    Form dialog("Frm_Anomalies", host);
    const auto show = [&] { return unansweredOf([&] { host.ShowModal(dialog); }); };
    EXPECT_EQ(show(), "formulaire sans réponse : Frm_Anomalies");
    host.queueDialog("Frm_Anomalies", [](Form&) {});
    EXPECT_EQ(show(), "le formulaire Frm_Anomalies est resté ouvert");
    host.queueDialog("Frm_Anomalies", [](Form& f) { f.unload(); });
    EXPECT_EQ(show(), "answered");
    EXPECT_FALSE(dialog.isLoaded());
    host.queueDialog("Frm_AffectationTournee", [](Form& f) { f.unload(); });
    EXPECT_EQ(show(), "formulaire sans réponse : Frm_Anomalies");

    Menu menu("Mnu_Etiquette", &dialog), entry("Mnu_AffectationTournee", &menu), off("Mnu_Off", &menu);
    off.setEnabled(false);
    int clicks = 0;
    entry.Click = [&] { ++clicks; };
    EXPECT_EQ(unansweredOf([&] { host.PopupMenu(menu); }), "menu sans choix : Mnu_Etiquette");
    for (const char* choice : {"", "Mnu_AffectationTournee", "Mnu_Off"})
        host.queueMenuChoice(choice);
    host.PopupMenu(menu);
    host.PopupMenu(menu);
    EXPECT_EQ(unansweredOf([&] { host.PopupMenu(menu); }),
              "le menu Mnu_Etiquette n'a pas d'entrée active Mnu_Off");
    EXPECT_EQ(clicks, 1);
}

}  // namespace
}  // namespace toolkit
