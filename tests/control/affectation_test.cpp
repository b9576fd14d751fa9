#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "editing/frm_affectation_tournee.h"
#include "shell/ctr_zandorel.h"
#include "support/control_fixture.h"

namespace {

using Lignes = std::vector<std::string>;
const std::string kAucune = "Message KORVELINE : Pas de tournée définie sur ce jour";

// Monday 23/11/2026 (internal day 21512), today Sunday 22/11. Tournées of sector N1 from 6h00 to 14h00
// on Mondays unless their name says otherwise; each has a record on 23/11 but "004".
struct Service {
    testing_support::ControlFixture f;
    control::Ctr_Zandorel& c = *f.ctl;

    Service() {
        for (const char* fichier :
             {"CIVILAIDE", "SSIADACCORDS", "SSIADELEMGEST", "SSIADPROTOCOLE", "TPSTEMPO"})
            f.service.db->store().createFile(fichier);
        for (const Lignes& t : std::vector<Lignes>{{"001", "INFIRMIERS", "0", "6", "14", "I", "N1", "1"},
                                                   {"002", "MIXTE", "0", "6", "14", "M", "N1", "1"},
                                                   {"003", "BINOME", "0", "6", "14", "I", "N1", "2"},
                                                   {"004", "SANS RELEVE", "0", "6", "14", "I", "N1", "1"},
                                                   {"005", "MARDI", "1", "6", "14", "I", "N1", "1"},
                                                   {"006", "AUTRE SECTEUR", "0", "6", "14", "I", "N9", "1"},
                                                   {"007", "DES 9H", "0", "9", "14", "I", "N1", "1"},
                                                   {"008", "SANS SECTEUR", "0", "6", "14", "I", "", "1"},
                                                   {"009", "JUSQU'A 8H", "0", "6", "8", "I", "N1", ""}}) {
            f.service.put("SSIADCARACTTOURNEE", t[0],
                          {t[1], t[2], t[3], "00", t[4], "00", t[5], t[6], "", t[7]});
            f.service.put("SSIADTOURNEE", t[0] + "00099" + (t[0] == "004" ? "21505" : "21512") + "0700",
                          {"0730"});
        }
        f.service.put("SSIADSOINS", "S01", {"Injection", "", "", "", "O"});
        f.service.put("SSIADSOINS", "S02", {"Toilette", "", "", "", "N"});
        f.start();
    }
    // An aidé waiting from 8h00 to `fin` with these soins, for one or two, and a sector, when given, under
    // the key the dialog reads: its code joined to the Tag's characters 1-5 and 9-14.
    void attend(const std::string& code, const std::string& soins, const std::string& nombre,
                const std::string& secteur, const std::string& fin) {
        f.service.put("CIVILAIDE", code, {"", "NOM" + code, "Marie"});
        f.service.put("SSIADACCORDS", code + "001000001", {"21000", "22000", ""});
        f.service.put("SSIADPROTOCOLE", code + "2100000000110800", {"", fin, soins, "30", nombre, "21000"});
        if (secteur.empty()) return;
        mvdb::DynamicRecord gestion;
        gestion.set(23, secteur);
        f.service.db->store().write("SSIADELEMGEST", code + code + "000000", gestion.text());
    }
    Lignes boites() {
        Lignes out;
        for (const auto& b : f.host.takeShown())
            out.push_back(b.title + " : " + b.text);
        return out;
    }
};

TEST(Mnu_AffectationTournee_Click, OffersTheTourneesThatCanTakeTheInterventionThatDay) {
    struct Cas {
        const char *nom, *soins, *nombre, *secteur, *fin;
        Lignes lignes;  // offered: one opens at once, several in the dialog
        int choix;      // the line then chosen; -1: Annuler
        int intervenants;
    } const cas[] = {
        // clang-format off
        {"another sector: none, the label stays",   "S01",     "1", "N7", "0900", {}, 0, 0},
        {"no sector record: tournées of no sector", "S01",     "1", "",   "0900", {"008   SANS SECTEUR"}, 0, 1},
        {"an infirmier act",                        "S01",     "1", "N1", "0900", {"001   INFIRMIERS"}, 0, 1},
        {"a mixed act, by its colour: infirmiers",  "S01|S02", "1", "N1", "0900", {"001   INFIRMIERS"}, 0, 1},
        {"a soignant act: any type",                "S02",     "1", "N1", "0900", {"001   INFIRMIERS", "002   MIXTE"}, 1, 1},
        {"an act of two: tournées of two too",      "S01",     "2", "N1", "0900", {"001   INFIRMIERS", "003   BINOME"}, 1, 2},
        {"a window to 10h00 reaches 9h00's",        "S01",     "1", "N1", "1000", {"001   INFIRMIERS", "007   DES 9H"}, 0, 1},
        {"several, Annuler: nothing changes",       "S01",     "1", "N1", "1000", {"001   INFIRMIERS", "007   DES 9H"}, -1, 0},
        // clang-format on
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Service s;
        s.attend("00012", k.soins, k.nombre, k.secteur, k.fin);
        s.attend("00013", "S01", "1", "N1", "0900");
        s.c.Txt_Date.setText("23/11/2026");
        s.c.Cmd_Affichage.fireClick();
        Lignes offertes = k.lignes.size() == 1 ? k.lignes : Lignes{};
        s.f.host.queueDialog("Frm_AffectationTournee", [&](toolkit::Form& form) {
            auto& d = static_cast<control::Frm_AffectationTournee&>(form);
            offertes = d.Lst_Tournee.items();
            d.Cmd_Ok.fireClick();       // nothing selected: told, and the dialog stays
            EXPECT_FALSE(d.unload(0));  // the close box
            if (k.choix < 0) return d.Cmd_Annuler.fireClick();
            d.Lst_Tournee.setListIndex(k.choix);
            d.Lst_Tournee.DblClick();
        });
        s.c.IndiceEtqCourante = 1;
        s.c.Mnu_AffectationTournee.fireClick();

        const bool affectee = !k.lignes.empty() && k.choix >= 0;
        const std::string code = affectee ? k.lignes[static_cast<std::size_t>(k.choix)].substr(0, 3) : "";
        EXPECT_EQ(offertes, k.lignes);
        EXPECT_EQ(s.boites(), k.lignes.empty() ? Lignes{kAucune}
                              : k.lignes.size() == 1
                                  ? Lignes{}
                                  : Lignes{"Message KORVELINE : Sélection d'une tournée obligatoire"});
        EXPECT_EQ(s.c.Txt_CodeTournee.text(), code);
        EXPECT_EQ(s.c.Mod.FlagAffectationEnCours, affectee);
        EXPECT_EQ(s.c.Cmd_Sortir.caption(), affectee ? "Annuler" : "Sortir");
        EXPECT_EQ(s.c.Txt_CodeTournee.enabled(), !affectee);
        EXPECT_EQ(s.c.IndiceEtqAffectee, affectee ? 1 : 0);
        EXPECT_EQ(s.c.NbIntervenantsTournee, k.intervenants);
        // The label sent still waits, and alone stays usable while the assignment is pending.
        EXPECT_TRUE(s.c.Etq_Aide(1).enabled() && s.c.Etq_Aide(1).left() >= 5290);
        EXPECT_EQ(s.c.Etq_Aide(2).enabled(), !affectee);
    }
}

TEST(Frm_AffectationTournee, ShowsItselfAsTheAssignmentDialog) {
    Service s;
    control::Frm_AffectationTournee form(s.c);
    EXPECT_EQ(form.caption() + " " + form.Cmd_Ok.caption() + " " + form.Cmd_Annuler.caption(),
              "Affectation à une tournée OK Annuler");
}

}  // namespace
