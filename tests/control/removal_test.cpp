#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/text.h"
#include "model/labels.h"
#include "shell/ctr_zandorel.h"
#include "support/control_fixture.h"

namespace {

namespace col = model::col;
using Lignes = std::vector<std::string>;

// Monday 23/11/2026 shown without a tournée (today is Sunday 22/11). Aidé 00012 waits from its start to
// 9h00 and is sent to "001", the one tournée of the sector with a record that day; others wait beside it.
struct Affectation {
    testing_support::ControlFixture f;
    control::Ctr_Zandorel& c = *f.ctl;

    Affectation(const std::string& intervenants, const Lignes& autres, const std::string& places) {
        for (const char* fichier : {"SSIADELEMGEST", "TPSTEMPO"})
            f.service.db->store().createFile(fichier);
        f.service.put("SSIADCARACTTOURNEE", "001",
                      {"LUNDI", "0", "6", "00", "14", "00", "I", "N1", "", intervenants});
        f.service.put("SSIADCARACTTOURNEE", "002", {"MARDI", "1", "6", "00", "14", "00", "I", "N1", "", "1"});
        f.service.put("SSIADTOURNEE", "00100099215120700", {"0730"});
        f.service.put("SSIADSOINS", "S01", {"Injection", "", "", "", "O"});
        attend("00012", "0800", places);
        for (std::size_t i = 0; i < autres.size(); ++i)
            attend(base::zeroPad(20 + static_cast<int>(i), 5), autres[i], "1");
        f.start();
        c.Txt_Date.setText("23/11/2026");
        c.Cmd_Affichage.fireClick();
        c.IndiceEtqCourante = numEtq(ligneDe("00012"));
        c.Mnu_AffectationTournee.fireClick();
    }
    void attend(const std::string& code, const std::string& debut, const std::string& places) {
        f.service.put("CIVILAIDE", code, {"", "NOM" + code, "Marie"});
        f.service.put("SSIADACCORDS", code + "001000001", {"21000", "22000", ""});
        f.service.put("SSIADPROTOCOLE", code + "210000000011" + debut,
                      {"", "0900", "S01", "30", places, "21000"});
        mvdb::DynamicRecord gestion;  // under the key the dialog reads
        gestion.set(23, "N1");
        f.service.db->store().write("SSIADELEMGEST", code + code + "000000", gestion.text());
    }
    std::int64_t ligneDe(const std::string& code) {
        for (std::int64_t i = 1; i <= c.TabTempoAide->DCount(); ++i) {
            if (c.TabTempoAide(i, col::CleProtocole).substr(0, 5) == code) return i;
        }
        return 0;
    }
    int numEtq(std::int64_t i) { return static_cast<int>(base::toNumber(c.TabTempoAide(i, col::NumEtq))); }
    // What a drop into the tournée leaves: the row in pane "DETAIL" with that TypeEtq, the label at Left
    // 760, the waiting rows below it one line up. With `moitie` the other place waits under a new label.
    void placer(const std::string& typeEtq, bool moitie) {
        const std::int64_t r = ligneDe("00012");
        const auto n = [&](int colonne) {
            return static_cast<int>(base::toNumber(c.TabTempoAide(r, colonne)));
        };
        toolkit::Label& placee = c.Etq_Aide(c.IndiceEtqAffectee);
        c.TriCouleurEtq(placee.index(), n(col::HeureDebut), n(col::HeureFin), n(col::DureeMn), 2000,
                        c.TabTempoAide(r, col::CleProtocole), typeEtq);
        if (moitie) {
            c.Etq_Aide.Load(++c.IndiceEtqMax).setGeometry(placee.left(), placee.top(), 100, 800);
            c.Tables.setNumEtq(model::Pane::Aide, r, c.IndiceEtqMax);
            c.Tables.setTypeEtq(model::Pane::Aide, r, model::TypeEtq("I|1"));
        } else {
            c.Tables.remove(model::Pane::Aide, r);
            for (std::int64_t j = r; j <= c.TabTempoAide->DCount(); ++j)
                c.Etq_Aide(numEtq(j)).setTop(c.Etq_Aide(numEtq(j)).top() - c.HauteurEtq);
        }
        placee.setLeft(model::kLeftDetail);
    }
};

enum class Place { Aucune, Entiere, Moitie };

TEST(EnleveAffectationTournee, GivesTheAssignedLabelBackInStartOrderOrJoinsItsOtherHalf) {
    struct Cas {
        const char* nom;
        bool sansRetour;
        const char* intervenants;  // of the tournée
        Lignes autres;             // starts of the other waiting rows
        const char* places;        // of the act assigned, starting at 8h00
        Place place;
        const char* typeDetail;
        Lignes attente;     // HeureDebut and TypeEtq of the waiting rows after
        const char* queue;  // tail of the caption of the label standing for the act; null: none waits
        bool gardee;        // the assigned label is still loaded
    } const cas[] = {
        // clang-format off
        {"SansRetour: nothing given back",         true,  "1", {"0700"}, "1", Place::Entiere, "I",   {"700 I"}, nullptr, false},
        {"not placed: it stays where it waits",    false, "1", {"0700"}, "1", Place::Aucune, "", {"700 I", "800 I"}, "", true},
        {"one person, between two waiting rows",   false, "1", {"0700", "0830"}, "1", Place::Entiere, "I",
            {"700 I", "800 I", "830 I"}, "", true},
        {"one person, after the last row",         false, "1", {"0700"}, "1", Place::Entiere, "I", {"700 I", "800 I"}, "", true},
        {"one person, into an empty list",         false, "1", {}, "1", Place::Entiere, "I",   {"800 I"},   "",    true},
        {"a half whose other place waits: joined", false, "1", {}, "2", Place::Moitie,  "I|1", {"800 I|2"}, "0/2", false},
        {"a half whose other place is elsewhere",  false, "1", {}, "2", Place::Entiere, "I|1", {"800 I|1"}, "1/2", true},
        {"an act of two placed whole",             false, "1", {}, "2", Place::Entiere, "I|2", {"800 I|1"}, "1/2", true},
        {"in a tournée of two: both places free",  false, "2", {}, "2", Place::Entiere, "I|1", {"800 I|2"}, "0/2", true},
        // clang-format on
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Affectation a(k.intervenants, k.autres, k.places);
        ASSERT_TRUE(a.c.Mod.FlagAffectationEnCours);
        if (k.place != Place::Aucune) a.placer(k.typeDetail, k.place == Place::Moitie);
        const int assignee = a.c.IndiceEtqAffectee;
        a.c.EnleveAffectationTournee(k.sansRetour);

        Lignes attente;
        for (std::int64_t i = 1; i <= a.c.TabTempoAide->DCount(); ++i) {
            attente.push_back(a.c.TabTempoAide(i, col::HeureDebut) + " " + a.c.TabTempoAide(i, col::TypeEtq));
            EXPECT_EQ(a.c.Etq_Aide(a.numEtq(i)).top(), 320 + 800 * i) << "row " << i;
        }
        EXPECT_EQ(attente, k.attente);
        EXPECT_EQ(a.c.Etq_Aide.exists(assignee), k.gardee);
        if (k.queue) {
            const toolkit::Label& acte = a.c.Etq_Aide(a.numEtq(a.ligneDe("00012")));
            EXPECT_EQ(acte.caption(), "NOM00012\r\nMarie\r\n30mn\r\n" + std::string(k.queue));
        }
        // The screen of a display without a tournée, the waiting labels kept and usable.
        for (const toolkit::Control* etiquette : a.c.Etq_Aide.elements())
            EXPECT_TRUE(etiquette->index() == 0 || (etiquette->left() >= 5290 && etiquette->enabled()));
        EXPECT_EQ(a.c.TabTempoDetail->DCount(), 0);
        EXPECT_FALSE(a.c.Mod.FlagAffectationEnCours);
        EXPECT_TRUE(a.c.SansTournee && a.c.Txt_CodeTournee.enabled() && a.c.Cmd_Affichage.enabled());
        EXPECT_EQ(a.c.Txt_CodeTournee.text() + a.c.Cbo_Tournee.text() + a.c.Cmd_Sortir.caption(), "Sortir");
    }
}

}  // namespace
