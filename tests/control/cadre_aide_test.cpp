#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "data/gateway.h"
#include "support/control_fixture.h"
#include "toolkit/host.h"

namespace {

// A service on Monday 23/11/2026 (internal day 21512), morning scale. Tournées: T01 of type M whose
// sectors and size the test sets, T05 of one person, T06 of two. Every protocole is of infirmier's acts.
struct Service : testing_support::ControlFixture {
    control::Ctr_Zandorel& c = *ctl;
    explicit Service(const std::string& secteurs = "S1", const std::string& nbT01 = "") {
        for (const char* file : {"CIVILAIDE", "SSIADACCORDS", "SSIADCARACTTOURNEE", "SSIADELEMGEST",
                                 "SSIADPROTOCOLE", "SSIADSOINS", "SSIADTOURNEE", "TPSTEMPO"})
            service.db->store().createFile(file);
        c.setTheDatabase(service.db);
        data::OuvrirFichiersSSIAD(c.Mod.fichiers);
        c.Txt_CodeTournee.Change = c.Cbo_Date.Change = c.Txt_Date.Change =
            nullptr;  // selection not under test
        c.Txt_Date.setText("23/11/2026");
        c.Tables.renew(model::Pane::Aide);
        service.put("SSIADSOINS", "INF", {"Injection", "", "", "", "O"});
        for (auto [code, secteur, nb] :
             {std::array{"T01", secteurs.c_str(), nbT01.c_str()}, {"T05", "", "1"}, {"T06", "", "2"}})
            service.put("SSIADCARACTTOURNEE", code, {code, "0", "6", "0", "14", "0", "M", secteur, "", nb});
    }
    void poser(const char* file, const std::string& key, int attribute, const std::string& value) {
        mvdb::DynamicRecord r;
        r.set(attribute, value);
        service.db->store().write(file, key, r.text());
    }
    // An aidé taken in charge from day 21000 to 22000 (state "S": suspended), of sector `secteur`
    // (nullptr: no attribute 23), with a protocole from 8.00 to 13.00 for `requis` people.
    std::string aide(const std::string& code, const char* secteur = "S1", const char* etat = "",
                     const std::string& requis = "1") {
        service.put("SSIADACCORDS", code + "001" + "000001", {"21000", "22000", etat});
        poser("SSIADELEMGEST", code + "000001", secteur ? 23 : 1, secteur ? secteur : "");
        return protocole(code, "0800", requis);
    }
    std::string protocole(const std::string& code, const std::string& debut,
                          const std::string& requis = "1") {
        const std::string cle = code + "21000" + "000001" + "1" + debut;
        service.put("SSIADPROTOCOLE", cle, {"", "1300", "INF", "45", requis, "21000"});
        return cle;
    }
    void valider(const std::vector<const char*>& tournees, const std::string& cle) {
        for (const char* tournee : tournees)
            service.put("SSIADTOURNEE", tournee + cle.substr(0, 5) + "21512" + "0830", {"1000", cle});
    }
    // The rows of TabTempoAide as CodeAide, HeureDebut, NumEtq and TypeEtq.
    std::vector<std::string> aides() const {
        std::vector<std::string> out;
        for (std::int64_t i = 1; i <= c.TabTempoAide->DCount(); ++i)
            out.push_back(c.TabTempoAide(i, 6).substr(0, 5) + " " + c.TabTempoAide(i, 2) + " " +
                          c.TabTempoAide(i, 1) + " " + c.TabTempoAide(i, 7));
        return out;
    }
};

TEST(CadreAideSansTournee, PlacesWhatTheValidatedRecordsLeaveFree) {
    struct Row {
        const char* name;
        const char* requis;
        std::vector<const char*> validees;  // tournées of the records: T05 and T01 one person, T06 two
        std::string cas;                    // "S": suspended accord; "absent"; "sans accord"
        std::vector<std::string> attendu;
    } const rows[] = {
        // clang-format off
        {"one person, none placed", "1", {}, "", {"00012 800 1 I"}},
        {"two people, none placed", "2", {}, "", {"00012 800 1 I|2"}},
        {"two people, one placed", "2", {"T05"}, "", {"00012 800 1 I|1"}},
        {"two people, a record of a two-person tournée fills both", "2", {"T06"}, "", {}},
        {"two people, two records of one-person tournées", "2", {"T05", "T01"}, "", {}},
        {"one person, placed", "1", {"T05"}, "", {}},
        {"one person, a record of a two-person tournée counts 2", "1", {"T06"}, "", {}},
        {"a protocole of no number of people", "", {}, "", {}},
        {"a suspended accord", "1", {}, "S", {}},
        {"an absent aidé", "1", {}, "absent", {}},
        {"no accord that day", "1", {}, "sans accord", {}},
        // clang-format on
    };
    for (const Row& row : rows) {
        Service s;
        const std::string cle = s.aide("00012", "S1", row.cas == "S" ? "S" : "", row.requis);
        s.valider(row.validees, cle);
        if (row.cas == "absent") s.poser("CIVILAIDE", "00012", 20, "21512");
        if (row.cas == "sans accord") s.service.db->store().remove("SSIADACCORDS", "00012001000001");
        bool occupe = false;
        s.host.onDoEvents = [&] {
            occupe = s.host.screenMousePointer() == toolkit::kPointerHourglass && !s.c.UserControl.enabled();
        };
        s.c.CadreAideSansTournee();
        EXPECT_EQ(s.aides(), row.attendu) << row.name;
        EXPECT_EQ(s.service.db->store().count("TPSTEMPO"), 0u) << row.name;
        EXPECT_TRUE(occupe && s.c.UserControl.enabled()) << row.name;
        EXPECT_EQ(s.host.screenMousePointer(), toolkit::kPointerDefault) << row.name;
    }
}

TEST(CadreAideSansTournee, RowsRiseByStartAndEqualStartsKeepTheirArrival) {
    Service s;
    const std::string premiere = s.protocole("00012", "0900");
    s.protocole("00012", "1000");
    for (const char* debut : {"0800", "0900", "1000"})
        s.protocole("00034", debut);
    s.service.put("SSIADACCORDS", "00012001000001", {"21000", "22000"});
    s.service.put("SSIADACCORDS", "00034001000001", {"21000", "22000"});
    s.c.CadreAideSansTournee();
    EXPECT_EQ(s.aides(), (std::vector<std::string>{"00034 800 1 I", "00012 900 1 I", "00034 900 2 I",
                                                   "00012 1000 2 I", "00034 1000 3 I"}));
    EXPECT_EQ(s.c.TabTempoAide(2, 3) + " " + s.c.TabTempoAide(2, 4) + " " + s.c.TabTempoAide(2, 5) + " " +
                  s.c.TabTempoAide(2, 6),
              "1300 45 0 " + premiere);
}

// Rows already waiting (an assignment keeps them) need not rise by start: each new row is placed among
// them by the walk from the first row, as if it came alone.
TEST(CadreAideSansTournee, RowsAlreadyWaitingTakeEachNewOneWhereTheWalkPutsIt) {
    Service s;
    s.protocole("00012", "0900");
    s.protocole("00034", "0800");
    s.service.put("SSIADACCORDS", "00012001000001", {"21000", "22000"});
    s.service.put("SSIADACCORDS", "00034001000001", {"21000", "22000"});
    s.c.AjoutEtqAide(1, 7, 1200, 1300, 45, 0, "99999210000000011200", "I");
    s.c.AjoutEtqAide(2, 8, 850, 1300, 45, 0, "99999210000000010850", "I");
    s.c.CadreAideSansTournee();
    EXPECT_EQ(s.aides(), (std::vector<std::string>{"00034 800 1 I", "99999 1200 7 I", "99999 850 8 I",
                                                   "00012 900 1 I"}));
}

TEST(CadreAideAvecTournee, TakesWhatItsSectorsAndItsSizeAllow) {
    struct Row {
        const char* name;
        const char* secteurs;
        int nbTournee;
        std::vector<const char*> validees;  // records of the two-person protocole of 00012
        std::vector<std::string> attendu;
    } const rows[] = {
        // clang-format off
        {"sectors S1, empty, S2: an aidé without sector matches the empty one", "S1||S2", 1, {},
         {"00012 800 1 I|2", "00034 800 1 I"}},
        {"sectors S1 and S2: not the aidé without sector, nor S3, nor one without element", "S1|S2", 1, {},
         {"00012 800 1 I|2"}},
        {"a tournée of two takes a two-person protocole with both places free", "S1", 2, {},
         {"00012 800 1 I|2"}},
        {"a tournée of two: one place filled elsewhere makes no label", "S1", 2, {"T05"}, {}},
        {"a tournée of one: one place filled elsewhere leaves one", "S1", 1, {"T05"}, {"00012 800 1 I|1"}},
        // clang-format on
    };
    for (const Row& row : rows) {
        Service s(row.secteurs, std::to_string(row.nbTournee));
        s.valider(row.validees, s.aide("00012", "S1", "", "2"));
        s.aide("00034", nullptr);
        s.aide("00056", "S3");
        s.aide("00078");
        s.service.db->store().remove("SSIADELEMGEST", "00078000001");
        s.c.Txt_CodeTournee.setText("T01");
        s.c.NbIntervenantsTournee = row.nbTournee;
        s.c.Cbo_Date.setText("23/11/2026");
        s.c.Txt_Date.setText("01/01/2026");  // the date of this pane is that of Cbo_Date
        s.c.DateAffichee = "23/11/2026";
        s.c.CadreAideAvecTournee();
        EXPECT_EQ(s.aides(), row.attendu) << row.name;
    }
}

}  // namespace
