#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/date.h"
#include "base/text.h"
#include "mvdb/database.h"
#include "mvdb/pg_store.h"
#include "mvdb/sqlite_store.h"
#include "support/latency_proxy.h"
#include "support/pg_service.h"

// The reads of one moment in bulk on both stores: inside a read every answer is the one given outside,
// and on a shared server a day's reads cost a few round trips whatever the number of aidés.
namespace {

namespace fs = std::filesystem;
using testing_support::pgTestServer;

enum class Kind { Sqlite, Pg };
void PrintTo(Kind kind, std::ostream* out) {
    *out << (kind == Kind::Pg ? "PostgreSQL" : "SQLite");
}

std::string code(int i) {
    return base::zeroPad(i, 5);
}

std::string ownName() {
    const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
    return testing_support::pgSchemaName("zb_" + std::to_string(::getpid()) + "_" + info->name());
}

// A small service written through `db`: aidés with absences, accords of which one is suspended,
// protocoles on several weekdays with soins of both kinds, and planned interventions on two days.
void writeService(mvdb::Database& db, int aides) {
    mvdb::Store& s = db.store();
    s.write("SSIADSOINS", "S1", "TOILETTE\xfe\xfe\xfe\xfeN");
    s.write("SSIADSOINS", "S2", "PANSEMENT\xfe\xfe\xfe\xfeO");
    s.write("SSIADCARACTTOURNEE", "001",
            "INFIRMIER MATIN\xfe"
            "0\xfe"
            "7\xfe"
            "0\xfe"
            "12\xfe"
            "30\xfeI\xfeNORD\xfdSUD");
    for (int i = 1; i <= aides; ++i) {
        const std::string c = code(i);
        s.write("CIVILAIDE", c, "NOM" + std::to_string(i) + std::string(19, '\xfe') + (i % 7 ? "" : "21511"));
        s.write("SSIADELEMGEST", c + "000001", std::string(22, '\xfe') + (i % 2 ? "NORD" : "EST"));
        s.write("SSIADACCORDS", c + "001000001",
                "21400\xfe"
                "21600\xfe" +
                    std::string(i % 5 ? "" : "S"));
        s.write("SSIADPROTOCOLE", c + "2140000000110800",
                "1\xfd"
                "3\xfd"
                "7\xfe"
                "0900\xfeS1\xfdS2\xfe"
                "60\xfe"
                "1\xfe"
                "21400");
        s.write("SSIADPROTOCOLE", c + "2140000000121400",
                "\xfe"
                "1500\xfeS1\xfe"
                "30\xfe"
                "2\xfe"
                "21400\xfe"
                "21450");
        for (const char* day : {"21511", "21512"})
            s.write("SSIADTOURNEE", std::string(i % 3 ? "001" : "002") + c + day + "0800",
                    "0900\xfe" + c + "2140000000110800");
    }
}

const char* const kSentences[] = {
    "SELECT SSIADACCORDS AVEC 1 <= \"21511\" AND AVEC 2 >= \"21511\" PAR CodeAide",
    "SELECT SSIADACCORDS AVEC CodeAide =\"00012\" AND AVEC 1 <= \"21511\" AND AVEC 2 >= \"21511\"",
    "SELECT SSIADTOURNEE AVEC CodeAide = \"00012\" AND AVEC DateTournee = \"21511\"",
    "SELECT SSIADTOURNEE AVEC CodeAide = \"00009\" AND AVEC DateTournee = \"21512\" AND AVEC HeureDebut >= "
    "\"0600\" AND AVEC HeureDebut <= \"1400\" AND AVEC CodeTournee <> \"001\" ",
    "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\" AND AVEC DateTournee <= \"21512\" PAR-DECR DateTournee",
    "SELECT SSIADTOURNEE AVEC CodeTournee = \"001\" AND AVEC DateTournee = \"21511\" PAR HeureDebut",
    "SELECT SSIADTOURNEE AVEC DateTournee = \"21511\" AND AVEC 2 = \"0001221400000001]\"",
    "SELECT SSIADPROTOCOLE AVEC CodeAide = \"00003\"",
    "SELECT SSIADCARACTTOURNEE AVEC 8 = \"SUD\"",
    "SELECT CIVILAIDE AVEC 20 = \"21511\"",
};

class BulkReads : public ::testing::TestWithParam<Kind> {
protected:
    void SetUp() override {
        m_name = ownName();
        m_path = fs::temp_directory_path() / (m_name + ".db");
        if (GetParam() == Kind::Pg) {
            if (pgTestServer().empty()) GTEST_SKIP() << "ZANDOREL_TEST_PG is not set";
            mvdb::PgStore::dropSchema(pgTestServer(), m_name);
        }
        db = std::make_unique<mvdb::Database>(open(pgTestServer()), clock);
    }
    void TearDown() override {
        db.reset();
        if (GetParam() == Kind::Pg && !pgTestServer().empty())
            mvdb::PgStore::dropSchema(pgTestServer(), m_name);
        for (const char* suffix : {"", "-wal", "-shm"})
            fs::remove(m_path.string() + suffix);
    }
    std::unique_ptr<mvdb::Store> open(const std::string& address) {
        if (GetParam() == Kind::Pg)
            return mvdb::PgStore::open(address, mvdb::OpenMode::CreateIfMissing, m_name);
        return mvdb::SqliteStore::open(m_path.string(), mvdb::OpenMode::CreateIfMissing);
    }
    // Everything a display asks of the database for one aidé, as one text.
    std::string answersFor(mvdb::Database& d, int aide) {
        const std::string c = code(aide);
        std::string out;
        const std::pair<const char*, std::string> records[] = {
            {"CIVILAIDE", c},
            {"SSIADELEMGEST", c + "000001"},
            {"SSIADACCORDS", c + "001000001"},
            {"SSIADTOURNEE", "001" + c + "215110800"},
            {"SSIADTOURNEE", "002" + c + "215110800"},
        };
        for (const auto& [file, key] : records)
            out += d.store().read(file, key).value_or("<absent>") + "|";
        out += d.CallSubroutine("SSIADPERIODEACTIVE", c + "001000001\xfe"
                                                          "21511\xfe"
                                                          "21511\xfe"
                                                          "E\xfeSA\xfe")
                   .text();
        d.RunProgram("AFFICHEPROTOCSSIAD |W1||S|21511|21511|||" + c + "|AA|");
        out += "|" + d.store().read("TPSTEMPO", "W1AFFICHEPROTOCSSIAD").value_or("<absent>");
        d.store().remove("TPSTEMPO", "W1AFFICHEPROTOCSSIAD");
        return out;
    }
    std::string query(mvdb::Database& d, const std::string& sentence) {
        mvdb::DynamicRecord request;
        request.set(1, sentence);
        request.set(2, sentence.substr(7, sentence.find(' ', 7) - 7));
        request.set(3, "0 1 2");
        return d.Query(request.text()).text();
    }

    base::FixedClock clock{*base::Date::fromDmy(22, 11, 2026), 8 * 3600};
    std::unique_ptr<mvdb::Database> db;
    std::string m_name;
    fs::path m_path;
};

TEST_P(BulkReads, InsideAReadEveryAnswerIsTheOneGivenOutside) {
    writeService(*db, 24);
    std::vector<std::string> outside;
    for (const char* sentence : kSentences)
        outside.push_back(query(*db, sentence));
    for (int i = 1; i <= 25; ++i)
        outside.push_back(answersFor(*db, i));
    EXPECT_NE(outside[0], "") << "the sentences do find records";

    mvdb::ConsistentRead read(*db);
    std::size_t n = 0;
    for (const char* sentence : kSentences) {
        SCOPED_TRACE(sentence);
        EXPECT_EQ(query(*db, sentence), outside[n++]);
    }
    for (int i = 1; i <= 25; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(answersFor(*db, i), outside[n++]);
    }
}

// What a display costs across a network: its round trips, counted by a proxy between it and the server.
// Only a shared server is reached by round trips.
class BulkReadsOnServer : public BulkReads {};

TEST_P(BulkReadsOnServer, ADayOfManyAidesCostsAFewRoundTrips) {
    writeService(*db, 60);
    testing_support::LatencyProxy proxy(testing_support::pgSocketOf(pgTestServer()),
                                        std::chrono::microseconds(0));
    mvdb::Database remote(open(testing_support::pgAddressThrough(pgTestServer(), proxy.port())), clock);
    // The first display of a connection prepares its statements, a round trip each: not counted.
    for (int aides : {1, 6, 60}) {
        SCOPED_TRACE(aides);
        proxy.resetRoundTrips();
        std::string answers;
        {
            mvdb::ConsistentRead read(remote);
            answers += query(remote, kSentences[0]);
            for (int i = 1; i <= aides; ++i)
                answers += query(remote, "SELECT SSIADTOURNEE AVEC CodeAide = \"" + code(i) +
                                             "\" AND AVEC DateTournee = \"21511\"") +
                           answersFor(remote, i);
        }
        if (aides > 1) {
            EXPECT_LE(proxy.roundTrips(), 6);
        }
        std::string expected = query(*db, kSentences[0]);
        for (int i = 1; i <= aides; ++i)
            expected += query(*db, "SELECT SSIADTOURNEE AVEC CodeAide = \"" + code(i) +
                                       "\" AND AVEC DateTournee = \"21511\"") +
                        answersFor(*db, i);
        EXPECT_EQ(answers, expected) << "the proxy passes every byte";
    }
}

INSTANTIATE_TEST_SUITE_P(Stores, BulkReads, ::testing::Values(Kind::Sqlite, Kind::Pg),
                         [](const auto& info) { return info.param == Kind::Pg ? "Pg" : "Sqlite"; });

INSTANTIATE_TEST_SUITE_P(Server, BulkReadsOnServer, ::testing::Values(Kind::Pg),
                         [](const auto&) { return "Pg"; });

}  // namespace
