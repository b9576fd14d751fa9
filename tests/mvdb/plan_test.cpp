#include <gtest/gtest.h>

#include "support/memory_database.h"

namespace {

// Every sentence the screen sends must find its records through an index: a scan of SSIADTOURNEE on a
// service of a million records would freeze the screen. The engine's own plan is read to prove it.
TEST(QueryPlan, NoSentenceOfTheScreenScansAFile) {
    testing_support::MemoryDatabase m;
    const char* sentences[] = {
        "SELECT SSIADCARACTTOURNEE AVEC 1 = \"]\" AND AVEC 9 <> \"1\" PAR 1",
        "SELECT SSIADCARACTTOURNEE AVEC 1 = \"INF]\" AND AVEC 9 <> \"1\" PAR 1",
        "SELECT SSIADCARACTTOURNEE AVEC 8 = \"NORD\" AND AVEC 7 =\"I\"AND AVEC 5 > \"8,5\" AND AVEC 3 < "
        "\"9,25\"AND "
        "AVEC 2 =\"0\"",
        "SELECT SSIADCARACTTOURNEE AVEC 8 = \"NORD\" AND AVEC 5 > \"8,5\" AND AVEC 3 < \"9,25\"AND AVEC 2 "
        "=\"0\"",
        "SELECT SSIADTOURNEE AVEC DateTournee < \"21450\" PAR DateTournee",
        "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC DateTournee = \"21511\"",
        "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC DateTournee = \"21511\" AND AVEC HeureDebut "
        ">= \"0600\" "
        "AND AVEC HeureDebut <= \"1400\" AND AVEC CodeTournee <> \"001\" ",
        "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC DateTournee = \"21511\" AND AVEC HeureDebut "
        ">= \"0600\" "
        "AND AVEC HeureDebut <= \"1400\" AND AVEC CodeTournee = \"001\" ",
        "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\" AND AVEC DateTournee <= \"21511\" PAR-DECR "
        "DateTournee",
        "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\" AND AVEC DateTournee = \"21504\" PAR HeureDebut",
        "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\" AND AVEC 2=\"000120000100000000100850\" AND AVEC "
        "CodeTournee "
        "<> \"001\" PAR CodeTournee",
        "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\" AND AVEC 2 =\"000120000100000000100850]\" AND AVEC "
        "CodeTournee <>\"001\"",
        "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\"AND AVEC CodeTournee =\"001\"",
        "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\" PAR CodeTournee",
        "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\"AND AVEC CodeTournee = \"001\" PAR HeureDebut",
        "SELECT SSIADACCORDS AVEC 1 <= \"21511\" AND AVEC 2 >= \"21511\" PAR CodeAide",
        "SELECT SSIADACCORDS AVEC CodeAide =\"00012\" AND AVEC 1 <= \"21511\" AND AVEC 2 >= \"21511\"",
    };
    for (const char* sentence : sentences) {
        SCOPED_TRACE(sentence);
        std::vector<std::string> plan = m.db->explainQuery(sentence);
        ASSERT_FALSE(plan.empty());
        for (const std::string& step : plan) {
            EXPECT_EQ(step.find("SCAN"), std::string::npos) << step;
            EXPECT_NE(step.find("SEARCH"), std::string::npos) << step;
        }
    }
    // A condition on a field without an index has nothing to search by: the plan says so.
    std::vector<std::string> scan = m.db->explainQuery("SELECT CIVILAIDE AVEC 2 = \"DUPONT\"");
    ASSERT_EQ(scan.size(), 1u);
    EXPECT_NE(scan[0].find("SCAN"), std::string::npos);
}

}  // namespace
