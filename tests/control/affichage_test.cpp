#include <gtest/gtest.h>

#include <string>

#include "base/text.h"
#include "mvdb/dynamic_record.h"
#include "shell/ctr_zandorel.h"
#include "support/control_fixture.h"
#include "toolkit/controls.h"

namespace {

// Monday 16/11/2026, internal day; today is Sunday 22/11 and the tournée is shown for Monday 23/11.
constexpr const char* k16 = "21505";

// A Monday tournée "001" from 6h00 to 14h00 over sector N1 (and "002", so that the start chooses none),
// with aidés of N1 added one by one, each with an accord for the year and protocoles of every day.
struct Ecran {
    testing_support::ControlFixture f;
    control::Ctr_Zandorel& c = *f.ctl;

    Ecran() {
        for (const char* fichier :
             {"CIVILAIDE", "SSIADACCORDS", "SSIADELEMGEST", "SSIADPROTOCOLE", "SSIADTOURNEE", "TPSTEMPO"})
            f.service.db->store().createFile(fichier);
        f.service.put("SSIADCARACTTOURNEE", "001", {"Lundi", "0", "6", "00", "14", "00", "M", "N1", "", "1"});
        f.service.put("SSIADCARACTTOURNEE", "002", {"Soir", "0", "14", "00", "22", "00", "M", "N9", "", "1"});
        f.service.put("SSIADSOINS", "S01", {"Injection", "", "", "", "O"});
        f.service.put("SSIADSOINS", "S02", {"Toilette", "", "", "", "N"});
        f.start();
    }
    void aide(const std::string& code, const std::string& nom) {
        f.service.put("CIVILAIDE", code, {"", nom, "Marie"});
        f.service.put("SSIADACCORDS", code + "001000001", {"21000", "22000", ""});
        mvdb::DynamicRecord gestion;
        gestion.set(23, "N1");
        f.service.db->store().write("SSIADELEMGEST", code + "000001", gestion.text());
    }
    // A protocole of `code`, planned in "001" on 16/11 at `planifie` when given.
    void protocole(const std::string& code, const std::string& debut, const std::string& fin,
                   const std::string& duree, const std::string& soin = "S01",
                   const std::string& planifie = "") {
        const std::string cle = code + "210000000011" + debut;
        f.service.put("SSIADPROTOCOLE", cle, {"", fin, soin, duree, "1", "21000", ""});
        if (!planifie.empty()) f.service.put("SSIADTOURNEE", "001" + code + k16 + planifie, {fin, cle});
    }
    void afficherTournee() {
        c.Txt_CodeTournee.setText("001");
        c.Cbo_Date.setText("23/11/2026");
        c.Cmd_Affichage.fireClick();
    }
};

// A display reads its day in a few scans, whatever the number of aidés: no record is read one by one,
// the names of the waiting labels' aidés included.
TEST(Cmd_Affichage_Click, ReadsTheDayInAFewScansWhateverTheNumberOfAides) {
    for (const bool avecTournee : {false, true}) {
        SCOPED_TRACE(avecTournee ? "with the tournée" : "without a tournée");
        Ecran e;
        for (int i = 0; i < 12; ++i) {
            const std::string code = base::zeroPad(20 + i, 5);
            e.aide(code, "NOM" + code);
            e.protocole(code, "0800", "0900", "30", "S01", i % 3 == 0 ? "0800" : "");
            e.protocole(code, "1000", "1100", "20", "S02");
        }
        // The choice of the day reads the tournée; the display starts with the click.
        e.c.Txt_CodeTournee.setText(avecTournee ? "001" : "");
        if (avecTournee) {
            e.c.Cbo_Date.setText("23/11/2026");
        } else {
            e.c.Txt_Date.setText("23/11/2026");
        }
        testing_support::FaultyStore& store = *e.f.service.faults;
        store.pointReads = store.scans = 0;
        e.c.Cmd_Affichage.fireClick();
        EXPECT_GE(e.c.Etq_Aide.Count(), 20);
        EXPECT_EQ(store.pointReads, 0);
        EXPECT_LE(store.scans, 10);
    }
}

TEST(Cmd_Affichage_Click, MakesTheLabelsOfBothPanesWhereTheirTimesStand) {
    Ecran e;
    e.aide("00012", "DUPONT");
    e.aide("00013", "MARTIN");
    e.protocole("00012", "0800", "0900", "30", "S01", "0800");
    e.protocole("00012", "1000", "1100", "20", "S01", "1000");
    e.protocole("00013", "0900", "1000", "30", "S02");
    e.afficherTournee();

    struct Attendu {
        const char* nom;
        int index;
        double left, top;
        const char* caption;
        toolkit::Colour couleur;
    } const attendus[] = {
        {"first detail label, CouleurAide1", 1, 760, 2160, "DUPONT Marie 30mn ", 0xC0E0FF},
        {"second detail label, CouleurAide2", 2, 760, 3560, "DUPONT Marie 20mn ", 0x80C0FF},
        {"waiting label on row 1, in its kind's colour", 3, 7390, 1120, "MARTIN\r\nMarie\r\n30mn\r\n",
         0xC0FFFF},
    };
    ASSERT_EQ(e.c.Etq_Aide.Count(), 4);
    for (const Attendu& a : attendus) {
        SCOPED_TRACE(a.nom);
        const toolkit::Label& etiquette = e.c.Etq_Aide(a.index);
        EXPECT_EQ(etiquette.left(), a.left);
        EXPECT_EQ(etiquette.top(), a.top);
        EXPECT_EQ(etiquette.caption(), a.caption);
        EXPECT_EQ(etiquette.backColor(), a.couleur);
        EXPECT_TRUE(etiquette.visible());
    }
    EXPECT_TRUE(e.f.host.takeShown().empty());
    EXPECT_TRUE(e.c.JourneeAffichee && e.c.UserControl.enabled() && e.f.host.screenMousePointer() == 0);
}

TEST(Cmd_Affichage_Click, ShowsTheScrollBarBeyondSevenWaitingRowsAndLaysThemOutOnce) {
    struct Cas {
        const char* nom;
        int lignes;
        int restantes;  // rows left for a second display, after scrolling to the bottom; 0: one display
        bool defilement;
        int max;
    } const cas[] = {
        {"seven rows: no scroll bar", 7, 0, false, 0},
        {"eight rows: the bar, the eighth parked", 8, 0, true, 8},
        {"displayed again after scrolling: from the top", 10, 10, true, 10},
        {"five rows left after scrolling: all shown, no bar", 10, 5, false, 0},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        for (int n = 1; n <= k.lignes; ++n) {
            e.aide(base::zeroPad(100 + n, 5), "NOM");
            e.protocole(base::zeroPad(100 + n, 5), base::zeroPad(600 + 25 * n, 4), "1300", "30");
        }
        e.c.Cmd_Affichage.fireClick();
        if (k.restantes > 0) {
            e.c.VScroll.setValue(k.lignes);
            for (int n = k.restantes + 1; n <= k.lignes; ++n)
                e.f.service.db->store().remove("SSIADACCORDS", base::zeroPad(100 + n, 5) + "001000001");
            e.c.Cmd_Affichage.fireClick();
        }
        EXPECT_EQ(e.c.VScroll.visible(), k.defilement);
        EXPECT_EQ(e.c.VScroll.max(), k.max);
        for (int i = 1; i <= e.c.TabTempoAide->DCount(); ++i) {
            const toolkit::Label& etiquette =
                e.c.Etq_Aide(static_cast<int>(base::toNumber(e.c.TabTempoAide(i, 1))));
            EXPECT_EQ(etiquette.visible(), i <= 7) << "row " << i;
            EXPECT_EQ(etiquette.top(), i <= 7 ? 320 + 800 * i : 240) << "row " << i;
        }
    }
}

TEST(Cmd_Affichage_Click, AnEmptyDayIsToldOnlyWithoutATournee) {
    Ecran sansTournee, tourneeVide;
    sansTournee.c.Cmd_Affichage.fireClick();
    tourneeVide.afficherTournee();
    const auto boites = sansTournee.f.host.takeShown();
    ASSERT_EQ(boites.size(), 1u);
    EXPECT_EQ(boites[0].text + " " + boites[0].title + " " + std::to_string(boites[0].style),
              "Pas d'aidé à affecter pour cette date. Message KORVELINE 48");
    EXPECT_EQ(sansTournee.c.Cmd_Sortir.caption(), "Sortir");
    EXPECT_TRUE(tourneeVide.f.host.takeShown().empty());
    EXPECT_EQ(tourneeVide.c.Etq_Aide.Count(), 1);
    EXPECT_EQ(tourneeVide.c.Cmd_Sortir.caption(), "Annuler");
}

TEST(Cmd_Affichage_Click, ListsThePlannedTimesOutsideTheirWindowOnceTheScreenIsDone) {
    struct Cas {
        const char* nom;
        const char *debut, *duree, *fin;
        const char* anomalie;  // row 1 of TabAnomalies, its cells joined by blanks
    } const cas[] = {
        // clang-format off
        {"exactly at both limits",             "0800", "30", "0850", ""},
        {"the fraction of the end is dropped", "0800", "20", "0833", ""},
        {"one hundredth past the end",         "0800", "30", "0849", "00012 DUPONT Marie 800 830 800 830"},
        {"one hundredth before the start",     "0799", "30", "0900", "00012 DUPONT Marie 800 830 800 900"},
        // clang-format on
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        Ecran e;
        e.aide("00012", "DUPONT");
        e.protocole("00012", "0800", k.fin, k.duree, "S01", k.debut);
        std::string liste;
        e.f.host.queueDialog("Frm_Anomalies", [&](toolkit::Form& form) {
            EXPECT_TRUE(e.c.UserControl.enabled());
            liste = static_cast<toolkit::TextBox*>(form.find("Text1"))->text();
            form.find("Cmd_Annuler")->fireClick();
        });
        e.afficherTournee();
        std::string ligne = e.c.TabAnomalies(1, 1);
        for (int col = 2; col <= 6 && !ligne.empty(); ++col)
            ligne += " " + e.c.TabAnomalies(1, col);
        EXPECT_EQ(ligne, k.anomalie);
        // The list shows the times as Frm_Anomalies reads them back.
        EXPECT_EQ(liste.find("/ Validé 08h00 - 08h30 / Protocole 08h00 - ") != std::string::npos,
                  *k.anomalie != '\0');
    }
}

}  // namespace
