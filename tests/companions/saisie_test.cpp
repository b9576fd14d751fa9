#include "companions/saisie.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/clock.h"
#include "data/conversion.h"

namespace control {
namespace {

struct Cas {
    const char* nom;
    std::string saisie;
    std::string refus;   // empty: accepted
    std::string valeur;  // what is stored when accepted
};

TEST(Saisie, HeuresHHhMM) {
    const Cas cas[] = {
        {"empty", "", "« Fin de la fenêtre » : à remplir.", ""},
        {"blanks only", "   ", "« Fin de la fenêtre » : à remplir.", ""},
        {"past 24h00", "25h00", "« Fin de la fenêtre » : 25h00 n'est pas une heure entre 00h00 et 24h00.",
         ""},
        {"24h01", "24h01", "« Fin de la fenêtre » : 24h01 n'est pas une heure entre 00h00 et 24h00.", ""},
        {"60 minutes", "9h60", "« Fin de la fenêtre » : 9h60 n'est pas une heure entre 00h00 et 24h00.", ""},
        {"one minute digit", "9h5", "« Fin de la fenêtre » : 9h5 n'est pas une heure entre 00h00 et 24h00.",
         ""},
        {"no h", "0930", "« Fin de la fenêtre » : 0930 n'est pas une heure entre 00h00 et 24h00.", ""},
        {"letters", "neuf h", "« Fin de la fenêtre » : neuf h n'est pas une heure entre 00h00 et 24h00.", ""},
        {"three hour digits", "009h00",
         "« Fin de la fenêtre » : 009h00 n'est pas une heure entre 00h00 et 24h00.", ""},
        {"hour alone", "9h", "", "0900"},
        {"leading zero", "09h05", "", "0908"},
        {"half past", "11h30", "", "1150"},
        {"capital H and blanks", " 8H45 ", "", "0875"},
        {"midnight", "0h00", "", "0000"},
        {"end of day", "24h00", "", "2400"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        std::string centiemesLus;
        EXPECT_EQ(verifierHeure("Fin de la fenêtre", k.saisie, centiemesLus), k.refus);
        if (k.refus.empty()) {
            EXPECT_EQ(centiemesLus, k.valeur);
        }
    }
    // What is stored shows again as it was typed.
    for (const char* heure : {"00h00", "08h05", "11h30", "16h55", "24h00"}) {
        std::string c;
        ASSERT_EQ(verifierHeure("Début", heure, c), "");
        EXPECT_EQ(heureSaisie(c), heure);
    }
}

TEST(Saisie, Dates) {
    const base::FixedClock horloge(*base::Date::fromDmy(22, 11, 2026), 0);
    data::ObjetConversion conversion(horloge);
    const Cas cas[] = {
        {"empty", "", "« Dernier jour » : à remplir.", ""},
        {"31 February", "31/02/2027", "« Dernier jour » : 31/02/2027 n'est pas une date.", ""},
        {"month 13", "01/13/2026", "« Dernier jour » : 01/13/2026 n'est pas une date.", ""},
        {"words", "lundi", "« Dernier jour » : lundi n'est pas une date.", ""},
        {"full date", "22/11/2026", "", "21511"},
        {"completed with this year", "23/11", "", "21512"},
        {"short year", "30/11/26", "", "21519"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        std::string jour;
        EXPECT_EQ(verifierDate("Dernier jour", k.saisie, conversion, jour), k.refus);
        if (k.refus.empty()) {
            EXPECT_EQ(jour, k.valeur);
        }
    }
}

TEST(Saisie, DureesEtFenetres) {
    const Cas durees[] = {
        {"empty", "", "« Durée (minutes) » : à remplir.", ""},
        {"zero", "0", "« Durée (minutes) » : 0 n'est pas une durée de 1 à 1440 minutes.", ""},
        {"a day and a minute", "1441", "« Durée (minutes) » : 1441 n'est pas une durée de 1 à 1440 minutes.",
         ""},
        {"negative", "-5", "« Durée (minutes) » : -5 n'est pas une durée de 1 à 1440 minutes.", ""},
        {"decimal", "7,5", "« Durée (minutes) » : 7,5 n'est pas une durée de 1 à 1440 minutes.", ""},
        {"too many digits for a number", "99999999999",
         "« Durée (minutes) » : 99999999999 n'est pas une durée de 1 à 1440 minutes.", ""},
        {"one minute", "1", "", "1"},
        {"a whole day", "1440", "", "1440"},
    };
    for (const Cas& k : durees) {
        SCOPED_TRACE(k.nom);
        int minutes = -1;
        EXPECT_EQ(verifierDuree("Durée (minutes)", k.saisie, minutes), k.refus);
        if (k.refus.empty()) {
            EXPECT_EQ(std::to_string(minutes), k.valeur);
        }
    }
    struct Fenetre {
        const char *nom, *debut, *fin;
        int duree;
        std::string refus;
    } const fenetres[] = {
        {"end before start", "0900", "0850", 30, "« Fin » : la fin doit être après le début."},
        {"end at start", "0900", "0900", 30, "« Fin » : la fin doit être après le début."},
        {"shorter than the care", "0800", "0850", 45,
         "« Fin » : la fenêtre est plus courte que la durée (45 minutes)."},
        {"exactly long enough", "0800", "0875", 45, ""},
        {"five minutes stored with rounding", "0800", "0808", 5, ""},
        {"a whole day", "0000", "2400", 1440, ""},
    };
    for (const Fenetre& k : fenetres) {
        SCOPED_TRACE(k.nom);
        EXPECT_EQ(verifierFenetre("Fin", k.debut, k.fin, k.duree), k.refus);
    }
}

TEST(Saisie, SuppressionsEtCodes) {
    EXPECT_EQ(questionSuppression("le soin 12 « Toilette »"), "Supprimer le soin 12 « Toilette » ?");
    EXPECT_EQ(refusUtilise("le soin 12 « Toilette »", {"protocole 00012215110000010900"}),
              "Le soin 12 « Toilette » est encore utilisé par : protocole 00012215110000010900.");
    EXPECT_EQ(refusUtilise("élément 000001", {"a", "b", "c", "d", "e", "f", "g"}),
              "Élément 000001 est encore utilisé par : a, b, c, d, e, ….");
    EXPECT_EQ(refusUtilise("x", {"a", "b", "c", "d", "e"}), "X est encore utilisé par : a, b, c, d, e.");

    struct Code {
        const char* nom;
        std::vector<std::string> existants;
        int largeur;
        std::string attendu;
    } const codes[] = {
        {"every code taken", {"1", "2", "3", "4", "5", "6", "7", "8", "9"}, 1, ""},
        {"nothing yet", {}, 5, "00001"},
        {"after the greatest", {"00003", "00001"}, 5, "00004"},
        {"letters kept", {"S01", "S09"}, 2, "S10"},
        {"numbers compare as numbers", {"9", "10"}, 2, "11"},
        {"full width: the first gap", {"001", "999"}, 3, "002"},
        {"no digits of its own: numbers", {"ABC"}, 2, "01"},
    };
    for (const Code& k : codes) {
        SCOPED_TRACE(k.nom);
        EXPECT_EQ(prochainCode(k.existants, k.largeur), k.attendu);
    }
}

}  // namespace
}  // namespace control
