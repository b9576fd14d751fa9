#include "editing/historique.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "model/labels.h"
#include "support/drop_day.h"
#include "toolkit/form_state.h"
#include "toolkit/host.h"

namespace {

using Jour = testing_support::DropDay;

// What the screen shows and holds: every control with the loaded labels, and the two working tables.
struct Ecran {
    toolkit::FormState controles;
    std::vector<std::string> tables;
    int indiceMax = 0;
    bool operator==(const Ecran&) const = default;
};

Ecran ecran(const control::Ctr_Zandorel& c) {
    Ecran e{toolkit::captureForm(c.UserControl), {}, c.IndiceEtqMax};
    for (const model::WorkTable* t : {&c.TabTempoAide, &c.TabTempoDetail})
        e.tables.push_back(t->exists() ? (*t)->text() : "(libérée)");
    return e;
}

// The labels of the day, hovered as a user's pointer does before taking one.
struct Etiquettes {
    int martin, robert, dupont;
};
Etiquettes survolees(Jour& j) {
    const Etiquettes e{j.etiquette("00013", model::Pane::Aide), j.etiquette("00016", model::Pane::Aide),
                       j.etiquette("00012", model::Pane::Detail)};
    for (int i : {e.martin, e.robert, e.dupont})
        j.c.Etq_Aide_MouseMove(i, 0, 0, 20, 20);
    return e;
}

TEST(Historique, WhatIsNoMoveOrComesAtTheWrongTimeLeavesNoEntry) {
    struct Cas {
        const char* nom;
        std::function<void(Jour&, const Etiquettes&)> geste;
        bool annulable;    // the one move the row makes stands to undo
        bool ecranIntact;  // the gesture itself changes nothing on the screen
    } const cas[] = {
        {"undo with nothing to undo", [](Jour& j, const Etiquettes&) { j.c.Annuler(); }, false, true},
        {"redo with nothing to redo", [](Jour& j, const Etiquettes&) { j.c.Retablir(); }, false, true},
        {"a drop within 200 twips of the grab",
         [](Jour& j, const Etiquettes&) { j.c.DeposerEtiquette(150, 150); }, false, true},
        {"a drop refused on a past day",
         [](Jour& j, const Etiquettes& e) {
             j.c.TourneeAnterieure = true;
             j.glisser(e.martin, 1000, 2860);
             j.c.TourneeAnterieure = false;
         },
         false, false},
        {"a label dropped again where its last drop put it",
         [](Jour& j, const Etiquettes& e) {
             j.glisser(e.dupont, 1000, 2510);
             j.glisser(e.dupont, 1000, 2510);
         },
         true, true},
        {"chaining a tournée with no gap left",
         [](Jour& j, const Etiquettes& e) {
             j.glisser(e.dupont, 1000, 5310);
             j.c.Cmd_Enchainement_Click();
         },
         true, true},
        {"undo and redo during a drag",
         [](Jour& j, const Etiquettes& e) {
             j.glisser(e.martin, 1000, 2860);
             j.c.Etq_Aide_MouseDown(e.dupont, 1, 0, 20, 20);
             EXPECT_FALSE(j.c.peutAnnuler());
             j.c.Annuler();
             j.c.Retablir();
             j.c.UserControl.endDrag();
         },
         true, true},
        {"undo during a long command",
         [](Jour& j, const Etiquettes& e) {
             j.glisser(e.martin, 1000, 2860);
             j.c.debutCommandeLongue();
             EXPECT_FALSE(j.c.peutAnnuler());
             j.c.Annuler();
             j.c.finCommandeLongue();
         },
         true, true},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Jour j;
        const Etiquettes e = survolees(j);
        const Ecran avant = ecran(j.c);
        k.geste(j, e);
        j.boites();
        EXPECT_EQ(j.c.peutAnnuler(), k.annulable);
        j.c.Annuler();
        EXPECT_FALSE(j.c.peutAnnuler());
        EXPECT_EQ(j.c.peutRetablir(), k.annulable);
        EXPECT_EQ(ecran(j.c) == avant, k.ecranIntact);
    }
}

TEST(Historique, UndoPutsBackEveryMoveExactlyAndRedoMakesItAgain) {
    struct Cas {
        const char* nom;
        std::function<void(Jour&, const Etiquettes&)> deplacement;
    } const cas[] = {
        {"a waiting label dropped onto DUPONT, who goes down",
         [](Jour& j, const Etiquettes& e) { j.glisser(e.martin, 1000, 2000); }},
        {"the second intervenant of an act for two at 8h15",
         [](Jour& j, const Etiquettes& e) { j.glisser(e.robert, 1000, 2335); }},
        {"DUPONT sent back to the waiting list",
         [](Jour& j, const Etiquettes& e) { j.glisser(e.dupont, 6000, 2000); }},
        {"BERNARD pushed off the bottom, back to the waiting list",
         [](Jour& j, const Etiquettes& e) { j.glisser(e.martin, 1000, 5900); }},
        {"chaining", [](Jour& j, const Etiquettes&) { j.c.Cmd_Enchainement_Click(); }},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Jour j;
        const Etiquettes e = survolees(j);
        const Ecran avant = ecran(j.c);
        k.deplacement(j, e);
        EXPECT_EQ(j.boites(), "");
        const Ecran apres = ecran(j.c);
        ASSERT_FALSE(apres == avant);
        while (j.c.peutAnnuler())
            j.c.Annuler();
        EXPECT_TRUE(ecran(j.c) == avant);
        while (j.c.peutRetablir())
            j.c.Retablir();
        EXPECT_TRUE(ecran(j.c) == apres);
        EXPECT_EQ(j.boites(), "");
    }
}

TEST(Historique, EmptiedWhenTheDayIsShownSavedOrLeftAndRedoDroppedByANewMove) {
    struct Cas {
        const char* nom;
        std::function<void(Jour&, const Etiquettes&)> action;
        bool annulable, retablissable;
    } const cas[] = {
        {"a display", [](Jour& j, const Etiquettes&) { j.show(); }, false, false},
        {"a validation", [](Jour& j, const Etiquettes&) { j.c.Cmd_Ok_Click(); }, false, false},
        {"Annuler, which leaves the day", [](Jour& j, const Etiquettes&) { j.c.Cmd_Sortir_Click(); }, false,
         false},
        {"the date box left, the changes not saved",
         [](Jour& j, const Etiquettes&) {
             j.f.host.queueAnswer(toolkit::msgbox::kNo);
             j.c.Cbo_Date_LostFocus();
         },
         false, false},
        {"a new move", [](Jour& j, const Etiquettes& e) { j.glisser(e.dupont, 1000, 3560); }, true, false},
        {"an undo", [](Jour& j, const Etiquettes&) { j.c.Annuler(); }, false, true},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Jour j;
        const Etiquettes e = survolees(j);
        j.glisser(e.martin, 1000, 2860);
        j.glisser(e.dupont, 1000, 2510);
        j.c.Annuler();
        ASSERT_TRUE(j.c.peutAnnuler());
        ASSERT_TRUE(j.c.peutRetablir());
        k.action(j, e);
        EXPECT_EQ(j.c.peutAnnuler(), k.annulable);
        EXPECT_EQ(j.c.peutRetablir(), k.retablissable);
    }
}

// The question on unsaved changes compares the labels with what was loaded: once the moves are undone,
// there is nothing to ask.
TEST(Historique, UndoingBackToWhatWasLoadedLeavesNoQuestion) {
    Jour j;
    const Etiquettes e = survolees(j);
    j.glisser(e.dupont, 1000, 2510);
    j.glisser(e.martin, 1000, 2860);
    ASSERT_TRUE(j.c.selection().TourneeModifiee(false));
    ASSERT_TRUE(j.c.selection().TourneeModifiee(true));
    j.c.Annuler();
    j.c.Annuler();
    EXPECT_FALSE(j.c.selection().TourneeModifiee(false));
    EXPECT_FALSE(j.c.selection().TourneeModifiee(true));
    // Leaving the date asks nothing: no answer is queued, and a question would find none.
    j.c.Cbo_Date_LostFocus();
    EXPECT_EQ(j.boites(), "");
}

}  // namespace
