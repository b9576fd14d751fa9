#include "companions/frm_accords.h"

#include <gtest/gtest.h>

#include "service_test.h"
#include "toolkit/host.h"

namespace {

using control::EcranServiceType;
using control::Frm_Accords;
using Liste = std::vector<std::string>;

// Aidé 00012 has accord 001 on element 000001 from day 21000 to 22000; aidé 00013 has no element yet.
struct Accords : testing_support::ServiceEcrans {
    Accords() { f.service.put("CIVILAIDE", "00013", {"", "MARTIN", "Paul"}); }
    void jouer(std::function<void(Frm_Accords&)> jeu) {
        ouvrir<Frm_Accords>(EcranServiceType::Accords, "Frm_Accords", std::move(jeu));
    }
    Liste accords() { return f.service.keys("SSIADACCORDS", "SELECT SSIADACCORDS PAR 0"); }
};

// A new accord typed: the aidé (none when empty), then both days.
void saisir(Frm_Accords& e, const std::string& aide, const std::string& premier, const std::string& dernier) {
    toolkit::input::click(e.Cmd_Nouveau);
    if (!aide.empty()) toolkit::input::choose(e.Cbo_Aide, aide);
    toolkit::input::type(e.Txt_PremierJour, premier);
    toolkit::input::type(e.Txt_DernierJour, dernier);
}

TEST(Frm_Accords, RefusesBeforeWritingAndNamesTheField) {
    struct Cas {
        const char *nom, *aide, *premier, *dernier, *message;
    } const cas[] = {
        {"no aidé chosen", "", "01/12/2026", "31/12/2026", "« Aidé » : à choisir dans la liste."},
        {"an aidé without element", "00013 MARTIN Paul", "01/12/2026", "31/12/2026",
         "« Élément de gestion » : l'aidé n'a aucun élément de gestion."},
        {"no first day", "00012 DUPONT Marie", "", "31/12/2026", "« Premier jour » : à remplir."},
        {"a day that does not exist", "00012 DUPONT Marie", "01/12/2026", "31/02/2027",
         "« Dernier jour » : 31/02/2027 n'est pas une date."},
        {"last before first", "00012 DUPONT Marie", "01/12/2026", "30/11/2026",
         "« Dernier jour » : le dernier jour ne peut pas précéder le premier."},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Accords s;
        s.jouer([&](Frm_Accords& e) {
            saisir(e, k.aide, k.premier, k.dernier);
            EXPECT_FALSE(e.Cmd_Enregistrer_Click());
            EXPECT_EQ(e.Txt_DernierJour.text(), k.dernier);
        });
        const auto boites = s.f.host.takeShown();
        ASSERT_EQ(boites.size(), 1u);
        EXPECT_EQ(boites[0].text, k.message);
        EXPECT_EQ(boites[0].title, "Accords de prise en charge");
        EXPECT_EQ(s.accords(), (Liste{"00012001000001"}));
    }
}

TEST(Frm_Accords, NumbersANewAccordForItsAideAndElement) {
    Accords s;
    s.jouer([&](Frm_Accords& e) {
        EXPECT_EQ(e.Cbo_Aide.items(), (Liste{"00012 DUPONT Marie", "00013 MARTIN Paul"}));
        saisir(e, "00012 DUPONT Marie", "1/12/2026", "31/12");
        // The aidé's only element is taken at once.
        EXPECT_EQ(e.Cbo_Element.text(), "000001 (secteur N1)");
        toolkit::input::click(e.Chk_Suspendu);
        EXPECT_TRUE(e.Cmd_Enregistrer_Click());
        EXPECT_EQ(e.cleCourante(), "00012002000001");
        EXPECT_FALSE(e.Cbo_Aide.enabled());
        EXPECT_EQ(e.Lst_Elements.items(),
                  (Liste{"00012 DUPONT Marie - 001 000001 : du 29/06/2025 au 25/03/2028",
                         "00012 DUPONT Marie - 002 000001 : du 01/12/2026 au 31/12/2026 (suspendu)"}));
    });
    EXPECT_EQ(s.message(), "");
    EXPECT_EQ(s.enreg("SSIADACCORDS", "00012002000001"),
              "21520\xFE"
              "21550\xFE"
              "S");
}

TEST(Frm_Accords, ASuspendedOrDeletedAccordTakesTheAideOffTheNextDisplay) {
    Accords s;
    EXPECT_EQ(s.enAttente(), (Liste{"00012 I"}));
    s.jouer([&](Frm_Accords& e) {
        toolkit::input::type(e.Txt_Recherche, "dupont");
        e.Lst_Elements.setListIndex(0);
        EXPECT_EQ(e.Txt_PremierJour.text(), "29/06/2025");
        toolkit::input::click(e.Chk_Suspendu);
        EXPECT_TRUE(e.Cmd_Enregistrer_Click());
    });
    EXPECT_EQ(s.enAttente(), Liste{});
    s.jouer([&](Frm_Accords& e) {
        e.Lst_Elements.setListIndex(0);
        toolkit::input::click(e.Chk_Suspendu);
        EXPECT_TRUE(e.Cmd_Enregistrer_Click());
    });
    EXPECT_EQ(s.enAttente(), (Liste{"00012 I"}));
    s.jouer([&](Frm_Accords& e) {
        e.Lst_Elements.setListIndex(0);
        s.f.host.queueAnswer(toolkit::msgbox::kYes);
        EXPECT_TRUE(e.Cmd_Supprimer_Click());
        EXPECT_EQ(e.Lst_Elements.listCount(), 0);
    });
    EXPECT_EQ(s.message(), "Supprimer l'accord 001 de DUPONT Marie (00012), élément 000001 ?");
    EXPECT_EQ(s.accords(), Liste{});
    EXPECT_EQ(s.enAttente(), Liste{});
}

}  // namespace
