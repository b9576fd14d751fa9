#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/text.h"
#include "model/labels.h"
#include "support/drop_day.h"

namespace {

using Jour = testing_support::DropDay;

TEST(DeposerEtiquette, RefusesInItsOrderAndChangesNothing) {
    const std::string titre = " [Message KORVELINE 48]";
    struct Cas {
        const char* nom;
        std::function<void(Jour&)> avant;
        const char* code;
        model::Pane pane;
        double L, T;
        std::string message;
    } const cas[] = {
        {"within 200 twips of the grab offset", nullptr, "00013", model::Pane::Aide, 100, 100, ""},
        {"outside both zones", nullptr, "00012", model::Pane::Detail, 5294, 2000, ""},
        {"one twip lower than the bottom", nullptr, "00013", model::Pane::Aide, 1000, 6006, ""},
        {"a past day", [](Jour& j) { j.c.TourneeAnterieure = true; }, "00013", model::Pane::Aide, 1000, 3000,
         "Déplacement impossible : date de la tournée antérieure à la date du jour." + titre},
        {"back to the waiting list during an assignment",
         [](Jour& j) { j.c.Mod.FlagAffectationEnCours = true; }, "00012", model::Pane::Detail, 6000, 2000,
         "Déplacement impossible." + titre},
        {"no tournée", [](Jour& j) { j.c.SansTournee = true; }, "00013", model::Pane::Aide, 1000, 3000,
         "Déplacement impossible : aucune tournée selectionnée." + titre},
        {"a push off the bottom during an assignment", [](Jour& j) { j.c.Mod.FlagAffectationEnCours = true; },
         "00013", model::Pane::Aide, 1000, 5700,
         "Déplacement impossible, vous ne pouvez pas décaler les aidés." + titre},
        {"the other intervenant comes at another time", nullptr, "00016", model::Pane::Aide, 1000, 3560,
         "Déplacement impossible : un intervenant est déjà prévu dans la tournée 002 (LUNDI SOIR) de 08h00 à "
         "08h30" +
             titre},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Jour j;
        if (k.avant) k.avant(j);
        const int index = j.etiquette(k.code, k.pane);
        const std::string aide = j.c.TabTempoAide->text(), detail = j.c.TabTempoDetail->text(),
                          ou = j.place(index);
        j.glisser(index, k.L, k.T);
        EXPECT_EQ(j.boites(), k.message);
        EXPECT_EQ(j.place(index), ou);
        EXPECT_TRUE(j.c.TabTempoAide->text() == aide && j.c.TabTempoDetail->text() == detail);
    }
}

// The other tournée's record of ROBERT made no sense and was named by the display: it holds no time
// that the drop must share.
TEST(DeposerEtiquette, PassesOverARecordOfAnotherTourneeThatMakesNoSense) {
    for (const char* fin : {"8h30", "0750"}) {
        SCOPED_TRACE(fin);
        Jour j;
        j.f.service.put("SSIADTOURNEE", std::string("002") + "00016" + Jour::kLundi + "0800",
                        {fin, "000162100000000110800"});
        const int robert = j.etiquette("00016", model::Pane::Aide);
        j.glisser(robert, 1000, 3560);
        EXPECT_EQ(j.boites(), "");
        EXPECT_EQ(j.place(robert), "760 3560 1000");
    }
}

TEST(DeposerEtiquette, PlacesTheLabelAtTheTimeUnderItsTopAndPushesWhatItMeets) {
    struct Cas {
        const char* nom;
        const char* code;
        double T;
        const char* place;   // Left, Top and LinkItem of the dropped label
        const char* autre;   // the label of the tournée it may meet
        const char* pousse;  // where that one stands after the drop
    } const cas[] = {
        // clang-format off
        {"at 9h00, nothing met",          "00013", 2860, "760 2860 900",  "00012", "760 2160 0800"},
        {"onto DUPONT, who goes down",     "00013", 2000, "760 2000 775",  "00012", "760 2350 825,"},
        {"its bottom on the pane's edge",  "00013", 6005, "760 6005 1350", "00014", "10190 1925 1300"},
        {"the second intervenant at 8h15", "00016", 2335, "760 2335 825",  "00012", "760 2685 875,"},
        // clang-format on
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Jour j;
        const int index = j.etiquette(k.code, model::Pane::Aide),
                  autre = j.etiquette(k.autre, model::Pane::Detail);
        j.glisser(index, 1000, k.T);
        EXPECT_EQ(j.boites(), "");
        EXPECT_EQ(j.place(index), k.place);
        EXPECT_EQ(j.place(autre), k.pousse);
        EXPECT_FALSE(j.c.Etq_Horaire.visible());
    }
    Jour j;
    const int martin = j.etiquette("00013", model::Pane::Aide);
    j.glisser(martin, 1000, 2860);
    EXPECT_EQ(j.c.Etq_Aide(martin).caption(), "NOM00013 Marie 30mn");
    EXPECT_EQ(j.c.Etq_Aide(martin).toolTipText(), "00013 - NOM00013 Marie - 09h00 à 09h30 = 30mn");
    EXPECT_EQ(j.c.TabTempoDetail(2, model::col::NumEtq), std::to_string(martin));
    EXPECT_EQ(j.c.TabTempoAide->DCount(), 1);
}

}  // namespace
