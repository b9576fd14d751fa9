#include <gtest/gtest.h>

#include <string>

#include "shell/ctr_zandorel.h"
#include "support/control_fixture.h"
#include "toolkit/input.h"

namespace {

// The screen after Init, on the morning scale (6h00, 175 twips a quarter), with labels placed by hand.
struct Ecran {
    testing_support::ControlFixture f;
    control::Ctr_Zandorel& c = f.start();

    toolkit::Label& etiquette(int index, double left, double top) {
        toolkit::Label& e = c.Etq_Aide.Load(index);
        e.setGeometry(left, top, 1200, 500);
        e.setVisible(true);
        return e;
    }
    std::string horaire() const {
        if (!c.Etq_Horaire.visible()) return "hidden";
        return c.Etq_Horaire.caption() + " @" + std::to_string(static_cast<int>(c.Etq_Horaire.top()));
    }
};

// A press 20.5 and 21.5 twips inside label 2 at (left, top), after the mouse moved onto it or not: the
// pane and offsets it leaves, whether a drag began, and whether the menu opened offering the assignment.
std::string presser(int bouton, double left, double top, bool survolee, const std::string& code) {
    Ecran e;
    e.c.Txt_CodeTournee.setText(code);
    toolkit::Label& etiquette = e.etiquette(2, left, top);
    e.c.PanneauSource = model::Pane::None;
    e.f.host.queueMenuChoice("");
    if (survolee) etiquette.MouseMove(0, 0, 20.5, 21.5);
    etiquette.MouseDown(bouton, 0, 20.5, 21.5);
    EXPECT_EQ(e.c.IndiceEtqCourante, 2);
    // "-" while the press left no pane.
    const std::string_view pane = model::paneText(e.c.PanneauSource);
    std::string out = std::string(pane.empty() ? "-" : pane) + " " +
                      std::to_string(e.c.edition.DecalageSourisX) + "," +
                      std::to_string(e.c.edition.DecalageSourisY);
    if (e.c.UserControl.dragSource() == &etiquette) out += " drag";
    if (e.f.host.menuChoicesQueued() == 0) out += e.c.Mnu_AffectationTournee.enabled() ? " menu+" : " menu";
    return out;
}

TEST(Etq_Aide_MouseDown, TheRightButtonOpensTheMenuTheLeftDragsFromThePaneWhereTheLabelStands) {
    // clang-format off
    struct { const char* nom; int bouton; double left, top; bool survolee; const char* code, *attendu; }
    const cas[] = {
        {"right button, a code stands: no assignment", 2, 760, 2000, true, "12", "- 0,0 menu"},
        {"right button, no code: assignment offered",  2, 760, 2000, true, "", "- 0,0 menu+"},
        {"left button, mouse never over it",           1, 6000, 2000, false, "", "- 0,0"},
        {"Left 11000",                                  1, 11000, 2000, true, "", "DETAIL 20,22 drag"},
        {"Left 10999",                                  1, 10999, 2000, true, "", "AIDE 20,22 drag"},
        {"Left 5290",                                   1, 5290, 2000, true, "", "AIDE 20,22 drag"},
        {"Left 5289",                                   1, 5289, 2000, true, "", "DETAIL 20,22 drag"},
        {"Top 1080",                                    1, 6000, 1080, true, "", "DETAIL 20,22 drag"},
        {"Top 1081",                                    1, 6000, 1081, true, "", "AIDE 20,22 drag"},
        {"Top 6360",                                    1, 6000, 6360, true, "", "DETAIL 20,22 drag"},
    };
    // clang-format on
    for (const auto& k : cas)
        EXPECT_EQ(presser(k.bouton, k.left, k.top, k.survolee, k.code), k.attendu) << k.nom;
}

TEST(SuivreHoraireEtiquette, ShowsTheTimeUnderTheLabelsTopWithinItsOwnBounds) {
    // clang-format off
    struct { const char* nom; int pas; double debut, L, T; const char* attendu; } const cas[] = {
        {"L 199", 175, 6.00, 199, 2000, "hidden"},          {"L 4501", 175, 6.00, 4501, 2000, "hidden"},
        {"T 749", 175, 6.00, 1000, 749, "hidden"},          {"T 6341", 175, 6.00, 1000, 6341, "hidden"},
        {"L 200, T 750", 175, 6.00, 200, 750, "6,00 @645"},
        {"L 4500, T 6340", 175, 6.00, 4500, 6340, "14,00 @6235"},
        {"worked example", 105, 6.00, 1000, 1180, "7,00 @1075"},
        {"58 minutes carry the hour", 105, 6.00, 1000, 1163, "7,00 @1058"},
        {"scale from 6h30", 175, 6.30, 1000, 760, "6,30 @655"},
    };
    // clang-format on
    for (const auto& k : cas) {
        Ecran e;
        e.c.PasQuartHeure = k.pas;
        e.c.HeureDebutEchelle = k.debut;
        e.c.edition.DecalageSourisX = 10;
        e.c.edition.DecalageSourisY = 20;
        e.c.SuivreHoraireEtiquette(1010, 2020);  // shown first, so that hiding is seen
        e.c.SuivreHoraireEtiquette(static_cast<float>(k.L + 10), static_cast<float>(k.T + 20));
        EXPECT_EQ(e.horaire(), k.attendu) << k.nom;
        EXPECT_EQ(e.c.Etq_Horaire.foreColor(), 0x0000FF) << k.nom;
    }
}

TEST(DragOver, FollowsThePointerButOverTheChainingButtonTheDraggedLabel) {
    // clang-format off
    struct { const char* nom; int indice, indiceAttendu; const char* surBouton; } const cas[] = {
        {"index 0 takes the label passed over", 0, 5, "9,20 @2965"},
        {"a dragged index is kept",             4, 4, "7,50 @1965"},
    };
    // clang-format on
    for (const auto& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        e.etiquette(4, 760, 2000).MouseMove(0, 0, 20, 30);
        e.etiquette(5, 760, 3000);
        e.c.Etq_Aide(4).MouseDown(1, 0, 20, 30);
        e.c.IndiceEtqCourante = k.indice;
        toolkit::input::dragOver(e.c.UserControl, 1000, 3100, 0);  // over label 5
        EXPECT_EQ(e.horaire(), "9,20 @2965");
        EXPECT_EQ(e.c.IndiceEtqCourante, k.indiceAttendu);
        toolkit::input::dragOver(e.c.UserControl, 1000, 4100, 0);  // over the control itself
        EXPECT_EQ(e.horaire(), "10,45 @3965");
        // Deliberate: the button's own place (6600 down) would hide the time.
        toolkit::input::dragOver(e.c.UserControl, 1400, 6700, 0);
        EXPECT_EQ(e.horaire(), k.surBouton);
    }
}

}  // namespace
