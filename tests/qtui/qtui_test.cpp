// The real screen under Qt's offscreen platform, driven with real Qt events: what the user does through
// the widgets must reach the forms model exactly as the same action through the scenario runner does.
#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "app/demo_data.h"
#include "demo_screen.h"
#include "qtui/main_window.h"
#include "shell/ctr_zandorel.h"
#include "support/memory_database.h"
#include "toolkit/headless_host.h"
#include "toolkit/input.h"

namespace {

using QtScreen = testing_support::DemoScreen;

TEST_F(QtScreen, MirrorsTheStartOfTheDay) {
    auto* date = widget<QLineEdit>(ctl->Txt_Date);
    ASSERT_NE(date, nullptr);
    EXPECT_EQ(date->text(), "23/11/2026");
    EXPECT_FALSE(widget<QComboBox>(ctl->Cbo_Date)->isVisible());
    EXPECT_EQ(widget<QPushButton>(ctl->Cmd_Affichage)->geometry(), QRect(688, 8, 57, 25));
    EXPECT_EQ(QApplication::focusWidget(), widget<QLineEdit>(ctl->Txt_CodeTournee));
}

TEST_F(QtScreen, TypedKeysGoThroughTheModelAndASwallowedKeyNeverReachesTheBox) {
    auto* code = widget<QLineEdit>(ctl->Txt_CodeTournee);
    QTest::keyClicks(code, "0a7");
    EXPECT_EQ(ctl->Txt_CodeTournee.text(), "07");
    EXPECT_EQ(code->text(), "07");
    // Leaving the box pads the code, which opens the tournée and its list of dates.
    QTest::keyClick(code, Qt::Key_Tab);
    EXPECT_EQ(ctl->Txt_CodeTournee.text(), "007");
    EXPECT_EQ(code->text(), "007");
    EXPECT_TRUE(widget<QComboBox>(ctl->Cbo_Date)->isVisible());
    EXPECT_FALSE(widget<QLineEdit>(ctl->Txt_Date)->isVisible());
}

TEST_F(QtScreen, ChoosingADateAndShowingTheDayMakesTheLabels) {
    QTest::keyClicks(widget<QLineEdit>(ctl->Txt_CodeTournee), "001");
    auto* dates = widget<QComboBox>(ctl->Cbo_Date);
    int index = dates->findText("30/11/2026");
    ASSERT_GE(index, 0);
    emit dates->activated(index);
    EXPECT_EQ(ctl->Cbo_Date.text(), "30/11/2026");
    auto* show = widget<QPushButton>(ctl->Cmd_Affichage);
    ASSERT_TRUE(show->isEnabled());
    QTest::mouseClick(show, Qt::LeftButton);
    ASSERT_GT(ctl->Etq_Aide.Count(), 1);
    for (toolkit::Control* label : ctl->Etq_Aide.elements()) {
        if (label->index() == 0) continue;
        auto* shown = widget<QLabel>(*label);
        ASSERT_NE(shown, nullptr);
        EXPECT_EQ(shown->text(), QString::fromStdString(label->caption()).replace("\r\n", "\n"));
        EXPECT_EQ(shown->geometry(), qtui::Zoom(1.0).rect(*label));
    }
}

std::string tables(const control::Ctr_Zandorel& c) {
    std::string out = c.TabTempoDetail->text() + "|" + c.TabTempoAide->text();
    for (const toolkit::Control* l : c.Etq_Aide.elements())
        out += "|" + l->linkItem() + "@" + std::to_string(l->top());
    return out;
}

// A drag with the real mouse from pane "AIDE" to pane "DETAIL" changes the model exactly as the same
// drop played headless does.
TEST_F(QtScreen, ADragWithTheMouseDropsAsTheScenarioRunnerDoes) {
    auto show = [](control::Ctr_Zandorel& c) {
        toolkit::input::type(c.Txt_CodeTournee, "001");
        toolkit::input::choose(c.Cbo_Date, "30/11/2026");
        toolkit::input::click(c.Cmd_Affichage);
    };
    host.setZoom(qtui::Zoom(1.0));
    show(*ctl);
    // The waiting label on row 1, grabbed 10 pixels in, dropped at 11h00 in the detail pane.
    int index = std::stoi(ctl->TabTempoAide(1, 1));
    toolkit::Label& etiquette = ctl->Etq_Aide(index);
    QWidget* label = window->view().widgetFor(&etiquette);
    ASSERT_NE(label, nullptr);
    const QPoint grab(10, 10), drop(150, 0);
    QPoint target = label->mapFrom(&window->view(),
                                   drop + QPoint(0, qtui::Zoom(1.0).px(760 + 5 * 4 * ctl->PasQuartHeure)));
    const QPoint inView = label->mapTo(&window->view(), target);
    QTest::mouseMove(label, grab);
    QTest::mousePress(label, Qt::LeftButton, {}, grab);
    QTest::mouseMove(label, target);
    QTest::mouseRelease(label, Qt::LeftButton, {}, target);

    // The same drop, played on a second screen of the same service.
    testing_support::MemoryDatabase second;
    second.clock.setToday(service.clock.today());
    app::writeDemoService(*second.db, app::DemoOptions{second.clock.today(), 40, 60, 1});
    toolkit::HeadlessHost quiet;
    control::Ctr_Zandorel headless(quiet, second.clock);
    headless.setTheClient(nullptr);
    headless.setTheDatabase(second.db);
    headless.setDroitsUtilisateur(std::make_shared<control::DroitsFixes>(2));
    headless.Init();
    show(headless);
    toolkit::Label& same = headless.Etq_Aide(index);
    const qtui::Zoom z(1.0);
    if (same.MouseMove) same.MouseMove(0, 0, z.twips(grab.x()), z.twips(grab.y()));
    same.MouseDown(1, 0, z.twips(grab.x()), z.twips(grab.y()));
    toolkit::input::dragOver(headless.UserControl, z.twips(inView.x()), z.twips(inView.y()), 0);
    toolkit::input::dragDrop(headless.UserControl, z.twips(inView.x()), z.twips(inView.y()));

    EXPECT_EQ(ctl->Etq_Aide(index).left(), 760);
    EXPECT_EQ(tables(*ctl), tables(headless));
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
