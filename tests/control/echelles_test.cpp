#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/text.h"
#include "shell/ctr_zandorel.h"
#include "support/control_fixture.h"

namespace {

using testing_support::ControlFixture;
constexpr const char* kCle = "000122150000001101850";

// A control whose pane of aidés holds `rows` labels. Row i is shown by label rows + 1 - i, so that the
// link from a row to its label is NumEtq and nothing else. Counts the Change events of VScroll.
struct PaneAide {
    ControlFixture f;
    control::Ctr_Zandorel& c = *f.ctl;
    int changes = 0;

    PaneAide(int rows, int max) {
        c.Tables.renew(model::Pane::Aide);
        for (int i = 1; i <= rows; ++i) {
            c.AjoutEtqAide(i, rows + 1 - i, 800, 900, 30, 0, kCle, "I");
            c.Etq_Aide.Load(i).setVisible(true);
        }
        c.IndiceEtqMax = rows;
        c.VScroll.setMax(max);
        c.VScroll.setVisible(max > 0);
        auto change = c.VScroll.Change;
        c.VScroll.Change = [this, change] {
            ++changes;
            change();
        };
    }
    const toolkit::Label& row(int i) const {
        return c.Etq_Aide(static_cast<int>(base::toNumber(c.TabTempoAide(i, 1))));
    }
};

TEST(VScrollPaging, SevenRowsShownTheOthersParked) {
    struct Row {
        const char* name;
        int rows, max;
        std::vector<int> moves;
        int value, changesOfLastMove;
        int shownFrom, shownTo;
        double topOfShownFrom;
    } const rows[] = {
        {"at the top", 10, 10, {1}, 1, 1, 1, 7, 1120},
        {"at the bottom, 350 twips higher", 10, 10, {1, 5}, 5, 1, 4, 10, 770},
        {"moving up at the bottom runs again from inside", 10, 10, {10, 9}, 4, 2, 4, 10, 1120},
        {"fewer than seven rows", 3, 3, {1}, 1, 1, 1, 3, 4 * 800 + 770},
        {"fewer than seven rows, moving up: the value stays at 0", 3, 3, {1, 0}, 0, 1, 1, 3, 4 * 800 + 1120},
    };
    for (const Row& row : rows) {
        PaneAide p(row.rows, row.max);
        for (int v : row.moves) {
            p.changes = 0;
            p.c.VScroll.setValue(v);
        }
        EXPECT_EQ(p.changes, row.changesOfLastMove) << row.name;
        EXPECT_EQ(p.c.VScroll.value(), row.value) << row.name;
        EXPECT_EQ(p.c.DerniereValeurScroll, row.value) << row.name;
        for (int i = 1; i <= row.rows; ++i) {
            const bool shown = i >= row.shownFrom && i <= row.shownTo;
            EXPECT_EQ(p.row(i).visible(), shown) << row.name << ", row " << i;
            EXPECT_EQ(p.row(i).top(), shown ? row.topOfShownFrom + (i - row.shownFrom) * 800 : 240)
                << row.name << ", row " << i;
        }
    }
}

TEST(MorningAndEvening, EveningClearsThePaneAndRedrawsBothScales) {
    PaneAide p(10, 10);
    control::Ctr_Zandorel& c = p.c;
    c.VScroll.setValue(3);
    c.Opt_Soir.setValue(true);
    EXPECT_EQ(c.Etq_Aide.Count(), 1);
    EXPECT_EQ(c.IndiceEtqMax, 0);
    EXPECT_EQ(c.VScroll.max(), 0);
    EXPECT_FALSE(c.VScroll.visible());
    EXPECT_FALSE(c.TabTempoAide.exists());
    EXPECT_EQ(c.HeureDebutEchelle, 14.0);
    EXPECT_EQ(c.HeureFinEchelle, 22.0);
    EXPECT_EQ(c.PasQuartHeure, 175);
    EXPECT_EQ(c.Line_HeureAide.Count() - 1, 34);
    EXPECT_EQ(c.Etq_HeureDetail(1).caption(), "14h00");
    EXPECT_EQ(c.Etq_HeureDetail(c.Etq_HeureDetail.Count() - 1).caption(), "22h00");
    c.Opt_Matin.setValue(true);
    EXPECT_EQ(c.Line_HeureAide.Count() - 1, 33);
}

TEST(DetailColours, RowsAlternateInTopOrderAndTheLastOfATieComesFirst) {
    ControlFixture f;
    control::Ctr_Zandorel& c = *f.ctl;
    c.CouleurAide1 = base::numberText(0xC0E0FF);
    c.CouleurAide2 = base::numberText(0x80C0FF);
    c.Tables.renew(model::Pane::Detail);
    const int tops[] = {2000, 1000, 1000};
    for (int n = 1; n <= 3; ++n) {
        c.TriCouleurEtq(n, 800, 900, 30, tops[n - 1], kCle, "I");
        c.Etq_Aide.Load(n);
    }
    c.AlternerCouleursDetail();
    EXPECT_EQ(c.TabTempoDetail(1, 1), "3");
    EXPECT_EQ(c.Etq_Aide(3).backColor(), 0xC0E0FF);
    EXPECT_EQ(c.Etq_Aide(2).backColor(), 0x80C0FF);
    EXPECT_EQ(c.Etq_Aide(1).backColor(), 0xC0E0FF);
}

TEST(LabelMaking, LabelsOfBothPanesWriteTheirPlaceBackIntoTheRow) {
    ControlFixture f;
    control::Ctr_Zandorel& c = *f.ctl;
    f.service.put("CIVILAIDE", "00012", {"", "DUPONT", "Marie"});
    c.Mod.fichiers.CIVILAIDE = f.service.db->OpenFile("CIVILAIDE");
    c.CouleurInfirmier = c.CouleurSoignant = c.CouleurMixte = "255";
    c.NbIntervenantsTournee = 2;
    c.Opt_Matin_Click();
    c.Tables.renew(model::Pane::Aide);
    c.AjoutEtqAide(1, 9, 850, 1000, 30, 0, kCle, "I|2");
    c.AjoutEtqAide(2, 9, 850, 1000, 30, 0, "00099215000000011850", "A");
    EXPECT_EQ(c.creerEtiquetteAide(1).left(), 7040);
    EXPECT_EQ(c.TabTempoAide(1, 1) + " " + c.TabTempoAide(1, 5), "1 1120");
    // No civil record for 00099: the label takes the name the buffer last held.
    EXPECT_EQ(c.creerEtiquetteAide(2).caption(), "DUPONT\r\nMarie\r\n30mn\r\n");

    c.Tables.renew(model::Pane::Detail);
    c.CouleurAjoutEtqLst(1, 4, 800, 1000, 20, 0, kCle, "A|1|0850");
    const toolkit::Label& detail = c.creerEtiquetteDetail(1);
    EXPECT_EQ(detail.linkItem(), "0850");
    EXPECT_EQ(detail.caption(), "DUPONT Marie 20mn 2/2");
    EXPECT_EQ(c.TabTempoDetail(1, 7), "A|1");
    EXPECT_EQ(c.TabTempoDetail(1, 5), "2510");
}

}  // namespace
