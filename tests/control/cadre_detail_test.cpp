#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base/text.h"
#include "mvdb/dynamic_record.h"
#include "shell/ctr_zandorel.h"
#include "support/control_fixture.h"
#include "toolkit/form.h"

namespace {

// Internal days of the Mondays 9/11, 16/11 and 23/11/2026; today is Sunday 22/11.
constexpr const char* k09 = "21498";
constexpr const char* k16 = "21505";
constexpr const char* k23 = "21512";

// Protocoles of the aidé 00012 are named by their start bound, the last four characters of their key.
struct Protocole {
    std::string debut, fin, nb = "1", soin = "S01";
};
// A planned record of the aidé; its protocole by start bound ("0730" names none that exists).
struct Planifie {
    std::string tournee, jour, debut, fin, protocole;
};
std::string cleProtocole(const std::string& debut) {
    return "00012210000000011" + debut;
}

// Tournée "001" over sectors N1 and N2 (and "002" over N1) on `date`, with the aidé 00012, his
// protocoles of every day for 30 minutes, and what is planned; then the detail pane alone, with the
// tables that the display command makes new.
control::Ctr_Zandorel& afficher(testing_support::ControlFixture& f, const std::string& date,
                                const std::vector<Protocole>& protocoles,
                                const std::vector<Planifie>& planifies,
                                const std::string& nbIntervenants = "1", const std::string& secteur = "N1") {
    testing_support::MemoryDatabase& s = f.service;
    for (const char* fichier : {"CIVILAIDE", "SSIADELEMGEST", "SSIADTOURNEE", "TPSTEMPO"})
        s.db->store().createFile(fichier);
    s.put("SSIADCARACTTOURNEE", "001",
          {"Lundi", "0", "6", "00", "14", "00", "I", "N1|N2", "", nbIntervenants});
    s.put("SSIADCARACTTOURNEE", "002", {"Renfort", "0", "6", "00", "14", "00", "I", "N1", "", "1"});
    s.put("SSIADSOINS", "S01", {"Injection", "", "", "", "O"});
    s.put("SSIADSOINS", "S02", {"Toilette", "", "", "", "N"});
    s.put("SSIADACCORDS", "00012001000001", {"21000", "22000", ""});
    mvdb::DynamicRecord gestion;
    gestion.set(23, secteur);
    s.db->store().write("SSIADELEMGEST", "00012000001", gestion.text());
    for (const Protocole& p : protocoles)
        s.put("SSIADPROTOCOLE", cleProtocole(p.debut), {"", p.fin, p.soin, "30", p.nb, "21000", ""});
    for (const Planifie& p : planifies)
        s.put("SSIADTOURNEE", p.tournee + "00012" + p.jour + p.debut, {p.fin, cleProtocole(p.protocole)});

    control::Ctr_Zandorel& c = f.start();
    c.Txt_CodeTournee.setText("001");
    c.Cbo_Date.setText(date);
    c.Tables.renew(model::Pane::Aide);
    c.Tables.renew(model::Pane::Detail);
    c.affichage.NbLignesDetail = 0;
    c.CadreDetailAvecTournee();
    return c;
}

// The rows of a table, "; " between them, a protocole key shown by its last four characters.
std::string lignes(const model::WorkTable& table, int colonnes) {
    std::string out;
    for (std::int64_t i = 1; i <= table->DCount(); ++i) {
        if (i > 1) out += "; ";
        for (int col = 1; col <= colonnes; ++col) {
            const std::string valeur = table(i, col);
            out += (col > 1 ? " " : "") + (base::Len(valeur) == 21 ? base::Right(valeur, 4) : valeur);
        }
    }
    return out;
}

TEST(CadreDetailAvecTournee, FitsTheVersionInForceOrCopiesAPastDay) {
    struct Cas {
        const char* nom;
        const char* date;
        std::vector<Protocole> protocoles;
        std::vector<Planifie> planifies;
        const char *detail, *aide, *enregistree = "";
        const char* nbIntervenants = "1";
        const char* secteur = "N1";
    } const cas[] = {
        // clang-format off
        {"no record at all: only the waiting list", "23/11/2026", {{"0800", "0900"}}, {},
         "", "1 800 900 30 0 0800 I"},
        {"a Monday version fitted to the next Monday, and taken out of the list", "23/11/2026",
         {{"0800", "0900"}}, {{"001", k16, "0800", "0850", "0800"}},
         "1 800 900 30 0 0800 I|0800", ""},
        {"a version of the day shown: the commit replaces its records", "23/11/2026",
         {{"0800", "0900"}}, {{"001", k23, "0815", "0845", "0800"}},
         "1 800 900 30 0 0800 I|0815", "", "00100012215120815 0800"},
        {"a past day as saved, the kinds counting the soins of the whole day", "16/11/2026",
         {{"0800", "0900"}, {"1000", "1100", "1", "S02"}},
         {{"001", k16, "0830", "0900", "0800"}, {"001", k16, "1000", "1050", "1000"}},
         "1 800 900 42 0 0800 I|0830; 2 1000 1100 30 0 1000 M|1000", ""},
        {"a start moved within the window: the window test, not the nearer start", "23/11/2026",
         {{"0700", "0745"}, {"0800", "1000"}}, {{"001", k16, "0750", "0800", "0730"}},
         "1 800 1000 30 0 0800 I|0750", "1 700 745 30 0 0700 I"},
        {"998 hundredths away is the nearest", "23/11/2026",
         {{"0600", "0700"}}, {{"001", k16, "1598", "1628", "0730"}},
         "1 600 700 30 0 0600 I|1598", ""},
        {"nothing within 999 hundredths: no row, the waiting row stays", "23/11/2026",
         {{"0600", "0700"}}, {{"001", k16, "1599", "1629", "0730"}},
         "", "1 600 700 30 0 0600 I"},
        {"a pair in a one-person tournée stays in the list for its second person", "23/11/2026",
         {{"0800", "0900", "2"}}, {{"001", k16, "0800", "0850", "0800"}},
         "1 800 900 30 0 0800 I|2|0800", "1 800 900 30 0 0800 I|1"},
        {"a pair in a two-person tournée leaves the list", "23/11/2026",
         {{"0800", "0900", "2"}}, {{"001", k16, "0800", "0850", "0800"}},
         "1 800 900 30 0 0800 I|0800", "", "", "2"},
        {"every place taken in another tournée: no room left", "23/11/2026",
         {{"0800", "0900"}}, {{"001", k16, "0800", "0850", "0800"}, {"002", k23, "0830", "0880", "0800"}},
         "", ""},
        {"an aidé gone from the tournée's sectors drops out of the day", "23/11/2026",
         {{"0800", "0900"}}, {{"001", k16, "0800", "0850", "0800"}},
         "", "", "", "1", "S9"},
        // clang-format on
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        testing_support::ControlFixture f;
        control::Ctr_Zandorel& c =
            afficher(f, k.date, k.protocoles, k.planifies, k.nbIntervenants, k.secteur);
        EXPECT_EQ(lignes(c.TabTempoDetail, 7), k.detail);
        EXPECT_EQ(lignes(c.TabTempoAide, 7), k.aide);
        EXPECT_EQ(lignes(c.TabTourneeEnregistree, 2), k.enregistree);
        EXPECT_EQ(c.TourneeAnterieure, std::string(k.date) == "16/11/2026") << "only a past day is read-only";
        EXPECT_EQ(c.DateAffichee, k.date);
        EXPECT_TRUE(f.host.takeShown().empty());
    }
}

TEST(CadreDetailAvecTournee, APastDayWithoutItsOwnVersionIsRefusedWithAMessage) {
    testing_support::ControlFixture f;
    control::Ctr_Zandorel& c =
        afficher(f, "16/11/2026", {{"0800", "0900"}}, {{"001", k09, "0800", "0850", "0800"}});
    const auto boites = f.host.takeShown();
    ASSERT_EQ(boites.size(), 1u);
    EXPECT_EQ(boites[0].text + " " + boites[0].title + " " + std::to_string(boites[0].style),
              "Tournée non définie pour cette date - accès impossible. Message KORVELINE 48");
    EXPECT_EQ(c.TabTempoDetail->DCount() + c.TabTempoAide->DCount(), 0);
}

TEST(Cmd_Affichage_Click, ARecordThatFitsNoProtocoleGetsNoLabelAndNoAnomaly) {
    struct Cas {
        const char* nom;
        const char* debut;
        int etiquettesDetail;
    } const cas[] = {
        {"999 hundredths from the only protocole", "1599", 0},
        {"998 hundredths away: the nearest, out of its window", "1598", 1},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        testing_support::ControlFixture f;
        control::Ctr_Zandorel& c =
            afficher(f, "23/11/2026", {{"0600", "0700"}}, {{"001", k23, k.debut, "1629", "0730"}});
        bool anomalies = false;
        f.host.queueDialog("Frm_Anomalies", [&](toolkit::Form& form) {
            anomalies = true;
            form.find("Cmd_Ok")->fireClick();
        });
        c.Cmd_Affichage.fireClick();
        int detail = 0;
        for (const toolkit::Control* e : c.Etq_Aide.elements()) {
            if (e->index() == 0 || e->left() != 760) continue;
            ++detail;
            EXPECT_NE(e->tag(), "|0") << "a label with no name";
        }
        EXPECT_EQ(detail, k.etiquettesDetail);
        EXPECT_EQ(anomalies, k.etiquettesDetail == 1);
        EXPECT_EQ(c.TabAnomalies->DCount(), k.etiquettesDetail);
    }
}

}  // namespace
