#include "companions/frm_soins.h"

#include <gtest/gtest.h>

#include "service_test.h"
#include "toolkit/host.h"

namespace {

using control::EcranServiceType;
using control::Frm_Soins;
using Liste = std::vector<std::string>;

struct Soins : testing_support::ServiceEcrans {
    void jouer(std::function<void(Frm_Soins&)> jeu) {
        ouvrir<Frm_Soins>(EcranServiceType::Soins, "Frm_Soins", std::move(jeu));
    }
    std::string soins() { return enreg("SSIADSOINS", "S01") + " / " + enreg("SSIADSOINS", "S02"); }
};

TEST(Frm_Soins, RefusesWhatItCannotWriteAndKeepsWhatWasTyped) {
    struct Cas {
        const char* nom;
        std::function<void(Soins&, Frm_Soins&)> jeu;
        std::string message;
    } const cas[] = {
        {"a new soin without its label",
         [](Soins&, Frm_Soins& e) {
             toolkit::input::type(e.Txt_Libelle, "   ");
             toolkit::input::click(e.Cmd_Enregistrer);
         },
         "« Libellé » : à remplir."},
        {"a label emptied",
         [](Soins&, Frm_Soins& e) {
             e.Lst_Elements.setListIndex(1);
             toolkit::input::clear(e.Txt_Libelle);
             toolkit::input::click(e.Cmd_Enregistrer);
         },
         "« Libellé » : à remplir."},
        {"a soin that a protocole uses",
         [](Soins&, Frm_Soins& e) {
             e.Lst_Elements.setListIndex(0);
             toolkit::input::click(e.Cmd_Supprimer);
         },
         "Le soin S01 « Injection » est encore utilisé par : protocole 000122100000000110800."},
        {"a deletion with nothing chosen",
         [](Soins&, Frm_Soins& e) { toolkit::input::click(e.Cmd_Supprimer); },
         "Choisissez d'abord dans la liste ce qu'il faut supprimer."},
        {"a write the store fails",
         [](Soins& s, Frm_Soins& e) {
             e.Lst_Elements.setListIndex(1);
             toolkit::input::type(e.Txt_Libelle, " complète");
             s.f.service.faults->failChange(1);
             toolkit::input::click(e.Cmd_Enregistrer);
             EXPECT_EQ(e.Txt_Libelle.text(), "Toilette complète");
         },
         "disque plein (panne simulée)"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Soins s;
        const std::string avant = s.soins();
        s.jouer([&](Frm_Soins& e) { k.jeu(s, e); });
        const auto boites = s.f.host.takeShown();
        ASSERT_EQ(boites.size(), 1u);
        EXPECT_EQ(boites[0].text, k.message);
        EXPECT_EQ(boites[0].title, "Soins");
        EXPECT_EQ(boites[0].style, toolkit::msgbox::kExclamation);
        EXPECT_EQ(s.soins(), avant);
        EXPECT_EQ(s.enreg("SSIADSOINS", "S03"), "(absent)");
    }
}

TEST(Frm_Soins, CreatesWithTheNextCodeChangesAndDeletesAfterAsking) {
    Soins s;
    s.f.service.put("SSIADSOINS", "S02", {"Toilette", "", "", "", "", "", "", "", "autre programme"});
    s.jouer([&](Frm_Soins& e) {
        EXPECT_EQ(e.Lst_Elements.items(), (Liste{"S01   Injection", "S02   Toilette"}));
        toolkit::input::click(e.Cmd_Nouveau);
        toolkit::input::type(e.Txt_Libelle, "Pansement");
        toolkit::input::click(e.Chk_ActeInfirmier);
        toolkit::input::click(e.Cmd_Enregistrer);
        // The new soin is the record shown, and its row is chosen.
        EXPECT_EQ(e.cleCourante(), "S03");
        EXPECT_EQ(e.Lst_Elements.list(e.Lst_Elements.listIndex()), "S03   Pansement");
        EXPECT_EQ(e.Etq_Code.caption(), "Soin S03");

        e.Lst_Elements.setListIndex(1);
        EXPECT_FALSE(e.Chk_ActeInfirmier.value());
        toolkit::input::clear(e.Txt_Libelle);
        toolkit::input::type(e.Txt_Libelle, "Toilette complète");
        toolkit::input::click(e.Cmd_Enregistrer);

        e.Lst_Elements.setListIndex(2);
        s.f.host.queueAnswer(toolkit::msgbox::kNo);
        EXPECT_FALSE(e.Cmd_Supprimer_Click());
        s.f.host.queueAnswer(toolkit::msgbox::kYes);
        EXPECT_TRUE(e.Cmd_Supprimer_Click());
        EXPECT_EQ(e.Lst_Elements.items(), (Liste{"S01   Injection", "S02   Toilette complète"}));
        EXPECT_EQ(e.cleCourante(), "");
    });
    const auto boites = s.f.host.takeShown();
    ASSERT_EQ(boites.size(), 2u);
    for (const auto& b : boites) {
        EXPECT_EQ(b.text, "Supprimer le soin S03 « Pansement » ?");
        EXPECT_EQ(b.title, "Soins");
        EXPECT_EQ(b.style, toolkit::msgbox::kYesNo | toolkit::msgbox::kQuestion);
    }
    EXPECT_EQ(s.enreg("SSIADSOINS", "S03"), "(absent)");
    // The attributes of other programs stay.
    EXPECT_EQ(s.enreg("SSIADSOINS", "S02"),
              "Toilette complète\xFE\xFE\xFE\xFE\xFE\xFE\xFE\xFE"
              "autre programme");
}

TEST(Frm_Soins, SearchesByCodeOrLabelAsYouTypeIgnoringCaseAndAccents) {
    Soins s;
    s.f.service.put("SSIADSOINS", "S03", {"Prévention d'escarres"});
    struct Cas {
        const char* recherche;
        Liste lignes;
    } const cas[] = {
        {"PREVENTION", {"S03   Prévention d'escarres"}},
        {"toilétte", {"S02   Toilette"}},
        {"s0", {"S01   Injection", "S02   Toilette", "S03   Prévention d'escarres"}},
        {"rien", {}},
        {"", {"S01   Injection", "S02   Toilette", "S03   Prévention d'escarres"}},
    };
    s.jouer([&](Frm_Soins& e) {
        // What is typed in the record shown stays through the searches.
        e.Lst_Elements.setListIndex(1);
        toolkit::input::type(e.Txt_Libelle, " partielle");
        for (const Cas& k : cas) {
            SCOPED_TRACE(k.recherche);
            toolkit::input::clear(e.Txt_Recherche);
            toolkit::input::type(e.Txt_Recherche, k.recherche);
            EXPECT_EQ(e.Lst_Elements.items(), k.lignes);
            EXPECT_EQ(e.Txt_Libelle.text(), "Toilette partielle");
            EXPECT_EQ(e.cleCourante(), "S02");
        }
    });
}

TEST(Frm_Soins, TheNextDisplayShowsTheKindOfCareSaved) {
    Soins s;
    EXPECT_EQ(s.enAttente(), (Liste{"00012 I"}));
    s.jouer([&](Frm_Soins& e) {
        e.Lst_Elements.setListIndex(0);
        toolkit::input::click(e.Chk_ActeInfirmier);
        toolkit::input::click(e.Cmd_Enregistrer);
    });
    EXPECT_EQ(s.message(), "");
    EXPECT_EQ(s.enAttente(), (Liste{"00012 A"}));
}

}  // namespace
