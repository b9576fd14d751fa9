// The week window on the demo service, under Qt's offscreen platform: what it shows is the week's
// figures, and a double click reaches the planning screen as the planner's own choice would.
#include "qtui/week_window.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTableWidget>
#include <QTest>

#include "app/demo_data.h"
#include "demo_screen.h"
#include "model/labels.h"
#include "qtui/main_window.h"
#include "shell/ctr_zandorel.h"
#include "support/memory_database.h"

namespace {

class WeekScreen : public testing_support::DemoScreen {
protected:
    void SetUp() override {
        DemoScreen::SetUp();
        week = &qtui::WeekWindow::showFor(*ctl, window->view(), window.get());
    }

    QPushButton* button(const QString& text) {
        for (QPushButton* b : week->findChildren<QPushButton*>()) {
            if (b->text() == text) return b;
        }
        return nullptr;
    }

    qtui::WeekWindow* week = nullptr;
};

TEST_F(WeekScreen, ShowsEachTourneeOnItsDayAndTheWaitingRowBelow) {
    ASSERT_TRUE(week->week().has_value());
    const control::Semaine& s = *week->week();
    EXPECT_EQ(s.lundi().text(), "23/11/2026");
    QTableWidget& table = week->table();
    ASSERT_EQ(table.columnCount(), 7);
    const int derniere = table.rowCount() - 1;
    EXPECT_EQ(table.verticalHeaderItem(derniere)->text(), "En attente");
    for (int d = 0; d < 7; ++d) {
        const control::JourDeSemaine& jour = s.jours[static_cast<std::size_t>(d)];
        EXPECT_EQ(table.item(derniere, d)->text().toInt(), jour.enAttente);
        for (const control::TourneeDuJour& t : jour.tournees) {
            int r = 0;
            while (r < derniere &&
                   !table.verticalHeaderItem(r)->text().startsWith(QString::fromStdString(t.code)))
                ++r;
            ASSERT_LT(r, derniere) << t.code;
            EXPECT_TRUE(table.item(r, d)->text().startsWith(
                QString("%1 prév. · %2 min").arg(t.prevues).arg(t.minutes)))
                << t.code << " " << table.item(r, d)->text().toStdString();
        }
    }
    // The same figures the computation gives.
    const control::Semaine direct =
        control::calculerSemaine(*service.db, service.clock, s.lundi(), control::DemiJournee::Matin);
    EXPECT_EQ(direct.jours[0].tournees.size(), s.jours[0].tournees.size());
}

// What the week leaves aside is told under the figures, and nothing is shown while there is none.
TEST_F(WeekScreen, TellsUnderTheFiguresTheRecordsItLeftAside) {
    EXPECT_TRUE(week->defauts().isHidden());
    // An intervention of Monday 23/11/2026 (internal day 21512) that ends at 25h.
    service.put("SSIADTOURNEE",
                "0010000121512"
                "0800",
                {"2599", "000012100000000110800"});
    qtui::WeekWindow::showFor(*ctl, window->view(), window.get());
    EXPECT_FALSE(week->defauts().isHidden());
    const QString texte = week->defauts().text();
    EXPECT_TRUE(texte.startsWith("Enregistrements incohérents, laissés de côté :\n")) << texte.toStdString();
    EXPECT_TRUE(texte.contains("SSIADTOURNEE « 00100001215120800 »")) << texte.toStdString();
    // The week before never reads it.
    button("◀ Semaine précédente")->click();
    EXPECT_TRUE(week->defauts().isHidden());
}

TEST_F(WeekScreen, MovesByWeekAndHalfDay) {
    button("Semaine suivante ▶")->click();
    EXPECT_EQ(week->week()->lundi().text(), "30/11/2026");
    button("◀ Semaine précédente")->click();
    button("◀ Semaine précédente")->click();
    EXPECT_EQ(week->week()->lundi().text(), "16/11/2026");
    for (QRadioButton* r : week->findChildren<QRadioButton*>()) {
        if (r->text() == "Soir") r->click();
    }
    EXPECT_EQ(week->week()->demiJournee, control::DemiJournee::Soir);
    // The menu again: the same window, read anew on the week chosen.
    EXPECT_EQ(&qtui::WeekWindow::showFor(*ctl, window->view(), window.get()), week);
    EXPECT_EQ(week->week()->lundi().text(), "16/11/2026");
    EXPECT_EQ(week->week()->demiJournee, control::DemiJournee::Soir);
}

TEST_F(WeekScreen, ADoubleClickOpensThatTourneeAndDayOnTheScreen) {
    QTableWidget& table = week->table();
    EXPECT_FALSE(week->openCell(table.rowCount() - 1, 0));  // the waiting row opens nothing
    // The first tournée of Tuesday that has something planned and no anomaly list to answer.
    const control::JourDeSemaine& mardi = week->week()->jours[1];
    const control::TourneeDuJour* choisie = nullptr;
    for (const control::TourneeDuJour& t : mardi.tournees) {
        if (t.prevues > 0 && t.anomalies == 0) {
            choisie = &t;
            break;
        }
    }
    ASSERT_NE(choisie, nullptr);
    int r = 0;
    while (!table.verticalHeaderItem(r)->text().startsWith(QString::fromStdString(choisie->code)))
        ++r;
    EXPECT_FALSE(week->openCell(r, 0));  // not its day
    EXPECT_TRUE(week->openCell(r, 1));
    EXPECT_EQ(ctl->Txt_CodeTournee.text(), choisie->code);
    EXPECT_EQ(ctl->Cbo_Date.text(), "24/11/2026");
    int detail = 0;
    for (const toolkit::Control* e : ctl->Etq_Aide.elements())
        detail += e->index() != 0 && e->left() == model::kLeftDetail;
    EXPECT_EQ(detail, choisie->prevues);
}

}  // namespace
