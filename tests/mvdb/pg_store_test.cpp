#include "mvdb/pg_store.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cctype>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <thread>

#include "base/error.h"
#include "base/text.h"
#include "mvdb/open_store.h"
#include "mvdb/pg_address.h"
#include "support/memory_database.h"
#include "support/pg_service.h"

// The behaviours every store owes the database, run on the embedded store and, when ZANDOREL_TEST_PG
// names a server (scripts/with_postgres.sh starts one), on PostgreSQL.
namespace {

namespace fs = std::filesystem;
using Keys = std::vector<std::string>;

enum class Kind { Sqlite, Pg };
void PrintTo(Kind kind, std::ostream* out) {
    *out << (kind == Kind::Pg ? "PostgreSQL" : "SQLite");
}

using testing_support::pgTestServer;

// A name of this test alone, fit for a schema or a file: parallel runs never share a service.
std::string ownName() {
    const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return testing_support::pgSchemaName("zt_" + std::to_string(::getpid()) + "_" + info->name());
}

std::string errorOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const base::Error& e) {
        return e.what();
    }
    return "no error";
}

// Sentences the screen sends, with records that most of them find.
const char* const kScreenSentences[] = {
    "SELECT SSIADCARACTTOURNEE AVEC 1 = \"]\" AND AVEC 9 <> \"1\" PAR 1",
    "SELECT SSIADCARACTTOURNEE AVEC 1 = \"INF]\" AND AVEC 9 <> \"1\" PAR 1",
    "SELECT SSIADCARACTTOURNEE AVEC 8 = \"NORD\" AND AVEC 7 =\"I\"AND AVEC 5 > \"8,5\" AND AVEC 3 < "
    "\"9,25\"AND "
    "AVEC 2 =\"0\"",
    "SELECT SSIADCARACTTOURNEE AVEC 8 = \"NORD\" AND AVEC 5 > \"8,5\" AND AVEC 3 < \"9,25\"AND AVEC 2 =\"0\"",
    "SELECT SSIADTOURNEE AVEC DateTournee < \"21450\" PAR DateTournee",
    "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC DateTournee = \"21511\"",
    "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC DateTournee = \"21511\" AND AVEC HeureDebut >= "
    "\"0600\" AND AVEC HeureDebut <= \"1400\" AND AVEC CodeTournee <> \"001\" ",
    "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC DateTournee = \"21511\" AND AVEC HeureDebut >= "
    "\"0600\" AND AVEC HeureDebut <= \"1400\" AND AVEC CodeTournee = \"001\" ",
    "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\" AND AVEC DateTournee <= \"21511\" PAR-DECR DateTournee",
    "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\" AND AVEC DateTournee = \"21504\" PAR HeureDebut",
    "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\" AND AVEC 2=\"000120000100000000100850\" AND AVEC "
    "CodeTournee <> \"001\" PAR CodeTournee",
    "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\" AND AVEC 2 =\"0001221400000001]\" AND AVEC CodeTournee "
    "<>\"002\"",
    "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\"AND AVEC CodeTournee =\"001\"",
    "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\" PAR CodeTournee",
    "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\"AND AVEC CodeTournee = \"001\" PAR HeureDebut",
    "SELECT SSIADACCORDS AVEC 1 <= \"21511\" AND AVEC 2 >= \"21511\" PAR CodeAide",
    "SELECT SSIADACCORDS AVEC CodeAide =\"00012\" AND AVEC 1 <= \"21511\" AND AVEC 2 >= \"21511\"",
};

void putService(testing_support::MemoryDatabase& m) {
    m.put("SSIADCARACTTOURNEE", "001",
          {"INFIRMIER MATIN", "0", "7", "0", "12", "30", "I", "NORD|SUD", "", ""});
    m.put("SSIADCARACTTOURNEE", "002",
          {"AIDE SOIGNANT SOIR", "0", "17", "0", "20", "0", "S", "SUD", "", "2"});
    m.put("SSIADCARACTTOURNEE", "003", {"ANCIENNE", "1", "8", "0", "9", "15", "M", "EST", "1", ""});
    m.put("SSIADCARACTTOURNEE", "004", {"INFIRMIER SOIR", "0", "8", "30", "9", "0", "I", "NORD", "", ""});
    m.put("SSIADTOURNEE", "00100012215110750", {"0800", "000122140000000110750"});
    m.put("SSIADTOURNEE", "00100007215110850", {"0925", "000072140000000210850"});
    m.put("SSIADTOURNEE", "00200012215111700", {"1750", "000122140000000111700"});
    m.put("SSIADTOURNEE", "00100012215040750", {"0800", "000122140000000110750"});
    m.put("SSIADTOURNEE", "00100012214400750", {"0800", "000122140000000110750"});
    m.put("SSIADACCORDS", "00012", {"21400", "21600"});
    m.put("SSIADACCORDS", "00007", {"21512", "21600"});
}

class StoreBehaviour : public ::testing::TestWithParam<Kind> {
protected:
    void SetUp() override {
        m_name = ownName();
        m_path = fs::temp_directory_path() / (m_name + ".db");
        if (GetParam() == Kind::Pg) {
            if (pgTestServer().empty()) {
                GTEST_SKIP() << "ZANDOREL_TEST_PG is not set: run the tests under scripts/with_postgres.sh "
                                "to try the PostgreSQL store";
            }
            mvdb::PgStore::dropSchema(pgTestServer(), m_name);
        }
        m.db = std::make_shared<mvdb::Database>(open(), m.clock);
        m.faults = nullptr;
    }
    void TearDown() override {
        m.db.reset();
        if (GetParam() == Kind::Pg && !pgTestServer().empty())
            mvdb::PgStore::dropSchema(pgTestServer(), m_name);
        for (const char* suffix : {"", "-wal", "-shm"})
            fs::remove(m_path.string() + suffix);
    }
    // Another connection to this test's service, as a second planner or a restart would make.
    std::unique_ptr<mvdb::Store> open(mvdb::OpenMode mode = mvdb::OpenMode::CreateIfMissing) {
        if (GetParam() == Kind::Pg) return mvdb::PgStore::open(pgTestServer(), mode, m_name);
        return mvdb::SqliteStore::open(m_path.string(), mode);
    }
    mvdb::Store& store() { return m.db->store(); }

    std::string m_name;
    fs::path m_path;
    testing_support::MemoryDatabase m;
};

TEST_P(StoreBehaviour, RefusesBadKeysUnknownFilesAndMisplacedTransactions) {
    struct Case {
        const char* name;
        std::function<void()> call;
        std::string message;
    } cases[] = {
        {"empty key", [&] { store().write("CIVILAIDE", "", "x"); }, "Écriture dans CIVILAIDE : clé vide"},
        {"mark in key",
         [&] {
             store().write("CIVILAIDE", std::string{'a', '\xFD', 'b'}, "x");
         },
         "Écriture dans CIVILAIDE : la clé contient un séparateur"},
        {"unknown file", [&] { store().read("NOPE", "1"); }, "Fichier inconnu : NOPE"},
        {"scan of an unknown file", [&] { store().scanAll("NOPE", [](auto&, auto&) { return true; }); },
         "Fichier inconnu : NOPE"},
        {"bad file name", [&] { store().createFile("DROP TABLE;"); },
         "Nom de fichier incorrect : « DROP TABLE; » (lettres, chiffres et _ seulement)"},
        {"commit without transaction", [&] { store().commit(); }, "Aucune transaction ouverte"},
        {"second transaction", [&] { store().begin(), store().begin(); }, "Une transaction est déjà ouverte"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(errorOf(c.call), c.message);
    }
    store().rollback();
}

TEST_P(StoreBehaviour, KeepsRecordsExactlyAcrossReconnecting) {
    const std::string big(100000, 'x');
    const std::string marked = "Hélène\xFEx\xFDy\xFCz\xFE\xFEtout";
    store().write("CIVILAIDE", "00001", marked);
    store().write("CIVILAIDE", "00002", big);
    store().write("CIVILAIDE", "00003", "");
    store().write("TPSTEMPO", "WORK", "scratch");
    store().createFile("AUTRE");
    store().write("AUTRE", "k", "v");
    EXPECT_EQ(store().read("TPSTEMPO", "WORK"), "scratch");

    std::unique_ptr<mvdb::Store> again = open(mvdb::OpenMode::ExistingOnly);
    EXPECT_EQ(again->read("CIVILAIDE", "00001"), marked);
    EXPECT_EQ(again->read("CIVILAIDE", "00002"), big);
    EXPECT_EQ(again->read("CIVILAIDE", "00003"), "");
    EXPECT_EQ(again->read("CIVILAIDE", "00004"), std::nullopt);
    EXPECT_EQ(again->read("TPSTEMPO", "WORK"), std::nullopt) << "work records live with the connection";
    EXPECT_EQ(again->read("AUTRE", "k"), "v");
    EXPECT_EQ(again->count("CIVILAIDE"), 3u);
    Keys order;
    again->scanAll("CIVILAIDE", [&](const std::string& key, const std::string&) {
        order.push_back(key);
        return key != "00002";
    });
    EXPECT_EQ(order, (Keys{"00001", "00002"})) << "key order, and the walk stops when asked";
    EXPECT_EQ(again->read("CIVILAIDE", "00001"), marked) << "a walk stopped early leaves the store usable";
}

TEST_P(StoreBehaviour, IndexEntriesFollowWritesAndDeletes) {
    struct Step {
        const char* name;
        const char* protocole;  // null: both records deleted
        const char* sectors;
        Keys byProtocole;
        Keys bySector;
    } steps[] = {
        {"written", "000312140000000110900", "NORD|SUD", {"00100031215120900"}, {"001"}},
        {"values changed", "000312140000000119999", "EST", {}, {}},
        {"values back", "000312140000000110900", "SUD", {"00100031215120900"}, {"001"}},
        {"deleted", nullptr, nullptr, {}, {}},
    };
    for (const Step& s : steps) {
        SCOPED_TRACE(s.name);
        if (s.protocole) {
            m.put("SSIADTOURNEE", "00100031215120900", {"1000", s.protocole});
            m.put("SSIADCARACTTOURNEE", "001", {"MATIN", "0", "", "", "", "", "", s.sectors});
        } else {
            store().remove("SSIADTOURNEE", "00100031215120900");
            store().remove("SSIADCARACTTOURNEE", "001");
            store().remove("SSIADCARACTTOURNEE", "absent");
        }
        EXPECT_EQ(m.keys("SSIADTOURNEE", "SELECT SSIADTOURNEE AVEC 2 = \"000312140000000110900\""),
                  s.byProtocole);
        EXPECT_EQ(m.keys("SSIADCARACTTOURNEE", "SELECT SSIADCARACTTOURNEE AVEC 8 = \"SUD\""), s.bySector);
    }
}

TEST_P(StoreBehaviour, RollbackLeavesEveryRecordAndIndexAsItWas) {
    m.put("SSIADTOURNEE", "00100012215110750", {"0800", "P1"});
    {
        mvdb::Transaction t(*m.db);
        store().remove("SSIADTOURNEE", "00100012215110750");
        m.put("SSIADTOURNEE", "00100012215110900", {"0950", "P2"});
        EXPECT_EQ(errorOf([&] { store().write("SSIADTOURNEE", "", "x"); }),
                  "Écriture dans SSIADTOURNEE : clé vide");
        EXPECT_EQ(m.keys("SSIADTOURNEE", "SELECT SSIADTOURNEE AVEC 2 = \"P2\""), Keys{"00100012215110900"})
            << "a failed change leaves the transaction usable";
    }
    EXPECT_EQ(m.keys("SSIADTOURNEE", "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\""),
              Keys{"00100012215110750"});
    EXPECT_EQ(m.keys("SSIADTOURNEE", "SELECT SSIADTOURNEE AVEC 2 = \"P2\""), Keys{});
    {
        mvdb::Transaction t(*m.db);
        m.put("SSIADTOURNEE", "00100012215110900", {"0950", "P2"});
        t.commit();
    }
    EXPECT_EQ(open()->read("SSIADTOURNEE", "00100012215110900").has_value(), true);
}

// A file made in a transaction lives and dies with it, in the store's own view as in the database.
TEST_P(StoreBehaviour, AFileMadeInARolledBackTransactionIsForgotten) {
    store().begin();
    store().createFile("AUTRE");
    store().write("AUTRE", "k", "v");
    store().rollback();
    EXPECT_FALSE(store().hasFile("AUTRE"));
    EXPECT_EQ(errorOf([&] { store().read("AUTRE", "k"); }), "Fichier inconnu : AUTRE");
    EXPECT_FALSE(open(mvdb::OpenMode::ExistingOnly)->hasFile("AUTRE"));

    store().createFile("AUTRE");
    store().write("AUTRE", "k", "v2");
    EXPECT_EQ(open(mvdb::OpenMode::ExistingOnly)->read("AUTRE", "k"), "v2") << "made again for good";

    store().begin();
    store().createFile("TROISIEME");
    store().commit();
    store().begin();
    store().rollback();
    EXPECT_TRUE(store().hasFile("TROISIEME")) << "a later rollback keeps a committed file";
}

// A display reads with several queries while another planner may validate the same tournée.
TEST_P(StoreBehaviour, ReadsOfAConsistentReadSeeOneMomentAndWritesEndIt) {
    m.put("SSIADTOURNEE", "00100012215110750", {"0800", "P1"});
    const auto sentence = "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\"";
    auto other = open(mvdb::OpenMode::ExistingOnly);
    auto validate = [&](const std::string& from, const std::string& to) {
        other->begin();
        other->remove("SSIADTOURNEE", from);
        other->write("SSIADTOURNEE", to, "0950\xfeP1");
        other->commit();
    };
    {
        mvdb::ConsistentRead outer(*m.db);
        mvdb::ConsistentRead inner(*m.db);
        EXPECT_EQ(m.keys("SSIADTOURNEE", sentence), Keys{"00100012215110750"});
        validate("00100012215110750", "00100012215110900");
        store().write("TPSTEMPO", "WORK", "scratch");
        EXPECT_EQ(m.keys("SSIADTOURNEE", sentence), Keys{"00100012215110750"})
            << "a work file keeps the view";
        EXPECT_EQ(store().read("SSIADTOURNEE", "00100012215110900"), std::nullopt);
        EXPECT_EQ(store().read("TPSTEMPO", "WORK"), "scratch");
    }
    EXPECT_EQ(m.keys("SSIADTOURNEE", sentence), Keys{"00100012215110900"});
    EXPECT_EQ(store().read("TPSTEMPO", "WORK"), "scratch") << "work records outlive the view";

    // A change inside works on the newest records, never on the view, and is never refused as stale.
    mvdb::ConsistentRead read(*m.db);
    EXPECT_EQ(m.keys("SSIADTOURNEE", sentence), Keys{"00100012215110900"});
    validate("00100012215110900", "00100012215111000");
    {
        mvdb::Transaction t(*m.db);
        store().remove("SSIADTOURNEE", "00100012215111000");
        m.put("SSIADTOURNEE", "00100012215111100", {"1150", "P1"});
        t.commit();
    }
    EXPECT_EQ(other->read("SSIADTOURNEE", "00100012215111000"), std::nullopt);
    EXPECT_EQ(m.keys("SSIADTOURNEE", sentence), Keys{"00100012215111100"});
}

TEST_P(StoreBehaviour, AnswersTheScreensSentencesAsTheEmbeddedStore) {
    testing_support::MemoryDatabase reference;
    putService(reference);
    putService(m);
    for (const char* sentence : kScreenSentences) {
        SCOPED_TRACE(sentence);
        std::string file = std::string(sentence).substr(7, std::string(sentence).find(' ', 7) - 7);
        EXPECT_EQ(m.keys(file, sentence), reference.keys(file, sentence));
    }
    EXPECT_EQ(m.keys("SSIADTOURNEE", kScreenSentences[8]).size(), 4u) << "the records do reach the sentences";
}

// The purge hands the store every key at once, and the store chooses how to remove them: a few one by
// one, most of a file by writing back what stays. Either way the records and the index entries left
// must be those that removing each key in turn leaves, which a reference service does here.
TEST_P(StoreBehaviour, ABatchOfRemovesLeavesWhatRemovingEachWould) {
    Keys all;
    for (int i = 0; i < 12; ++i)
        all.push_back(base::zeroPad(1 + i % 3, 3) + base::zeroPad(10 + i % 4, 5) +
                      base::zeroPad(21500 + i % 5, 5) + base::zeroPad(700 + i * 10, 4));
    auto putAll = [&](testing_support::MemoryDatabase& service, const Keys& keys, const std::string& mark) {
        for (std::size_t i = 0; i < keys.size(); ++i)
            service.put("SSIADTOURNEE", keys[i],
                        {"0800", mark + std::to_string(i % 3) + "|Q" + std::to_string(i % 2) + "|" + mark +
                                     std::to_string(i % 3)});
    };
    const char* const sentences[] = {
        "SELECT SSIADTOURNEE",
        "SELECT SSIADTOURNEE AVEC CodeTournee = \"002\"",
        "SELECT SSIADTOURNEE AVEC CodeAide = \"00011\"",
        "SELECT SSIADTOURNEE AVEC DateTournee >= \"21502\" PAR DateTournee",
        "SELECT SSIADTOURNEE AVEC HeureDebut < \"0750\"",
        "SELECT SSIADTOURNEE AVEC 2 = \"P1\"",
        "SELECT SSIADTOURNEE AVEC 2 = \"Q0\"",
        "SELECT SSIADTOURNEE AVEC 2 = \"Z2\"",
    };
    struct Case {
        const char* name;
        Keys gone;
        bool committed;
        std::size_t removed;
    } cases[] = {
        {"a few of the file", {all[1], all[6]}, true, 2},
        {"most of the file", Keys(all.begin(), all.begin() + 9), true, 9},
        {"every record", all, true, 12},
        {"absent and repeated keys", {all[3], "00999999999990000", all[3]}, true, 1},
        {"nothing", {}, true, 0},
        {"most of the file, rolled back", Keys(all.begin() + 2, all.end()), false, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        for (const std::string& key : all)
            store().remove("SSIADTOURNEE", key);
        putAll(m, all, "P");
        testing_support::MemoryDatabase reference;
        putAll(reference, all, "P");
        {
            mvdb::Transaction t(*m.db);
            store().removeBatch("SSIADTOURNEE", c.gone);
            if (c.committed) t.commit();
        }
        if (c.committed) {
            for (const std::string& key : c.gone)
                reference.db->store().remove("SSIADTOURNEE", key);
        }
        // Records written again under the keys that went must not be found by the values they had.
        Keys back;
        for (const std::string& key : all) {
            if (!store().read("SSIADTOURNEE", key)) back.push_back(key);
        }
        putAll(m, back, "Z");
        putAll(reference, back, "Z");
        for (const char* sentence : sentences) {
            SCOPED_TRACE(sentence);
            EXPECT_EQ(m.keys("SSIADTOURNEE", sentence), reference.keys("SSIADTOURNEE", sentence));
        }
        EXPECT_EQ(back.size(), c.removed);
    }
}

// A load hands the store thousands of records at once. Whatever the store does with them, the records
// and index entries must be those that writing each in turn leaves, which a reference service does here.
TEST_P(StoreBehaviour, ABatchOfWritesLeavesWhatWritingEachWould) {
    using Records = std::vector<std::pair<std::string, std::string>>;
    auto record = [](const std::string& protocole, const std::string& heure) {
        return heure + "\xFE" + protocole + "\xFD" + protocole + "X";
    };
    const Records existing = {{"00100012215110750", record("P1", "0800")},
                              {"00200013215110900", record("P2", "0950")}};
    const char* const sentences[] = {
        "SELECT SSIADTOURNEE",
        "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\"",
        "SELECT SSIADTOURNEE AVEC 2 = \"P1\"",
        "SELECT SSIADTOURNEE AVEC 2 = \"P3X\"",
        "SELECT SSIADTOURNEE AVEC 1 >= \"0900\" PAR 1",
    };
    struct Case {
        const char* name;
        Records batch;
        std::string message;  // empty: written
    } cases[] = {
        {"an empty key among good ones",
         {{"00300014215111000", record("P3", "1050")}, {"", "x"}},
         "Écriture dans SSIADTOURNEE : clé vide"},
        {"new records", {{"00300014215111000", record("P3", "1050")}, {"00300015215111100", "1150"}}, ""},
        {"records replaced with other values",
         {{"00100012215110750", record("P3", "1200")}, {"00200013215110900", ""}},
         ""},
        {"a key given twice keeps its last text",
         {{"00100012215110750", record("P9", "0700")}, {"00100012215110750", record("P3", "0910")}},
         ""},
        {"nothing", {}, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        for (const std::string& key : m.keys("SSIADTOURNEE", "SELECT SSIADTOURNEE"))
            store().remove("SSIADTOURNEE", key);
        testing_support::MemoryDatabase reference;
        for (const auto& [key, text] : existing) {
            store().write("SSIADTOURNEE", key, text);
            reference.db->store().write("SSIADTOURNEE", key, text);
        }
        std::string message;
        {
            mvdb::Transaction t(*m.db);
            message = errorOf([&] { store().writeBatch("SSIADTOURNEE", c.batch); });
            if (message == "no error") t.commit();
        }
        EXPECT_EQ(message, c.message.empty() ? "no error" : c.message);
        if (c.message.empty()) {
            for (const auto& [key, text] : c.batch)
                reference.db->store().write("SSIADTOURNEE", key, text);
        }
        for (const char* sentence : sentences) {
            SCOPED_TRACE(sentence);
            EXPECT_EQ(m.keys("SSIADTOURNEE", sentence), reference.keys("SSIADTOURNEE", sentence));
        }
        for (const std::string& key : reference.keys("SSIADTOURNEE", "SELECT SSIADTOURNEE"))
            EXPECT_EQ(store().read("SSIADTOURNEE", key), reference.db->store().read("SSIADTOURNEE", key));
    }
    store().writeBatch("TPSTEMPO", {{"WORK", "a"}, {"WORK", "b"}});
    EXPECT_EQ(store().read("TPSTEMPO", "WORK"), "b") << "work files too";
}

TEST_P(StoreBehaviour, NamesTheStatementsOfItsCalls) {
    // The engine itself, without the layers the database puts around it.
    std::unique_ptr<mvdb::Store> engine = open();
    auto& indexed = dynamic_cast<mvdb::IndexedStore&>(*engine);
    struct Case {
        const char* name;
        mvdb::StoreStatement statement;
        std::string file;
        std::string message;
    } cases[] = {
        {"unknown file", mvdb::StoreStatement::Read, "NOPE", "Fichier inconnu : NOPE"},
        {"range on a work file", mvdb::StoreStatement::ScanRange, "TPSTEMPO",
         "Le fichier TPSTEMPO n'a pas d'index"},
        {"read of a work file", mvdb::StoreStatement::Read, "TPSTEMPO", "no error"},
        {"range on a shared file", mvdb::StoreStatement::ScanRange, "SSIADTOURNEE", "no error"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(errorOf([&] { indexed.statementText(c.statement, c.file, mvdb::KeyRange{}); }), c.message);
    }
}

// Work records follow the transaction around them as shared ones do, whichever way it ends.
TEST_P(StoreBehaviour, WorkRecordsFollowTheTransactionAroundThem) {
    struct Step {
        const char* name;
        bool commit;
        std::optional<std::string> work, shared;
    } steps[] = {
        {"rolled back", false, std::nullopt, std::nullopt},
        {"committed", true, "w", "s"},
    };
    for (const Step& s : steps) {
        SCOPED_TRACE(s.name);
        store().begin();
        store().write("TPSTEMPO", "WORK", "w");
        store().write("CIVILAIDE", "00001", "s");
        s.commit ? store().commit() : store().rollback();
        EXPECT_EQ(store().read("TPSTEMPO", "WORK"), s.work);
        EXPECT_EQ(store().read("CIVILAIDE", "00001"), s.shared);
    }
    {
        mvdb::ConsistentRead read(*m.db);
        store().remove("TPSTEMPO", "WORK");
        store().write("TPSTEMPO", "OTHER", "o");
    }
    EXPECT_EQ(store().read("TPSTEMPO", "WORK"), std::nullopt);
    EXPECT_EQ(store().read("TPSTEMPO", "OTHER"), "o");
}

INSTANTIATE_TEST_SUITE_P(Stores, StoreBehaviour, ::testing::Values(Kind::Sqlite, Kind::Pg),
                         [](const auto& info) { return info.param == Kind::Pg ? "Pg" : "Sqlite"; });

TEST(OpenStore, TheDbTextChoosesTheStore) {
    // What an empty text means depends on the environment: the cases run without PG* variables.
    std::map<std::string, std::string> saved;
    for (const char* name : {"PGHOST", "PGHOSTADDR", "PGSERVICE", "PGDATABASE"}) {
        if (const char* value = std::getenv(name)) saved[name] = value;
        ::unsetenv(name);
    }
    struct Case {
        const char* name;
        std::string text;
        std::string messageStart;  // empty: opens
    } cases[] = {
        {"empty, no server in the environment", "",
         "Aucune base indiquée : --db attend le chemin d'une base, :memory: ou une adresse postgresql://"},
        {"a server that is not there", "postgresql:///nulle?host=/nonexistent&connect_timeout=2",
         "Connexion impossible au serveur PostgreSQL nulle sur /nonexistent:5432 : "},
        {"the short scheme", "postgres:///nulle?host=/nonexistent",
         "Connexion impossible au serveur PostgreSQL "},
        {"a private embedded base", ":memory:", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::string message = errorOf([&] { mvdb::openStore(c.text, mvdb::OpenMode::CreateIfMissing); });
        EXPECT_EQ(message.substr(0, c.messageStart.empty() ? std::string::npos : c.messageStart.size()),
                  c.messageStart.empty() ? "no error" : c.messageStart);
    }
    for (const auto& [name, value] : saved)
        ::setenv(name.c_str(), value.c_str(), 1);
}

class PgStoreTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (pgTestServer().empty())
            GTEST_SKIP() << "ZANDOREL_TEST_PG is not set: run under scripts/with_postgres.sh";
        mvdb::PgStore::dropSchema(pgTestServer(), ownName());
    }
    void TearDown() override {
        if (!pgTestServer().empty()) mvdb::PgStore::dropSchema(pgTestServer(), ownName());
    }
    // The test server, with a setting of the session added to the connection text.
    static std::string withSetting(const std::string& setting) {
        std::string url = pgTestServer();
        return url + (url.find('?') == std::string::npos ? "?" : "&") + "options=-c%20" + setting;
    }
};

TEST_F(PgStoreTest, AServiceMustExistToBeOpenedAsExisting) {
    std::string message =
        errorOf([] { mvdb::PgStore::open(pgTestServer(), mvdb::OpenMode::ExistingOnly, ownName()); });
    EXPECT_EQ(message.rfind("Base de données introuvable : ", 0), 0u) << message;
}

// A service of its own per address: the first schema that the address's search_path names, made on
// first use whatever its name, and never one named after it.
TEST_F(PgStoreTest, TheFirstSchemaOfTheSearchPathHoldsTheServiceAndIsMadeOnFirstUse) {
    const std::string base = "zt_" + std::to_string(::getpid()) + "_path";
    auto encoded = [](const std::string& text) {
        std::string out;
        for (char c : text)
            out += c == '"' ? "%22" : c == ',' ? "%2C" : c == '$' ? "%24" : std::string(1, c);
        return out;
    };
    struct Case {
        const char* name;
        std::string searchPath;
        std::string schema;
    } cases[] = {
        {"new schema before one that exists", base + "_nord,public", base + "_nord"},
        {"quoted name with a comma", "\"" + base + "_a,b\",public", base + "_a,b"},
        {"quoted name with a quote", "\"" + base + "_ab\"\"\"", base + "_ab\""},
        {"unquoted name in capitals", base + "_UP", base + "_up"},
        {"the user's schema, which does not exist", "\"$user\"," + base + "_u", base + "_u"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        mvdb::PgStore::dropSchema(pgTestServer(), c.schema);
        const std::string address = testing_support::pgServiceAddress(pgTestServer(), encoded(c.searchPath));
        std::string message = errorOf([&] { mvdb::openStore(address, mvdb::OpenMode::ExistingOnly); });
        EXPECT_EQ(message.rfind("Base de données introuvable : ", 0), 0u) << message;
        EXPECT_NE(message.find(", schéma " + c.schema + " sans fichiers"), std::string::npos) << message;

        mvdb::openStore(address, mvdb::OpenMode::CreateIfMissing)->write("CIVILAIDE", "00001", c.name);
        auto named = mvdb::PgStore::open(pgTestServer(), mvdb::OpenMode::ExistingOnly, c.schema);
        EXPECT_EQ(named->read("CIVILAIDE", "00001"), std::optional<std::string>(c.name));
        EXPECT_EQ(mvdb::openStore(address, mvdb::OpenMode::ExistingOnly)->read("CIVILAIDE", "00001"),
                  std::optional<std::string>(c.name));
        mvdb::PgStore::dropSchema(pgTestServer(), c.schema);
    }
}

TEST(PgSearchPath, ReadsNamesAsTheServerDoes) {
    struct Case {
        const char* name;
        std::string setting;
        Keys schemas;
    } cases[] = {
        {"empty", "", {}},
        {"the default", "\"$user\", public", {"$user", "public"}},
        {"unquoted in capitals", "Nord,PUBLIC", {"nord", "public"}},
        {"quoted keeps case and commas", " \"Nord,Sud\" , public", {"Nord,Sud", "public"}},
        {"doubled quote", "\"ab\"\"\",x", {"ab\"", "x"}},
        {"accents kept", "\"équipe_été\"", {"équipe_été"}},
        {"cut to 63 bytes", std::string(70, 'a'), {std::string(63, 'a')}},
        {"cut before a split character", std::string(62, 'a') + "é", {std::string(62, 'a')}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(mvdb::pg::searchPathSchemas(c.setting), c.schemas);
    }
}

// The server ends sessions left idle past a limit: the next statement finds the connection gone.
TEST_F(PgStoreTest, ALostConnectionSaysSoAndLosesTheUnfinishedTransaction) {
    mvdb::PgStore::open(pgTestServer(), mvdb::OpenMode::CreateIfMissing, ownName());
    auto store = mvdb::PgStore::open(withSetting("idle_in_transaction_session_timeout%3D300"),
                                     mvdb::OpenMode::ExistingOnly, ownName());
    store->begin();
    store->write("CIVILAIDE", "00001", "pas validé");
    std::this_thread::sleep_for(std::chrono::milliseconds(1200));
    std::string message = errorOf([&] { store->commit(); });
    EXPECT_EQ(message.rfind("La connexion au serveur PostgreSQL de la base ", 0), 0u) << message;
    EXPECT_NE(message.find(" est perdue : "), std::string::npos) << message;
    EXPECT_NO_THROW(store->rollback());
    auto again = mvdb::PgStore::open(pgTestServer(), mvdb::OpenMode::ExistingOnly, ownName());
    EXPECT_EQ(again->read("CIVILAIDE", "00001"), std::nullopt);
}

// The server refuses a key too long for its index; inside a transaction that failure must cost the
// one change only, on a work file as on a shared one.
TEST_F(PgStoreTest, AFailedChangeInsideATransactionCostsThatChangeOnly) {
    auto store = mvdb::PgStore::open(pgTestServer(), mvdb::OpenMode::CreateIfMissing, ownName());
    std::string huge;
    for (unsigned n = 1; huge.size() < 20000; n = n * 1103515245u + 12345u)
        huge += "abcdefghijklmnopqrstuvwxyz0123456789"[(n >> 16) % 36];
    for (const char* file : {"TPSTEMPO", "CIVILAIDE"}) {
        SCOPED_TRACE(file);
        store->begin();
        store->write(file, "before", "kept");
        EXPECT_NE(errorOf([&] { store->write(file, huge, "refused"); }), "no error");
        store->write(file, "after", "kept");
        store->commit();
        EXPECT_EQ(store->read(file, "before"), "kept");
        EXPECT_EQ(store->read(file, "after"), "kept");
    }
}

// The steps of a plan that read a table whole: a sequential scan, or an index walked without a condition.
Keys wholeTableReads(const std::vector<std::string>& plan) {
    Keys reads;
    for (std::size_t i = 0; i < plan.size(); ++i) {
        bool index = plan[i].find("Index Scan") != std::string::npos ||
                     plan[i].find("Index Only Scan") != std::string::npos;
        bool searched = false;
        for (std::size_t j = i + 1; j < plan.size() && plan[j].find("->") == std::string::npos; ++j)
            searched = searched || plan[j].find("Index Cond") != std::string::npos;
        if (plan[i].find("Seq Scan") != std::string::npos || (index && !searched)) reads.push_back(plan[i]);
    }
    return reads;
}

TEST_F(PgStoreTest, NoSentenceOfTheScreenReadsAFileWhole) {
    testing_support::MemoryDatabase m;
    m.db = std::make_shared<mvdb::Database>(
        mvdb::PgStore::open(pgTestServer(), mvdb::OpenMode::CreateIfMissing, ownName()), m.clock);
    m.faults = nullptr;
    for (const char* sentence : kScreenSentences) {
        SCOPED_TRACE(sentence);
        std::vector<std::string> plan = m.db->explainQuery(sentence);
        ASSERT_FALSE(plan.empty());
        EXPECT_EQ(wholeTableReads(plan), Keys{});
    }
    EXPECT_EQ(wholeTableReads(m.db->explainQuery("SELECT CIVILAIDE AVEC 2 = \"DUPONT\"")).size(), 1u)
        << "a field without an index has nothing to search by";
}

}  // namespace
