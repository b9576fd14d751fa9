#include "app/records_json.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "app/commands.h"
#include "base/error.h"
#include "support/memory_database.h"

namespace {

TEST(RecordsJson, RejectsMalformedLinesSayingWhy) {
    struct Case {
        const char* name;
        std::string line;
        std::string message;
    } cases[] = {
        {"not JSON", "{file:", "JSON incorrect"},
        {"not an object", "[1,2]", "un objet JSON est attendu"},
        {"missing key", R"({"file":"CIVILAIDE","attrs":[]})", "le champ \"key\" manque"},
        {"number as key", R"({"file":"CIVILAIDE","key":12,"attrs":[]})", "\"key\" doit être un texte"},
        {"empty key", R"({"file":"CIVILAIDE","key":"","attrs":[]})", "la clé est vide"},
        {"bad file name", R"({"file":"A B","key":"1","attrs":[]})", "nom de fichier incorrect : « A B »"},
        {"attrs not a list", R"({"file":"CIVILAIDE","key":"1","attrs":"x"})",
         "\"attrs\" doit être une liste"},
        {"number as value", R"({"file":"CIVILAIDE","key":"1","attrs":[["a",3]]})",
         "une valeur doit être un texte"},
        {"mark inside a value", "{\"file\":\"CIVILAIDE\",\"key\":\"1\",\"attrs\":[\"a\xC3\xBE\xFE\"]}",
         "JSON incorrect"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        try {
            app::recordFromJson(c.line);
            ADD_FAILURE() << "accepted";
        } catch (const base::Error& e) {
            EXPECT_EQ(std::string(e.what()).substr(0, c.message.size()), c.message);
        }
    }
}

TEST(RecordsJson, WritesEachShapeOfAttributeAndReadsItBack) {
    struct Case {
        const char* name;
        std::string text;
        std::string json;
    } cases[] = {
        {"single values",
         "0900\xFE"
         "ABC",
         R"({"file":"F","key":"K","attrs":["0900","ABC"]})"},
        {"multi-valued",
         "x\xFE"
         "v1\xFDv2",
         R"({"file":"F","key":"K","attrs":["x",["v1","v2"]]})"},
        {"sub-values", "s1\xFCs2", R"({"file":"F","key":"K","attrs":[[["s1","s2"]]]})"},
        {"empty attribute inside",
         "a\xFE\xFE"
         "c",
         R"({"file":"F","key":"K","attrs":["a","","c"]})"},
        {"accents", "Hélène", R"({"file":"F","key":"K","attrs":["Hélène"]})"},
        {"empty record", "", R"({"file":"F","key":"K","attrs":[]})"},
        {"empty values and sub-values", "\xFD\xFE\xFC",
         R"({"file":"F","key":"K","attrs":[["",""],[["",""]]]})"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(app::recordToJson({"F", "K", c.text}), c.json);
        EXPECT_EQ(app::recordFromJson(c.json).text, c.text);
    }
}

// Lines that another program wrote: an empty list writes no value, so it makes an attribute only where
// a later one holds a value.
TEST(RecordsJson, ReadsEmptyListsAsTheGapsTheyLeave) {
    struct Case {
        const char* name;
        std::string attrs;
        std::string text;
    } cases[] = {
        {"only empty lists", R"([[],[]])", ""},
        {"empty list at the end", R"(["a",[]])", "a"},
        {"empty list before a value", R"([[],"b"])",
         "\xFE"
         "b"},
        {"empty text at the end", R"(["a",""])", "a\xFE"},
        {"one empty text", R"([""])", ""},
        {"empty sub-value list", R"([["a",[]]])", "a\xFD"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(app::recordFromJson(R"({"file":"F","key":"K","attrs":)" + c.attrs + "}").text, c.text);
    }
}

TEST(RecordsJson, KeepsEveryValueOfAVeryLongList) {
    std::string text;
    for (int v = 1; v <= 80000; ++v)
        text += (v > 1 ? "\xFD" : "") + std::to_string(v) + (v % 1000 == 0 ? "\xFCs" : "");
    const std::string line = app::recordToJson({"F", "K",
                                                text + "\xFE"
                                                       "fin"});
    EXPECT_EQ(line.substr(0, 42), R"({"file":"F","key":"K","attrs":[["1","2","3)");
    EXPECT_NE(line.find(R"("999",["1000","s"],"1001")"), std::string::npos);
    EXPECT_EQ(app::recordFromJson(line).text, text +
                                                  "\xFE"
                                                  "fin");
}

TEST(LoadRecords, ABadLineLoadsNothingAndNamesItsNumber) {
    testing_support::MemoryDatabase m;
    std::istringstream in(R"({"file":"CIVILAIDE","key":"00001","attrs":["","DURAND"]})"
                          "\n\n"
                          R"({"file":"CIVILAIDE","key":"00002","attrs":[1]})"
                          "\n");
    try {
        app::loadRecords(*m.db, in, "aides.jsonl");
        ADD_FAILURE() << "accepted";
    } catch (const base::Error& e) {
        EXPECT_EQ(std::string(e.what()),
                  "aides.jsonl, ligne 3 : un attribut doit être un texte ; rien n'a été chargé");
    }
    EXPECT_EQ(m.db->store().count("CIVILAIDE"), 0u);
}

TEST(LoadRecords, AnInputThatCannotBeReadLoadsNothing) {
    testing_support::MemoryDatabase m;
    std::ifstream folder(testing::TempDir(), std::ios::binary);
    ASSERT_TRUE(folder.is_open()) << "a folder opens as a file and fails at its first read";
    try {
        app::loadRecords(*m.db, folder, "dossier");
        ADD_FAILURE() << "accepted";
    } catch (const base::Error& e) {
        EXPECT_EQ(std::string(e.what()),
                  "Lecture impossible de dossier : Is a directory ; rien n'a été chargé");
    }
}

TEST(CheckWritten, AFailedWriteIsAnErrorNamingTheOutput) {
    std::ofstream full("/dev/full");
    ASSERT_TRUE(full.is_open());
    full << "une ligne\n";
    try {
        app::checkWritten(full, "la sortie standard");
        ADD_FAILURE() << "accepted";
    } catch (const base::Error& e) {
        EXPECT_EQ(std::string(e.what()),
                  "Écriture impossible sur la sortie standard : No space left on device");
    }
    std::ostringstream fine;
    fine << "une ligne\n";
    EXPECT_NO_THROW(app::checkWritten(fine, "la sortie standard"));
}

TEST(LoadRecords, ARecordThatMakesNoSenseLoadsNothingAndNamesItsLine) {
    const std::string sain = R"({"file":"CIVILAIDE","key":"00001","attrs":["","DURAND"]})";
    struct Case {
        const char* name;
        std::string line, message;
    } cases[] = {
        {"a planned end of 8h30",
         R"({"file":"SSIADTOURNEE","key":"00100012215120800","attrs":["8h30","000122100000000110800"]})",
         "t.jsonl, ligne 2 : SSIADTOURNEE « 00100012215120800 », attribut 1 (fin prévue) : « 8h30 » n'est "
         "pas un nombre ; rien n'a été chargé"},
        {"a tournée with a minute of 75",
         R"({"file":"SSIADCARACTTOURNEE","key":"001","attrs":["LUNDI","0","6","75","14","00","M"]})",
         "t.jsonl, ligne 2 : SSIADCARACTTOURNEE « 001 », attribut 4 (minute de début) : « 75 » est hors de 0 "
         "à 59 minutes ; rien n'a été chargé"},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.name);
        testing_support::MemoryDatabase m;
        std::istringstream in(sain + "\n" + k.line + "\n" + sain + "\n");
        try {
            app::loadRecords(*m.db, in, "t.jsonl");
            ADD_FAILURE() << "accepted";
        } catch (const base::Error& e) {
            EXPECT_EQ(std::string(e.what()), k.message);
        }
        EXPECT_FALSE(m.db->store().hasFile("CIVILAIDE") && m.db->store().count("CIVILAIDE") > 0);
    }
}

TEST(LoadRecords, DumpThenLoadGivesTheSameDump) {
    testing_support::MemoryDatabase first;
    first.put("CIVILAIDE", "00001", {"", "DURAND", "Zoé", "", "12|14"});
    first.put("SSIADTOURNEE", "00100001215110750", {"0800", "000012140000000110750"});
    first.put("AUTRE", "k", {"v"});
    std::ostringstream dump1;
    app::dumpRecords(*first.db, std::nullopt, dump1);

    testing_support::MemoryDatabase second;
    std::istringstream in(dump1.str());
    EXPECT_EQ(app::loadRecords(*second.db, in, "dump"), 3u);
    std::ostringstream dump2;
    app::dumpRecords(*second.db, std::nullopt, dump2);
    EXPECT_EQ(dump2.str(), dump1.str());
    EXPECT_EQ(second.keys("SSIADTOURNEE", "SELECT SSIADTOURNEE AVEC CodeAide = \"00001\""),
              std::vector<std::string>{"00100001215110750"})
        << "loaded records reach the indexes";
}

TEST(QueryRecords, WritesOneLinePerRowWithTabs) {
    testing_support::MemoryDatabase m;
    m.put("SSIADCARACTTOURNEE", "002", {"SOIR", "", "", "", "", "", "", "", "", "2"});
    m.put("SSIADCARACTTOURNEE", "001", {"MATIN"});
    std::ostringstream out;
    app::queryRecords(*m.db, "SSIADCARACTTOURNEE", "0 1 10", "SELECT SSIADCARACTTOURNEE AVEC 1 = \"]\" PAR 1",
                      out);
    EXPECT_EQ(out.str(), "001\tMATIN\t\n002\tSOIR\t2\n");
}

TEST(QueryRecords, ListsAnyAttributesInAnyOrderAndMissingOnesEmpty) {
    testing_support::MemoryDatabase m;
    m.put("F", "A", {"un|uno", "deux"});
    m.put("F", "B", {});
    std::string list = "3 0 1 2 1";
    for (int a = 4; a <= 1500; ++a)
        list += " " + std::to_string(a);
    std::ostringstream out;
    app::queryRecords(*m.db, "F", list, "SELECT F", out);
    const std::string emptyTail(1497, '\t');
    EXPECT_EQ(out.str(), "\tA\tun\tdeux\tun" + emptyTail + "\n\tB\t\t\t" + emptyTail + "\n");
}

}  // namespace
