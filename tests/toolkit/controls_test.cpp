#include "toolkit/controls.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/error.h"
#include "base/text.h"
#include "toolkit/control_array.h"
#include "toolkit/form.h"
#include "toolkit/headless_host.h"
#include "toolkit/input.h"

namespace toolkit {
namespace {

// Writes every event and property change as a word, so a row states what the screen would see in order.
struct Log : Observer {
    std::string text;
    void add(const std::string& word) { text += (text.empty() ? "" : " ") + word; }
    void changed(Control& control, Property property) override {
        if (property == Property::Loaded) add("loaded(" + std::to_string(control.index()) + ")");
        if (property == Property::Unloaded) add("unloaded(" + std::to_string(control.index()) + ")");
        // Loaded elements report their copy of the model too; the rows look at Loaded for them.
        if (property == Property::Caption && control.index() < 0) add("caption=" + control.caption());
    }
};

// The design-time properties that a loaded element copies, as one text.
std::string copied(const Control& c) {
    return base::numberText(c.left()) + " " + base::numberText(c.top()) + " " + base::numberText(c.width()) +
           " " + base::numberText(c.height()) + " " + std::to_string(c.backColor()) + " " + c.caption() +
           " " + c.fontName() + " " + base::numberText(c.fontSize()) + (c.fontBold() ? " bold " : " ") +
           c.tag() + " " + c.toolTipText() + " " + c.linkItem() + " " + std::to_string(c.mousePointer()) +
           (c.border() ? " border" : "") + (c.visible() ? " visible" : " hidden");
}

struct Row {
    const char* name;
    std::function<void()> steps;
    const char* expected;
};

// Plays the rows in order on the same controls: each starts where the previous one left them. A
// failure's message stands in the log.
template <std::size_t N>
void playAll(Log& log, const Row (&rows)[N]) {
    for (const Row& row : rows) {
        log.text.clear();
        try {
            row.steps();
        } catch (const base::Error& e) {
            log.add(e.what());
        }
        EXPECT_EQ(log.text, row.expected) << row.name;
    }
}

class ControlsTest : public ::testing::Test {
protected:
    HeadlessHost host;
    Form form{"Ctr_Zandorel", host};
    Log log;
    void SetUp() override { form.setObserver(&log); }
};

TEST_F(ControlsTest, TextChangeFiresInsideTheWriter) {
    TextBox box("Txt_Date", &form);
    Label label("Etq_Heure", &form);
    // The handler clears the box on "x": the nested Change runs before the outer one returns.
    box.Change = [&] {
        log.add("change=" + box.text());
        if (box.text() == "x") box.setText("");
    };
    const Row rows[] = {
        {"same text", [&] { box.setText(""); }, ""},
        {"new text", [&] { box.setText("01/12"); }, "change=01/12"},
        {"handler clears the box", [&] { box.setText("x"); }, "change=x change="},
        {"observer sees a new caption", [&] { label.setCaption("08h30"); }, "caption=08h30"},
        {"and only a new one", [&] { label.setCaption("08h30"); }, ""},
    };
    playAll(log, rows);
    EXPECT_EQ(box.text(), "");
}

TEST_F(ControlsTest, ComboListIndexAndText) {
    ComboBox combo("Cbo_Date", &form);
    for (const char* item : {"23/11/2026", "30/11/2026"})
        combo.addItem(item);
    combo.Change = [&] { log.add("change=" + combo.text() + "@" + std::to_string(combo.listIndex())); };
    combo.Click = [&] { log.add("click=" + combo.text() + "@" + std::to_string(combo.listIndex())); };
    const Row rows[] = {
        {"index outside the list is none", [&] { combo.setListIndex(7); }, ""},
        {"choosing writes the text without Change", [&] { combo.setListIndex(1); }, "click=30/11/2026@1"},
        {"same index", [&] { combo.setListIndex(1); }, ""},
        {"none keeps the text", [&] { combo.setListIndex(-1); }, ""},
        {"text of an item selects it", [&] { combo.setText("23/11/2026"); }, "change=23/11/2026@0"},
        {"other text selects none", [&] { combo.setText("01/12"); }, "change=01/12@-1"},
    };
    playAll(log, rows);
    combo.clear();
    EXPECT_EQ(combo.listCount(), 0);
    EXPECT_EQ(combo.listIndex(), -1);
}

TEST_F(ControlsTest, OptionClearsItsSiblingsOnly) {
    Frame frame("Frm_MatinSoir", &form);
    OptionButton matin("Opt_Matin", &frame), soir("Opt_Soir", &frame), other("Opt_Autre", &form);
    for (OptionButton* o : {&matin, &soir, &other})
        o->Click = [&, o] { log.add("click=" + o->name()); };
    other.setValue(true);
    const Row rows[] = {
        {"select", [&] { matin.setValue(true); }, "click=Opt_Matin"},
        {"select again", [&] { matin.setValue(true); }, ""},
        {"sibling", [&] { soir.setValue(true); }, "click=Opt_Soir"},
        {"clearing does not click", [&] { soir.setValue(false); }, ""},
    };
    playAll(log, rows);
    EXPECT_FALSE(matin.value());
    EXPECT_FALSE(soir.value());
    EXPECT_TRUE(other.value());
}

TEST_F(ControlsTest, CheckBoxClicksOnEveryChange) {
    CheckBox lundi("Chk_Lundi", &form);
    lundi.Click = [&] { log.add("click=" + std::string(lundi.value() ? "1" : "0")); };
    const Row rows[] = {
        {"same value", [&] { lundi.setValue(false); }, ""},
        {"checked from code", [&] { lundi.setValue(true); }, "click=1"},
        {"a click unchecks", [&] { input::click(lundi); }, "click=0"},
        {"a click checks again", [&] { input::click(lundi); }, "click=1"},
    };
    playAll(log, rows);
    lundi.setEnabled(false);
    EXPECT_THROW(input::click(lundi), base::Error);
    EXPECT_TRUE(lundi.value());
}

TEST_F(ControlsTest, ScrollBarKeepsItsValueInRange) {
    VScrollBar bar("VScroll", &form);
    bar.setMax(10);
    bar.Change = [&] { log.add("change=" + std::to_string(bar.value())); };
    const Row rows[] = {
        {"above Max", [&] { bar.setValue(15); }, "change=10"},
        {"same value", [&] { bar.setValue(10); }, ""},
        {"below Min", [&] { bar.setValue(-3); }, "change=0"},
        {"inside", [&] { bar.setValue(7); }, "change=7"},
        {"Max below the value moves it", [&] { bar.setMax(4); }, "change=4"},
        {"Max above the value leaves it", [&] { bar.setMax(9); }, ""},
        {"Min above the value moves it", [&] { bar.setMin(5); }, "change=5"},
        {"Min above Max", [&] { bar.setMin(20); }, "change=9"},
        {"reversed bar keeps between the two", [&] { bar.setValue(30); }, "change=20"},
    };
    playAll(log, rows);
}

TEST_F(ControlsTest, ControlArrayLoadsCopiesOfItsModel) {
    ControlArray<Label> labels("Etq_Aide", &form);
    Label& model = labels.model();
    model.setGeometry(5520, 2040, 1185, 800);
    model.setBackColor(0xE0E0E0);
    model.setCaption("modèle");
    model.setFontName("Courier New");
    model.setFontSize(9.75);
    model.setFontBold(true);
    model.setTag("tag");
    model.setToolTipText("bulle");
    model.setLinkItem("0001");
    model.setMousePointer(kPointerHourglass);
    model.setBorder(true);
    model.setVisible(true);
    labels.Click = [&](int i) { log.add("click(" + std::to_string(i) + ")"); };
    const Row rows[] = {
        {"unload the model", [&] { labels.Unload(0); }, "L'élément 0 de Etq_Aide ne peut pas être déchargé"},
        {"unload what is not loaded", [&] { labels.Unload(2); },
         "L'élément 2 de Etq_Aide ne peut pas être déchargé"},
        {"missing element", [&] { labels(2); }, "L'élément 2 de Etq_Aide n'existe pas"},
        {"load", [&] { labels.Load(3); }, "loaded(3)"},
        {"load another", [&] { labels.Load(1); }, "loaded(1)"},
        {"load twice", [&] { labels.Load(3); }, "L'élément 3 de Etq_Aide est déjà chargé"},
        {"events carry the index", [&] { labels(3).fireClick(); }, "click(3)"},
        {"unload", [&] { labels.Unload(1); }, "unloaded(1)"},
    };
    playAll(log, rows);

    Label& loaded = labels(3);
    EXPECT_EQ(copied(loaded),
              "5520 2040 1185 800 14737632 modèle Courier New 9,75 bold tag bulle 0001 11 border hidden");
    EXPECT_EQ(labels.Count(), 2);
    EXPECT_EQ(labels.UBound(), 3);
    EXPECT_EQ(form.find("Etq_Aide", 3), &loaded);
    EXPECT_EQ(form.find("Etq_Aide"), &model);
    EXPECT_EQ(form.find("Etq_Aide", 1), nullptr);
    labels.unloadAll();
    EXPECT_EQ(labels.Count(), 1);
    EXPECT_EQ(labels.UBound(), 0);
}

TEST_F(ControlsTest, FocusMovesLostBeforeGot) {
    TextBox date("Txt_Date", &form), code("Txt_CodeTournee", &form);
    CommandButton show("Cmd_Affichage", &form);
    for (Control* c : std::initializer_list<Control*>{&date, &code, &show}) {
        c->GotFocus = [&, c] { log.add("got=" + c->name()); };
        c->LostFocus = [&, c] { log.add("lost=" + c->name()); };
    }
    // A date box that keeps the focus from the display button, as a bad date does.
    date.LostFocus = [&] {
        log.add("lost=Txt_Date");
        if (show.hasFocus()) date.setFocus();
    };
    const Row rows[] = {
        {"first focus", [&] { date.setFocus(); }, "got=Txt_Date"},
        {"same holder", [&] { date.setFocus(); }, ""},
        {"move", [&] { code.setFocus(); }, "lost=Txt_Date got=Txt_CodeTournee"},
        {"move back", [&] { date.setFocus(); }, "lost=Txt_CodeTournee got=Txt_Date"},
        {"LostFocus sends it back: the first target sees nothing", [&] { show.setFocus(); },
         "lost=Txt_Date got=Txt_Date"},
    };
    playAll(log, rows);
    EXPECT_TRUE(date.hasFocus());
}

TEST_F(ControlsTest, TabOrderSkipsWhatCannotTakeTheFocus) {
    Frame frame("Frm_MatinSoir", &form);
    TextBox a("A", &form), hidden("Hidden", &form), disabled("Disabled", &form), inFrame("InFrame", &frame);
    CommandButton noStop("NoStop", &form), b("B", &form);
    Label label("Label", &form);
    int order = 0;
    for (Control* c : std::initializer_list<Control*>{&a, &label, &hidden, &disabled, &inFrame, &noStop, &b})
        c->setTabIndex(order++);
    hidden.setVisible(false);
    disabled.setEnabled(false);
    frame.setVisible(false);
    noStop.setTabStop(false);
    EXPECT_EQ(form.nextInTabOrder(&a, true), &b);
    EXPECT_EQ(form.nextInTabOrder(&b, true), &a);
    EXPECT_EQ(form.nextInTabOrder(&a, false), &b);
    frame.setVisible(true);
    EXPECT_EQ(form.nextInTabOrder(&a, true), &inFrame);
}

TEST_F(ControlsTest, UnloadAsksQueryUnloadFirst) {
    form.QueryUnload = [&](int& cancel, int mode) { cancel = mode == 0; };
    form.Unload = [&](int&) { log.add("unload"); };
    const Row rows[] = {
        {"close box refused", [&] { log.add(form.unload(0) ? "unloaded" : "kept"); }, "kept"},
        {"from code", [&] { log.add(form.unload(1) ? "unloaded" : "kept"); }, "unload unloaded"},
    };
    playAll(log, rows);
    EXPECT_FALSE(form.isLoaded());
}

}  // namespace
}  // namespace toolkit
