#include "mvdb/query.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>

#include "base/error.h"
#include "support/memory_database.h"

namespace {

using Keys = std::vector<std::string>;

class QueryTest : public ::testing::Test {
protected:
    void SetUp() override {
        // Tournées: label, weekday, start hour, start minute, end hour, end minute, type, sectors,
        // deletion mark, intervenants.
        m.put("SSIADCARACTTOURNEE", "001",
              {"INFIRMIER MATIN", "0", "7", "0", "12", "30", "I", "NORD|SUD", "", ""});
        m.put("SSIADCARACTTOURNEE", "002",
              {"AIDE SOIGNANT SOIR", "0", "17", "0", "20", "0", "S", "SUD", "", "2"});
        m.put("SSIADCARACTTOURNEE", "003", {"ANCIENNE", "1", "8", "0", "9", "15", "M", "EST", "1", ""});
        m.put("SSIADCARACTTOURNEE", "004",
              {"INFIRMIER SOIR", "0", "16", "30", "21", "0", "I", "NORD", "", ""});
        // Interventions: key CodeTournee + CodeAide + day + start; end; protocole.
        m.put("SSIADTOURNEE", "00100012215110750", {"0800", "000122140000000110750"});
        m.put("SSIADTOURNEE", "00100007215110850", {"0925", "000072140000000210850"});
        m.put("SSIADTOURNEE", "00200012215111700", {"1750", "000122140000000111700"});
        m.put("SSIADTOURNEE", "00100012215040750", {"0800", "000122140000000110750"});
        m.put("SSIADTOURNEE", "00100012214970750", {"0800", "000122140000000110750"});
        m.put("SSIADTOURNEE", "00100031215120900", {"1000", "000312140000000110900"});
    }
    testing_support::MemoryDatabase m;
};

TEST_F(QueryTest, MalformedOrUnknownSelectionsFailWithTheirMessage) {
    struct Case {
        const char* name;
        std::string file;
        std::string sentence;
        std::int32_t code;
        std::string message;
    } cases[] = {
        {"unknown file", "NOFILE", "SELECT NOFILE AVEC 1 = \"x\"", base::codes::kUnknownFile,
         "Fichier inconnu : NOFILE"},
        {"unknown dictionary name", "SSIADTOURNEE", "SELECT SSIADTOURNEE AVEC Jour = \"1\"",
         base::codes::kSentence,
         "Phrase incorrecte à la position 26 : le fichier SSIADTOURNEE n'a pas de champ « Jour » dans « "
         "SELECT "
         "SSIADTOURNEE AVEC Jour = \"1\" »"},
        {"unknown sort name", "SSIADTOURNEE", "SELECT SSIADTOURNEE AVEC 1 = \"x\" PAR Nope",
         base::codes::kSentence,
         "Phrase incorrecte à la position 38 : le fichier SSIADTOURNEE n'a pas de champ « Nope » dans « "
         "SELECT SSIADTOURNEE AVEC 1 = \"x\" PAR Nope »"},
        {"unknown descending sort name", "SSIADTOURNEE", "SELECT SSIADTOURNEE PAR-DECR  Nope",
         base::codes::kSentence,
         "Phrase incorrecte à la position 31 : le fichier SSIADTOURNEE n'a pas de champ « Nope » dans « "
         "SELECT SSIADTOURNEE PAR-DECR  Nope »"},
        {"sentence on another file", "SSIADACCORDS", "SELECT SSIADTOURNEE AVEC 1 = \"x\"",
         base::codes::kSentence,
         "La phrase « SELECT SSIADTOURNEE AVEC 1 = \"x\" » ne porte pas sur le fichier à lister "
         "SSIADACCORDS"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        try {
            m.query(c.file, "0", c.sentence);
            ADD_FAILURE() << "no error";
        } catch (const base::Error& e) {
            EXPECT_EQ(e.code(), c.code);
            EXPECT_EQ(std::string(e.what()), c.message);
        }
    }
}

TEST_F(QueryTest, SelectsAndOrdersAsTheScreenAsks) {
    struct Case {
        const char* name;
        std::string file;
        std::string sentence;
        Keys expected;
    } cases[] = {
        {"every tournée not deleted, by label",
         "SSIADCARACTTOURNEE",
         "SELECT SSIADCARACTTOURNEE AVEC 1 = \"]\" AND AVEC 9 <> \"1\" PAR 1",
         {"002", "001", "004"}},
        {"label prefix",
         "SSIADCARACTTOURNEE",
         "SELECT SSIADCARACTTOURNEE AVEC 1 = \"INFIRMIER]\" AND AVEC 9 <> \"1\" PAR 1",
         {"001", "004"}},
        {"a multi-valued attribute matches on any value",
         "SSIADCARACTTOURNEE",
         "SELECT SSIADCARACTTOURNEE AVEC 8 = \"SUD\"",
         {"001", "002"}},
        {"decimal comma against whole hours, no blank before AND",
         "SSIADCARACTTOURNEE",
         "SELECT SSIADCARACTTOURNEE AVEC 8 = \"NORD\" AND AVEC 7 =\"I\"AND AVEC 5 > \"16,5\" AND AVEC 3 < "
         "\"17,75\"AND "
         "AVEC 2 =\"0\"",
         {"004"}},
        {"numbers compare as numbers: 7 and 16 are below 16,5",
         "SSIADCARACTTOURNEE",
         "SELECT SSIADCARACTTOURNEE AVEC 3 < \"16,5\"",
         {"001", "003", "004"}},
        {"one day of one aidé",
         "SSIADTOURNEE",
         "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC DateTournee = \"21511\"",
         {"00100012215110750", "00200012215111700"}},
        {"a half-day in another tournée, trailing blank",
         "SSIADTOURNEE",
         "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC DateTournee = \"21511\" AND AVEC HeureDebut "
         ">= "
         "\"0600\" AND AVEC HeureDebut <= \"1400\" AND AVEC CodeTournee <> \"002\" ",
         {"00100012215110750"}},
        {"latest version first",
         "SSIADTOURNEE",
         "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\" AND AVEC DateTournee <= \"21511\" PAR-DECR "
         "DateTournee",
         {"00100007215110850", "00100012215110750", "00100012215040750", "00100012214970750"}},
        {"a day by start",
         "SSIADTOURNEE",
         "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\"AND AVEC CodeTournee = \"001\" PAR HeureDebut",
         {"00100012215110750", "00100007215110850"}},
        {"a protocole held by another tournée, by prefix",
         "SSIADTOURNEE",
         "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\" AND AVEC 2 =\"0001221400000001]\" AND AVEC "
         "CodeTournee "
         "<>\"002\"",
         {"00100012215110750"}},
        {"before a limit, by day",
         "SSIADTOURNEE",
         "SELECT SSIADTOURNEE AVEC DateTournee < \"21511\" PAR DateTournee",
         {"00100012214970750", "00100012215040750"}},
        {"nothing", "SSIADTOURNEE", "SELECT SSIADTOURNEE AVEC DateTournee = \"30000\"", {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(m.keys(c.file, c.sentence), c.expected);
    }
}

TEST_F(QueryTest, ReplyListsTheAskedAttributesAndAnEmptyReplyReadsEmpty) {
    mvdb::DynamicRecord reply =
        m.query("SSIADCARACTTOURNEE", "0 1 10",
                "SELECT SSIADCARACTTOURNEE AVEC 1 = \"AIDE]\" AND AVEC 9 <> \"1\" PAR 1");
    ASSERT_EQ(reply.DCount(), 1);
    EXPECT_EQ(reply(1, 1), "002");
    EXPECT_EQ(reply(1, 2), "AIDE SOIGNANT SOIR");
    EXPECT_EQ(reply(1, 3), "2");

    mvdb::DynamicRecord multi =
        m.query("SSIADCARACTTOURNEE", "0 8 ", "SELECT SSIADCARACTTOURNEE AVEC 8 = \"SUD\"");
    EXPECT_EQ(multi(1, 2), "NORD") << "only the first value of a multi-valued attribute is listed";

    mvdb::DynamicRecord none =
        m.query("SSIADTOURNEE", "0 1 2", "SELECT SSIADTOURNEE AVEC CodeAide = \"99999\"");
    EXPECT_EQ(none(1), "");
    EXPECT_EQ(none.DCount(), 0);
    EXPECT_EQ(none(1, 2), "");

    // Empty lines are lines, but a reply of one empty line is the empty record, as its text says.
    EXPECT_EQ(m.query("SSIADCARACTTOURNEE", "9", "SELECT SSIADCARACTTOURNEE AVEC 7 = \"I\"").DCount(), 2);
    EXPECT_EQ(m.query("SSIADCARACTTOURNEE", "9", "SELECT SSIADCARACTTOURNEE AVEC 7 = \"S\"").DCount(), 0);
}

TEST_F(QueryTest, ChangesReachTheIndexes) {
    const std::string sentence = "SELECT SSIADTOURNEE AVEC 2 = \"000312140000000110900\"";
    m.put("SSIADTOURNEE", "00100031215120900", {"1000", "000312140000000119999"});
    EXPECT_EQ(m.keys("SSIADTOURNEE", sentence), Keys{}) << "the old value must leave the index";
    m.put("SSIADTOURNEE", "00100031215120900", {"1000", "000312140000000110900"});
    EXPECT_EQ(m.keys("SSIADTOURNEE", sentence), Keys{"00100031215120900"});
    m.db->store().remove("SSIADTOURNEE", "00100031215120900");
    EXPECT_EQ(m.keys("SSIADTOURNEE", sentence), Keys{});
}

// Taking the records one at a time gives those of the ordered reply, each once: a record found through
// two values of a multi-valued field included.
TEST_F(QueryTest, RecordsTakenOneAtATimeAreThoseOfTheReply) {
    for (const char* sentence : {
             "SELECT SSIADCARACTTOURNEE AVEC 8 >= \"NORD\"",
             "SELECT SSIADCARACTTOURNEE AVEC 8 = \"SUD\" AND AVEC 9 <> \"1\" PAR 1",
             "SELECT SSIADTOURNEE AVEC DateTournee < \"21511\" PAR DateTournee",
             "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC 1 = \"0800\"",
             "SELECT SSIADTOURNEE AVEC 1 = \"0800\"",
             "SELECT SSIADTOURNEE AVEC CodeTournee = \"009\"",
         }) {
        SCOPED_TRACE(sentence);
        const mvdb::Sentence parsed = mvdb::parseSentence(sentence);
        const std::vector<mvdb::SelectedRecord> selected = mvdb::select(m.db->store(), parsed, sentence);
        Keys reply;
        for (const mvdb::SelectedRecord& r : selected)
            reply.push_back(r.key);
        // The reply of a query is made apart from the records selected: it must list the same.
        EXPECT_EQ(mvdb::query(m.db->store(), parsed, sentence, {0, 2, 1}),
                  mvdb::listing(selected, {0, 2, 1}));
        Keys taken;
        mvdb::selectEach(m.db->store(), parsed, sentence,
                         [&](const std::string& key, const mvdb::DynamicRecord& record) {
                             EXPECT_EQ(m.db->store().read(parsed.file, key), record.text());
                             taken.push_back(key);
                         });
        std::sort(reply.begin(), reply.end());
        std::sort(taken.begin(), taken.end());
        EXPECT_EQ(taken, reply);
    }
}

// Numbers sort before texts; a number compares with a number as a number and with a text as a text.
TEST(QueryMixedValues, NumbersAndTextsMixInOneIndexedField) {
    testing_support::MemoryDatabase m;
    for (auto [key, value] :
         {std::pair{"A", "9"}, {"B", "10"}, {"C", "abc"}, {"D", "08"}, {"E", "-1,5"}, {"F", ""}}) {
        m.put("SSIADCARACTTOURNEE", key, {"X", value});
    }
    struct Case {
        const char* sentence;
        Keys expected;
    } cases[] = {
        {"SELECT SSIADCARACTTOURNEE AVEC 2 < \"10\" PAR 2", {"E", "D", "A", "F"}},
        {"SELECT SSIADCARACTTOURNEE AVEC 2 = \"8\"", {"D"}},
        {"SELECT SSIADCARACTTOURNEE AVEC 2 > \"5\" PAR-DECR 2", {"C", "B", "A", "D"}},
        {"SELECT SSIADCARACTTOURNEE AVEC 2 >= \"a\" PAR 2", {"C"}},
        {"SELECT SSIADCARACTTOURNEE AVEC 2 < \"a\" PAR 2", {"E", "D", "A", "B", "F"}},
        {"SELECT SSIADCARACTTOURNEE AVEC 2 = \"1]\"", {"B"}},
        {"SELECT SSIADCARACTTOURNEE AVEC 2 <> \"10\" PAR 2", {"E", "D", "A", "F", "C"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.sentence);
        EXPECT_EQ(m.keys("SSIADCARACTTOURNEE", c.sentence), c.expected);
    }
}

// A condition on an indexed field reads an index range; the same condition on a field without one
// judges every record. Both must keep the same records, whatever mix of numbers, texts and several
// values a field holds. Attributes 2 and 3 of a tournée hold the same values; only 2 has an index.
TEST(QueryMixedValues, AnIndexedFieldKeepsWhatJudgingEveryRecordKeeps) {
    testing_support::MemoryDatabase m;
    const std::string values[] = {"", "0", "08", "8", "8,0", "10", "-1,5", "abc", "ab", "a", "1]", " 7", "Z"};
    std::mt19937 random(11);
    for (int i = 0; i < 60; ++i) {
        std::string field;
        for (auto n = random() % 3; n-- > 0;)
            field += (field.empty() ? "" : "|") + values[random() % std::size(values)];
        char key[8];
        std::snprintf(key, sizeof key, "%03d", i);
        m.put("SSIADCARACTTOURNEE", key, {"X", field, field});
    }
    for (const char* op : {"=", "<", ">", "<=", ">=", "<>"}) {
        for (const std::string& value : values) {
            for (const std::string& pattern : {value, value + "]"}) {
                const bool prefix = pattern.ends_with(']');
                if (prefix && std::string(op) != "=" && std::string(op) != "<>") continue;
                const std::string condition = std::string(" ") + op + " \"" + pattern + "\"";
                SCOPED_TRACE(condition);
                EXPECT_EQ(m.keys("SSIADCARACTTOURNEE", "SELECT SSIADCARACTTOURNEE AVEC 2" + condition),
                          m.keys("SSIADCARACTTOURNEE", "SELECT SSIADCARACTTOURNEE AVEC 3" + condition));
            }
        }
    }
}

}  // namespace
