#include "mvdb/bulk_read_store.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>

#include "base/clock.h"
#include "base/date.h"
#include "base/error.h"
#include "base/text.h"
#include "mvdb/database.h"
#include "mvdb/forwarding_store.h"
#include "mvdb/sqlite_store.h"

// What the reads of one moment cost the store beneath and what they give: a file is fetched once, the
// planned interventions once per day, and every answer is the one the store itself gives.
namespace {

// Counts the calls that reach the store beneath, by kind and file.
class CountingStore : public mvdb::ForwardingStore {
public:
    using ForwardingStore::ForwardingStore;
    std::map<std::string, int> calls;

    std::optional<std::string> read(const std::string& f, const std::string& k) override {
        ++calls["read " + f];
        return ForwardingStore::read(f, k);
    }
    bool readInto(const std::string& f, const std::string& k, std::string& t) override {
        ++calls["read " + f];
        return ForwardingStore::readInto(f, k, t);
    }
    void write(const std::string& f, const std::string& k, const std::string& t) override {
        ++calls["write " + f];
        ForwardingStore::write(f, k, t);
    }
    void remove(const std::string& f, const std::string& k) override {
        ++calls["remove " + f];
        ForwardingStore::remove(f, k);
    }
    void scanAll(const std::string& f, const mvdb::RecordVisitor& v) override {
        ++calls["scanAll " + f];
        ForwardingStore::scanAll(f, v);
    }
    void scanFiles(const std::vector<std::string>& f, const mvdb::FileRecordVisitor& v) override {
        std::string names;
        for (const std::string& file : f)
            names += " " + file;
        ++calls["scanFiles" + names];
        ForwardingStore::scanFiles(f, v);
    }
    void scanRange(const std::string& f, const mvdb::KeyRange& r, const mvdb::RecordVisitor& v) override {
        ++calls["scanRange " + f];
        ForwardingStore::scanRange(f, r, v);
    }
};

using Calls = std::map<std::string, int>;

// The files a reader holds whole, fetched together at the first touch of one of them (CIVILAIDE here).
const std::string kWholeFiles =
    "scanFiles CIVILAIDE SSIADACCORDS SSIADCARACTTOURNEE SSIADELEMGEST SSIADPROTOCOLE SSIADSOINS";

std::string code(int i) {
    return base::zeroPad(i, 5);
}

// A service of `aides` aidés planned on two days, 21511 and 21512, in tournées 001 and 002.
struct Service {
    base::FixedClock clock{*base::Date::fromDmy(22, 11, 2026), 8 * 3600};
    CountingStore* counted = nullptr;
    mvdb::Database db{[this] {
                          auto store = std::make_unique<CountingStore>(
                              mvdb::SqliteStore::open(":memory:", mvdb::OpenMode::CreateIfMissing));
                          counted = store.get();
                          return store;
                      }(),
                      clock};

    explicit Service(int aides) {
        mvdb::Store& s = db.store();
        s.write("SSIADSOINS", "S1", "TOILETTE\xfe\xfe\xfe\xfeN");
        for (int i = 1; i <= aides; ++i) {
            s.write("CIVILAIDE", code(i),
                    "NOM" + std::to_string(i) + std::string(19, '\xfe') + "21400\xfd" + "21500\xfe" +
                        "21410\xfd");
            s.write("SSIADACCORDS", code(i) + "001000001",
                    "21400\xfe"
                    "21600");
            for (const char* day : {"21511", "21512"}) {
                s.write("SSIADTOURNEE", std::string(i % 2 ? "001" : "002") + code(i) + day + "0800",
                        "0850\xfe" + code(i) + "2140000000110800");
            }
        }
        counted->calls.clear();
    }

    mvdb::DynamicRecord query(const std::string& file, const std::string& sentence) {
        mvdb::DynamicRecord request;
        request.set(1, sentence);
        request.set(2, file);
        request.set(3, "0 1 2");
        return db.Query(request.text());
    }
    std::string planned(int aide, const std::string& day) {
        return query("SSIADTOURNEE", "SELECT SSIADTOURNEE AVEC CodeAide = \"" + code(aide) +
                                         "\" AND AVEC DateTournee = \"" + day + "\"")
            .text();
    }
};

TEST(BulkReadStore, OutsideAReadEveryCallReachesTheStore) {
    Service s(3);
    for (int i = 1; i <= 3; ++i) {
        s.db.store().read("CIVILAIDE", code(i));
        s.planned(i, "21511");
    }
    EXPECT_EQ(s.counted->calls, (Calls{{"read CIVILAIDE", 3}, {"scanRange SSIADTOURNEE", 3}}));
}

TEST(BulkReadStore, AReadFetchesEachFileOnceAndThePlannedInterventionsOncePerDay) {
    Service s(40);
    std::map<int, std::string> outside;
    for (int i = 1; i <= 41; ++i)
        outside[i] = s.planned(i, "21511") + "|" + s.planned(i, "21512");
    s.counted->calls.clear();
    {
        mvdb::ConsistentRead read(s.db);
        for (int i = 1; i <= 41; ++i) {
            SCOPED_TRACE(i);
            EXPECT_EQ(s.db.store().read("CIVILAIDE", code(i)).has_value(), i <= 40);
            EXPECT_EQ(s.db.store().read("SSIADACCORDS", code(i) + "001000001").has_value(), i <= 40);
            EXPECT_EQ(s.planned(i, "21511") + "|" + s.planned(i, "21512"), outside[i]);
            EXPECT_EQ(s.db.store().read("SSIADTOURNEE", "001" + code(i) + "215110800").has_value(),
                      i % 2 == 1 && i <= 40);
        }
        EXPECT_EQ(s.query("SSIADACCORDS", "SELECT SSIADACCORDS AVEC 1 <= \"21511\" AND AVEC 2 >= \"21511\"")
                      .DCount(),
                  40);
    }
    EXPECT_EQ(s.counted->calls, (Calls{{kWholeFiles, 1}, {"scanRange SSIADTOURNEE", 2}}));
}

TEST(BulkReadStore, AMissingRecordInsideAReadFailsWithTheMissingKeyCode) {
    Service s(2);
    mvdb::ConsistentRead read(s.db);
    std::shared_ptr<mvdb::File> civil = s.db.OpenFile("CIVILAIDE");
    mvdb::DynamicRecord buffer = civil->Read(code(1));
    try {
        civil->ReadInto(code(9), buffer);
        FAIL() << "a missing key was found";
    } catch (const base::Error& e) {
        EXPECT_EQ(e.code(), base::codes::kMissingKey);
        EXPECT_STREQ(e.what(), "Enregistrement absent : CIVILAIDE, clé « 00009 »");
    }
    EXPECT_EQ(buffer(1), "NOM1") << "the buffer keeps what it held";
    EXPECT_EQ(buffer(20, 2), "21500");
}

// A day that no selection named is not held: its records are read from the store, one by one.
TEST(BulkReadStore, ARecordOfADayNotHeldIsReadFromTheStore) {
    Service s(2);
    mvdb::ConsistentRead read(s.db);
    s.planned(1, "21511");
    EXPECT_EQ(s.db.store().read("SSIADTOURNEE", "00100001215120800").has_value(), true);
    EXPECT_EQ(s.db.store().read("SSIADTOURNEE", "00100001215110800").has_value(), true);
    EXPECT_EQ(s.counted->calls, (Calls{{"read SSIADTOURNEE", 1}, {"scanRange SSIADTOURNEE", 1}}));
}

TEST(BulkReadStore, AChangeToASharedFileEndsWhatIsHeld) {
    Service s(2);
    mvdb::ConsistentRead read(s.db);
    EXPECT_EQ(s.db.store().read("CIVILAIDE", code(1)).value().substr(0, 4), "NOM1");
    s.db.store().write("CIVILAIDE", code(1), "MARTIN");
    EXPECT_EQ(s.db.store().read("CIVILAIDE", code(1)), "MARTIN");
    s.db.store().write("CIVILAIDE", code(1), "DURAND");
    EXPECT_EQ(s.db.store().read("CIVILAIDE", code(1)), "DURAND");
    EXPECT_EQ(s.counted->calls, (Calls{{kWholeFiles, 1}, {"write CIVILAIDE", 2}, {"read CIVILAIDE", 2}}));
}

TEST(BulkReadStore, ABatchOfWritesEndsWhatIsHeldToo) {
    Service s(2);
    mvdb::ConsistentRead read(s.db);
    EXPECT_EQ(s.db.store().read("CIVILAIDE", code(1)).value().substr(0, 4), "NOM1");
    s.db.store().writeBatch("CIVILAIDE", {{code(1), "MARTIN"}, {code(2), "DURAND"}});
    EXPECT_EQ(s.db.store().read("CIVILAIDE", code(1)), "MARTIN");
    EXPECT_EQ(s.db.store().read("CIVILAIDE", code(2)), "DURAND");
}

// The work file is this workstation's: its records never reach the store beneath, and a rollback
// takes back what a transaction wrote there as it does everywhere else.
TEST(BulkReadStore, TheWorkFileStaysOffTheStoreAndFollowsTransactions) {
    Service s(1);
    mvdb::Store& store = s.db.store();
    store.write("TPSTEMPO", "A", "1");
    {
        mvdb::ConsistentRead read(s.db);
        store.write("TPSTEMPO", "B", "2");
        store.remove("TPSTEMPO", "A");
    }
    {
        mvdb::Transaction t(s.db);
        store.write("TPSTEMPO", "C", "3");
        store.write("CIVILAIDE", code(2), "X");
    }
    {
        mvdb::Transaction t(s.db);
        store.write("TPSTEMPO", "D", "4");
        t.commit();
    }
    EXPECT_EQ(store.read("TPSTEMPO", "A"), std::nullopt);
    EXPECT_EQ(store.read("TPSTEMPO", "B"), "2");
    EXPECT_EQ(store.read("TPSTEMPO", "C"), std::nullopt) << "rolled back";
    EXPECT_EQ(store.read("TPSTEMPO", "D"), "4");
    EXPECT_EQ(store.read("CIVILAIDE", code(2)), std::nullopt) << "rolled back";
    EXPECT_EQ(store.count("TPSTEMPO"), 2u);
    EXPECT_EQ(s.counted->calls, (Calls{{"write CIVILAIDE", 1}, {"read CIVILAIDE", 1}}));
}

// A walk over held records outlives a visitor that changes a shared file, which lets go of them.
TEST(BulkReadStore, AWalkOutlivesAChangeMadeByItsVisitor) {
    Service s(6);
    mvdb::ConsistentRead read(s.db);
    int seen = 0;
    s.db.store().scanAll("CIVILAIDE", [&](const std::string& key, const std::string&) {
        s.db.store().write("CIVILAIDE", key, "VU");
        ++seen;
        return true;
    });
    EXPECT_EQ(seen, 6);
    EXPECT_EQ(s.db.store().read("CIVILAIDE", code(6)), "VU");
}

}  // namespace
