#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "data/gateway.h"
#include "support/control_fixture.h"

namespace {

const std::string kAide = "00012";
const std::string kCleSansDebut = kAide + "21000" + "000001" + "1";

// The aidé 00012 on Monday 23/11/2026 (internal day 21512), morning scale. Soin INF is an infirmier's
// act, TOI is not. Tournées: T01 of type I and one person, T02 of type S, T03 of type M and two people.
struct Service : testing_support::ControlFixture {
    control::Ctr_Zandorel& c = *ctl;
    Service() {
        for (const char* file : {"CIVILAIDE", "SSIADACCORDS", "SSIADCARACTTOURNEE", "SSIADELEMGEST",
                                 "SSIADPROTOCOLE", "SSIADSOINS", "SSIADTOURNEE", "TPSTEMPO"})
            service.db->store().createFile(file);
        c.setTheDatabase(service.db);
        data::OuvrirFichiersSSIAD(c.Mod.fichiers);
        c.Txt_CodeTournee.Change = nullptr;  // the selection's handler is not under test here
        c.Txt_Date.setText("23/11/2026");
        c.DateAffichee = "23/11/2026";
        service.put("SSIADSOINS", "INF", {"Injection", "", "", "", "O"});
        service.put("SSIADSOINS", "TOI", {"Toilette", "", "", "", "N"});
        for (auto [code, type, nb] : {std::array{"T01", "I", ""}, {"T02", "S", "1"}, {"T03", "M", "2"}})
            service.put("SSIADCARACTTOURNEE", code, {code, "0", "6", "0", "14", "0", type, "", "", nb});
    }
    // Shows a tournée as the pane builders do before they look anything up: its record in the buffer.
    void montrer(const std::string& code, int nb) {
        c.Txt_CodeTournee.setText(code);
        c.NbIntervenantsTournee = nb;
        data::LireEnregistrement(*c.Mod.fichiers.SSIADCARACTTOURNEE, c.Mod.fichiers.EnregSSIADCARACTTOURNEE,
                                 code);
    }
    // Rows 1 to DCount, the given columns joined by blanks; "" where column 1 is empty.
    static std::vector<std::string> lignes(const model::WorkTable& t, std::vector<int> cols) {
        std::vector<std::string> out;
        for (std::int64_t i = 1; i <= t->DCount(); ++i) {
            std::string ligne;
            for (int col : cols)
                ligne += (ligne.empty() ? "" : " ") + t(i, col);
            out.push_back(t(i, 1).empty() ? "" : ligne);
        }
        return out;
    }
};

TEST(RechercheProtocole, KeepsWhatOverlapsTheScaleAndWhatTheTourneeTakes) {
    struct Row {
        const char* name;
        const char* tournee;
        int nbTournee;
        std::string jour;                                    // "soir": evening scale; "absent": aidé away
        std::vector<std::array<const char*, 4>> protocoles;  // start, end, soins, people
        std::vector<std::string> attendu;                    // start end kind minutes people places
    } const rows[] = {
        // clang-format off
        {"an absent aidé needs nothing", "", 0, "absent", {{"0800", "0900", "TOI", "1"}}, {}},
        {"no tournée: every kind and size", "", 0, "",
         {{"0800", "0900", "TOI", "1"}, {"1000", "1100", "INF|TOI", "2"}},
         {"0800 0900 A 30 1 0", "1000 1100 M 30 2 0"}},
        {"14.00-15.00 only touches the scale, 13.55-15.00 overlaps it", "", 0, "",
         {{"1400", "1500", "TOI", "1"}, {"1392", "1500", "TOI", "1"}}, {"1392 1500 A 30 1 0"}},
        {"a start of 1399 counts as 14.00", "", 0, "", {{"1399", "1500", "TOI", "1"}}, {}},
        {"an end of 1399 counts as 14.00 on the evening scale", "", 0, "soir",
         {{"1200", "1399", "TOI", "1"}, {"1201", "1410", "TOI", "1"}}, {"1201 1410 A 30 1 0"}},
        {"kind A is kept in a tournée of type I", "T01", 1, "",
         {{"0800", "0900", "TOI", "1"}}, {"0800 0900 A 30 1 0"}},
        {"a tournée of type S takes kind A only", "T02", 1, "",
         {{"0800", "0900", "TOI", "1"}, {"0900", "1000", "INF", "1"}, {"1000", "1100", "INF|TOI", "1"}},
         {"0800 0900 A 30 1 0"}},
        {"a one-person tournée keeps a two-person protocole", "T01", 1, "",
         {{"0800", "0900", "INF", "2"}}, {"0800 0900 I 30 2 0"}},
        {"a two-person tournée drops a one-person protocole", "T03", 2, "",
         {{"0800", "0900", "INF", "1"}, {"0900", "1000", "INF", "2"}}, {"0900 1000 I 30 2 0"}},
        // clang-format on
    };
    for (const Row& row : rows) {
        Service s;
        if (row.jour == "soir") s.c.Opt_Soir_Click();
        if (row.jour == "absent") {
            mvdb::DynamicRecord absence;
            absence.set(20, "21510");
            absence.set(21, "21515");
            s.service.db->store().write("CIVILAIDE", kAide, absence.text());
        }
        for (auto [debut, fin, soins, nb] : row.protocoles)
            s.service.put("SSIADPROTOCOLE", kCleSansDebut + debut, {"", fin, soins, "30", nb, "21000"});
        s.montrer(row.tournee, row.nbTournee);
        s.c.RechercheProtocole(kAide);
        EXPECT_EQ(Service::lignes(s.c.TabProtocole, {2, 3, 4, 5, 6, 7}), row.attendu) << row.name;
        for (std::int64_t i = 1; i <= s.c.TabProtocole->DCount(); ++i)
            EXPECT_EQ(s.c.TabProtocole(i, 1), kCleSansDebut + s.c.TabProtocole(i, 2)) << row.name;
        EXPECT_EQ(s.service.db->store().count("TPSTEMPO"), 0u) << row.name;
    }
}

// The aidé's records: T01 and T03 on the day, T07 (a tournée that does not exist) on the day, T01 on the
// next day, and another aidé's.
// clang-format off
const std::array<std::array<const char*, 5>, 7> kPlanifiees = {{
    {"T01", "00012", "21512", "0800", "0830"}, {"T03", "00012", "21512", "0900", "0930"},
    {"T03", "00012", "21512", "1400", "1430"}, {"T03", "00012", "21512", "1500", "1530"},
    {"T07", "00012", "21512", "1000", "1030"}, {"T01", "00012", "21513", "0800", "0830"},
    {"T01", "00034", "21512", "0800", "0830"}}};
// clang-format on
const std::vector<std::string> kJournee = {"0800 0830 P0800 I 1", "0900 0930 P0900 M 2",
                                           "1400 1430 P1400 M 2", "1500 1530 P1500 M 2", "1000 1030 P1000  "};

TEST(RechercheInterventionsValidees, TheFormFollowsTheTourneeAndTheArguments) {
    struct Row {
        const char* name;
        const char* tournee;
        bool demiJournee;
        int portee;
        std::vector<std::string> attendu;  // start end protocole tournée-type people
    } const rows[] = {
        // clang-format off
        {"no tournée: the whole day, people from each record's tournée", "", false, 2, kJournee},
        {"half-day, reach 1: the other tournées from 600 to 1400", "T01", true, 1,
         {"0900 0930 P0900 M 2", "1400 1430 P1400 M 2", "1000 1030 P1000  "}},
        {"half-day, other reach: the whole day", "T01", true, 2, kJournee},
        {"whole day with a tournée: its half-day on DateTourneeInterne", "T03", false, 2,
         {"0900 0930 P0900 M 2", "1400 1430 P1400 M 2"}},
        {"a shown tournée that does not exist loses every row", "T09", true, 2, {}},
        // clang-format on
    };
    for (const Row& row : rows) {
        Service s;
        for (auto [tournee, aide, jour, debut, fin] : kPlanifiees)
            s.service.put("SSIADTOURNEE", std::string(tournee) + aide + jour + debut,
                          {fin, std::string("P") + debut});
        s.c.affichage.DateTourneeInterne = "21512";
        s.montrer(row.tournee, 1);
        s.c.RechercheInterventionsValidees(kAide, row.demiJournee, row.portee);
        EXPECT_EQ(Service::lignes(s.c.TabValidees, {1, 2, 3, 4, 5}), row.attendu) << row.name;
    }
}

TEST(RechercheInterventionsValidees, ATourneeOfAidesSoignantsSiftsByActsWithCountsCarriedOver) {
    struct Row {
        const char* name;
        std::vector<std::array<const char*, 3>> validees;  // tournée, start, protocole
        std::vector<std::string> attendu;                  // rows 1 to DCount, "" for a hole
    } const rows[] = {
        // clang-format off
        {"infirmier's acts only do not concern it", {{"T01", "0800", "PINF"}}, {}},
        {"mixed acts pass", {{"T01", "0800", "PMIX"}}, {"0800 PMIX I"}},
        {"after an aide's act, infirmier's acts pass too",
         {{"T01", "0800", "PTOI"}, {"T03", "0900", "PINF"}}, {"0800 PTOI I", "0900 PINF M"}},
        {"a row sifted out before an unread protocole leaves a hole at row 1",
         {{"T01", "0800", "PINF"}, {"T03", "0900", "PXXX"}}, {"", "0900 PXXX M"}},
        {"a row that passes after an unread protocole is written over it",
         {{"T01", "0800", "PXXX"}, {"T03", "0900", "PTOI"}}, {"0900 PTOI M"}},
        // clang-format on
    };
    for (const Row& row : rows) {
        Service s;
        for (auto [cle, soins] : {std::array{"PINF", "INF"}, {"PTOI", "TOI"}, {"PMIX", "INF|TOI"}})
            s.service.put("SSIADPROTOCOLE", cle, {"", "0900", soins, "30", "1", "21000"});
        for (auto [tournee, debut, cle] : row.validees)
            s.service.put("SSIADTOURNEE", tournee + kAide + "21512" + debut, {"1000", cle});
        s.montrer("T02", 1);
        s.c.RechercheInterventionsValidees(kAide, true, 2);
        EXPECT_EQ(Service::lignes(s.c.TabValidees, {1, 3, 4}), row.attendu) << row.name;
    }
}

}  // namespace
