#include "app/week_command.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "base/error.h"

namespace {

control::Semaine semaine(control::DemiJournee demi) {
    control::Semaine s;
    s.demiJournee = demi;
    const base::Date lundi = *base::Date::fromDmy(23, 11, 2026);
    for (int d = 0; d < 7; ++d)
        s.jours.push_back({lundi.addDays(d), d, {}});
    s.jours[0].tournees.push_back({"001", "LUNDI \"MATIN\"", 2, 50, 1, 480, false});
    s.jours[0].tournees.push_back({"002", "BINÔME", 0, 0, 0, 270, true});
    return s;
}

TEST(WeekCommand, RefusesWhatItCannotReadOrWrite) {
    struct Cas {
        const char* nom;
        app::WeekOptions options;
        const char* message;
    } const cas[] = {
        {"a date that is no day",
         {"/nonexistent/d.db", "31/02/2026", "", false, false},
         "Date incorrecte pour --date : « 31/02/2026 »"},
        {"a database that is not there", {"/nonexistent/d.db", "23/11/2026", "", false, false}, nullptr},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        std::ostringstream out;
        try {
            app::runWeek(k.options, out, out);
            ADD_FAILURE() << "accepted";
        } catch (const base::Error& e) {
            if (k.message) {
                EXPECT_EQ(std::string(e.what()), k.message);
            }
        }
        EXPECT_EQ(out.str(), "");
    }
}

TEST(WeekCommand, WritesTheDocumentedJsonFieldsInOrder) {
    const std::string json = app::weekJson(semaine(control::DemiJournee::Matin));
    const std::string debut =
        "{\"week\": \"23/11/2026\", \"soir\": false, \"days\": [{\"date\": \"23/11/2026\", \"waiting\": 0, "
        "\"tournees\": [{\"code\": \"001\", \"label\": \"LUNDI \\\"MATIN\\\"\", \"planned\": 2, \"minutes\": "
        "50, \"anomalies\": 1}, {\"code\": \"002\", \"label\": \"BINÔME\", \"planned\": 0, \"minutes\": 0, "
        "\"anomalies\": 0}]}, {\"date\": \"24/11/2026\", \"waiting\": 1, \"tournees\": []}, {\"date\": "
        "\"25/11/2026\", "
        "\"waiting\": 2, \"tournees\": []}, ";
    EXPECT_EQ(json.substr(0, debut.size()), debut);
    const std::string fin = "{\"date\": \"29/11/2026\", \"waiting\": 6, \"tournees\": []}]}";
    EXPECT_EQ(json.substr(json.size() - fin.size()), fin);
    const nlohmann::json lu = nlohmann::json::parse(app::weekJson(semaine(control::DemiJournee::Soir)));
    EXPECT_EQ(lu["soir"], true);
    ASSERT_EQ(lu["days"].size(), 7u);
    EXPECT_EQ(lu["days"][6]["date"], "29/11/2026");
    EXPECT_EQ(lu["days"][6]["waiting"], 6);
}

TEST(WeekCommand, TheTableNamesEachDayAndEachTournee) {
    const std::string table = app::weekTable(semaine(control::DemiJournee::Soir));
    EXPECT_EQ(
        table.substr(0, table.find("mardi")),
        "Semaine du 23/11/2026, soir\n"
        "\n"
        "lundi 23/11/2026                        en attente : 0\n"
        "  001 LUNDI \"MATIN\"                     prévues : 2  minutes : 50  anomalies : 1\n"
        "  002 BINÔME                            prévues : 0  minutes : 0  anomalies : 0  (non définie)\n"
        "\n");
    EXPECT_NE(table.find("dimanche 29/11/2026                     en attente : 6\n  aucune tournée\n"),
              std::string::npos);
}

TEST(WeekCommand, NamesWhatTheWeekLeftOutForStandardError) {
    struct Cas {
        const char* nom;
        std::vector<std::string> defauts, laissees;
        std::string texte;
    } const cas[] = {
        {"nothing left out: not a word", {}, {}, ""},
        {"a record that makes no sense",
         {"SSIADTOURNEE « 00100001215120800 », attribut 1 (fin prévue) : « 8h30 » n'est pas un nombre"},
         {},
         "zandorel : Enregistrements incohérents, laissés de côté :\n"
         "SSIADTOURNEE « 00100001215120800 », attribut 1 (fin prévue) : « 8h30 » n'est pas un nombre\n"},
        {"a planned record left out for its protocole",
         {"SSIADPROTOCOLE « 000012100000000110800 », attribut 4 (durée) : « -30 » est hors de 1 à 1440 "
          "minutes"},
         {"SSIADTOURNEE « 00100001215120800 », qui dépend de SSIADPROTOCOLE « 000012100000000110800 »"},
         "zandorel : Enregistrements incohérents, laissés de côté :\n"
         "SSIADPROTOCOLE « 000012100000000110800 », attribut 4 (durée) : « -30 » est hors de 1 à 1440 "
         "minutes\n"
         "Interventions planifiées non affichées, gardées telles quelles :\n"
         "SSIADTOURNEE « 00100001215120800 », qui dépend de SSIADPROTOCOLE « 000012100000000110800 »\n"},
    };
    for (const Cas& k : cas) {
        SCOPED_TRACE(k.nom);
        control::Semaine s = semaine(control::DemiJournee::Matin);
        s.defauts = k.defauts;
        s.laissees = k.laissees;
        EXPECT_EQ(app::weekFaults(s), k.texte);
    }
}

}  // namespace
