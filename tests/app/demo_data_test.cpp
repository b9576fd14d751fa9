#include "app/demo_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <ostream>
#include <set>

#include "base/clock.h"
#include "base/error.h"
#include "base/text.h"
#include "mvdb/database.h"
#include "mvdb/sqlite_store.h"

namespace app {

// Names the parameters of a failing case in the test's output.
void PrintTo(const DemoOptions& o, std::ostream* os) {
    *os << o.aides << " aidés, " << o.historyDays << " jours, graine " << o.seed;
}

namespace {

using Records = std::map<std::string, mvdb::DynamicRecord>;

const std::vector<std::string> kFiles = {"CIVILAIDE",     "SSIADACCORDS",   "SSIADCARACTTOURNEE",
                                         "SSIADELEMGEST", "SSIADPROTOCOLE", "SSIADSOINS",
                                         "SSIADTOURNEE"};

base::Date day(int d, int m, int y) {
    return *base::Date::fromDmy(d, m, y);
}

struct Service {
    explicit Service(base::Date today)
        : clock(today, 9 * 3600),
          database(mvdb::SqliteStore::open(":memory:", mvdb::OpenMode::CreateIfMissing), clock) {}

    Records records(const std::string& file) {
        Records out;
        database.store().scanAll(file, [&](const std::string& key, const std::string& text) {
            out.emplace(key, mvdb::DynamicRecord(text));
            return true;
        });
        return out;
    }
    std::map<std::string, std::string> texts(const std::string& file) {
        std::map<std::string, std::string> out;
        for (const auto& [key, record] : records(file))
            out[key] = record.text();
        return out;
    }

    base::FixedClock clock;
    mvdb::Database database;
    DemoSummary summary;
};

std::unique_ptr<Service> generate(const DemoOptions& options) {
    auto service = std::make_unique<Service>(options.today);
    service->summary = writeDemoService(service->database, options);
    return service;
}

DemoOptions options(int aides, int historyDays, unsigned seed = 1) {
    return {day(22, 11, 2026), aides, historyDays, seed};
}

int number(const std::string& text) {
    return static_cast<int>(base::toNumber(text));
}

bool hasValue(const mvdb::DynamicRecord& record, int attribute, const std::string& value) {
    for (std::int64_t v = 1; v <= record.DCount(attribute); ++v) {
        if (record(attribute, v) == value) return true;
    }
    return false;
}

// "I", "A" or "M", from the soins' own marks.
char kindOf(const mvdb::DynamicRecord& protocole, const Records& soins) {
    int nurse = 0, all = static_cast<int>(protocole.DCount(3));
    for (int v = 1; v <= all; ++v)
        nurse += soins.at(protocole(3, v))(5) == "O" ? 1 : 0;
    return nurse == 0 ? 'A' : nurse == all ? 'I' : 'M';
}

bool inForce(const mvdb::DynamicRecord& protocole, int internalDay) {
    if (number(protocole(6)) > internalDay) return false;
    if (!protocole(7).empty() && number(protocole(7)) < internalDay) return false;
    int weekday = base::Date::fromInternal(internalDay).weekday();
    return protocole.DCount(1) == 0 || hasValue(protocole, 1, std::to_string(weekday));
}

// An accord of the aidé covers the day, and from today on it is not suspended.
bool coveredByAccord(const Records& accords, const std::string& codeAide, int internalDay, int today) {
    for (auto it = accords.lower_bound(codeAide); it != accords.end() && it->first.rfind(codeAide, 0) == 0;
         ++it) {
        const mvdb::DynamicRecord& a = it->second;
        bool active = internalDay < today || a(3) != "S";
        if (number(a(1)) <= internalDay && internalDay <= number(a(2)) && active) return true;
    }
    return false;
}

int tourneeStart(const mvdb::DynamicRecord& t) {
    return number(t(3)) * 100 + number(t(4)) * 100 / 60;
}
int tourneeEnd(const mvdb::DynamicRecord& t) {
    return number(t(5)) * 100 + number(t(6)) * 100 / 60;
}

TEST(DemoData, SameOptionsWriteTheSameRecordsAndAnotherSeedOthers) {
    auto first = generate(options(40, 30));
    auto second = generate(options(40, 30));
    auto reseeded = generate(options(40, 30, 2));
    for (const std::string& file : kFiles)
        EXPECT_EQ(first->texts(file), second->texts(file)) << file;
    EXPECT_NE(first->texts("CIVILAIDE"), reseeded->texts("CIVILAIDE"));
    EXPECT_NE(first->texts("SSIADTOURNEE"), reseeded->texts("SSIADTOURNEE"));
}

TEST(DemoData, SummaryCountsWhatIsInTheFiles) {
    auto s = generate(options(40, 60));
    mvdb::Store& store = s->database.store();
    EXPECT_EQ(s->summary.aides, 40u);
    EXPECT_EQ(store.count("CIVILAIDE"), s->summary.aides);
    EXPECT_EQ(store.count("SSIADELEMGEST"), s->summary.elements);
    EXPECT_EQ(store.count("SSIADCARACTTOURNEE"), s->summary.tournees);
    EXPECT_EQ(store.count("SSIADSOINS"), s->summary.soins);
    EXPECT_EQ(store.count("SSIADACCORDS"), s->summary.accords);
    EXPECT_EQ(store.count("SSIADPROTOCOLE"), s->summary.protocoles);
    EXPECT_EQ(store.count("SSIADTOURNEE"), s->summary.interventions);
    EXPECT_GE(s->summary.soins, 12u);
}

TEST(DemoData, DefaultTourneesCoverEveryWeekdayMorningAndEvening) {
    auto s = generate(options(40, 60));
    std::set<char> types;
    std::set<std::pair<int, bool>> covered;  // weekday, morning
    int pairs = 0, deleted = 0;
    for (const auto& [code, t] : s->records("SSIADCARACTTOURNEE")) {
        ASSERT_EQ(code.size(), 3u);
        EXPECT_EQ(base::UCase(t(1)), t(1)) << code;
        EXPECT_GE(t.DCount(8), 1) << code;
        deleted += t(9) == "1" ? 1 : 0;
        EXPECT_TRUE(t(9).empty() || t(9) == "1") << code;
        pairs += t(10) == "2" ? 1 : 0;
        EXPECT_TRUE(t(10).empty() || t(10) == "2") << code;
        if (t(9) == "1") continue;
        types.insert(t(7).at(0));
        EXPECT_LT(tourneeStart(t), tourneeEnd(t)) << code;
        covered.insert({number(t(2)), number(t(3)) < 12});
    }
    EXPECT_EQ(types, (std::set<char>{'I', 'M', 'S'}));
    EXPECT_EQ(pairs, 1);
    EXPECT_EQ(deleted, 1);
    for (int weekday = 0; weekday < 7; ++weekday) {
        EXPECT_TRUE(covered.count({weekday, true})) << "matin " << weekday;
        EXPECT_TRUE(covered.count({weekday, false})) << "soir " << weekday;
    }
}

TEST(DemoData, DefaultAidesHaveOneSuspensionAbsencesAndVariedCare) {
    auto s = generate(options(40, 60));
    const int today = day(22, 11, 2026).internalDay();
    int suspended = 0, expired = 0, future = 0;
    for (const auto& [key, a] : s->records("SSIADACCORDS")) {
        suspended += a(3) == "S" ? 1 : 0;
        expired += number(a(2)) < today ? 1 : 0;
        future += number(a(1)) > today ? 1 : 0;
    }
    EXPECT_EQ(suspended, 1);
    EXPECT_GE(expired, 1);
    EXPECT_GE(future, 1);
    int absentNow = 0, absentBefore = 0;
    for (const auto& [code, aide] : s->records("CIVILAIDE")) {
        EXPECT_FALSE(aide(2).empty());
        EXPECT_EQ(aide(10).size(), 5u);
        for (int v = 1; v <= aide.DCount(20); ++v) {
            EXPECT_LE(number(aide(20, v)), number(aide(21, v)));
            absentNow += number(aide(21, v)) >= today && number(aide(20, v)) <= today + 3 ? 1 : 0;
            absentBefore += number(aide(21, v)) < today ? 1 : 0;
        }
    }
    EXPECT_GE(absentNow, 2);
    EXPECT_GE(absentBefore, 1);
    Records soins = s->records("SSIADSOINS");
    std::set<char> kinds;
    int twoPeople = 0, ended = 0, someDays = 0;
    for (const auto& [key, p] : s->records("SSIADPROTOCOLE")) {
        kinds.insert(kindOf(p, soins));
        twoPeople += p(5) == "2" ? 1 : 0;
        ended += !p(7).empty() && number(p(7)) < today ? 1 : 0;
        someDays += p.DCount(1) > 0 ? 1 : 0;
    }
    EXPECT_EQ(kinds, (std::set<char>{'A', 'I', 'M'}));
    EXPECT_GE(twoPeople, 1);
    EXPECT_GE(ended, 1);
    EXPECT_GE(someDays, 1);
}

// Every record must be one the screen can show as it is: these are the links it follows.
class DemoConsistency : public ::testing::TestWithParam<DemoOptions> {};

TEST_P(DemoConsistency, ProtocolesAccordsAndSectorsHangTogether) {
    auto s = generate(GetParam());
    Records aides = s->records("CIVILAIDE"), elements = s->records("SSIADELEMGEST"),
            soins = s->records("SSIADSOINS");
    std::set<std::string> sectors;
    for (const auto& [code, t] : s->records("SSIADCARACTTOURNEE")) {
        for (int v = 1; t(9).empty() && v <= t.DCount(8); ++v)
            sectors.insert(t(8, v));
    }
    for (const auto& [key, e] : elements) {
        EXPECT_TRUE(aides.count(key.substr(0, 5))) << key;
        EXPECT_TRUE(sectors.count(e(23))) << key << " secteur " << e(23);
    }
    for (const auto& [key, a] : s->records("SSIADACCORDS")) {
        ASSERT_EQ(key.size(), 14u);
        EXPECT_TRUE(elements.count(key.substr(0, 5) + key.substr(8, 6))) << key;
        EXPECT_LE(number(a(1)), number(a(2))) << key;
    }
    std::map<std::string, int> lastOfSequence;  // CodeAide + sequence -> last day of the previous one
    for (const auto& [key, p] : s->records("SSIADPROTOCOLE")) {
        ASSERT_EQ(key.size(), 21u);
        // A revision ends the old protocole the day before the new one starts: never both at once.
        std::string sequence = key.substr(0, 5) + key.substr(16, 1);
        if (lastOfSequence.count(sequence)) {
            EXPECT_LT(lastOfSequence[sequence], number(p(6))) << key;
        }
        lastOfSequence[sequence] = p(7).empty() ? 99999 : number(p(7));
        const std::string element = key.substr(0, 5) + key.substr(10, 6);
        ASSERT_TRUE(elements.count(element)) << key;
        // The assignment dialog reads the sector under the code joined to characters 1-5 and 9-14 of a
        // label's Tag, whose first 21 characters are this key: the same sector must be found there.
        const std::string forAssignment = key.substr(0, 5) + key.substr(0, 5) + key.substr(8, 6);
        ASSERT_TRUE(elements.count(forAssignment)) << key;
        EXPECT_EQ(elements.at(forAssignment)(23), elements.at(element)(23)) << key;
        EXPECT_EQ(key.substr(5, 5), p(6)) << key;
        EXPECT_EQ(p(2).size(), 4u) << key;
        EXPECT_LT(number(key.substr(17, 4)), number(p(2))) << key;
        EXPECT_EQ(number(p(4)) % 5, 0) << key;
        EXPECT_GE(p.DCount(3), 1) << key;
        for (int v = 1; v <= p.DCount(3); ++v)
            EXPECT_TRUE(soins.count(p(3, v))) << key;
    }
}

TEST_P(DemoConsistency, SavedInterventionsFitTheirProtocoleAndTournee) {
    const DemoOptions& o = GetParam();
    auto s = generate(o);
    Records tournees = s->records("SSIADCARACTTOURNEE"), protocoles = s->records("SSIADPROTOCOLE");
    Records elements = s->records("SSIADELEMGEST"), aides = s->records("CIVILAIDE"),
            soins = s->records("SSIADSOINS");
    Records accords = s->records("SSIADACCORDS");
    const int today = o.today.internalDay();
    int outside = 0;
    for (const auto& [key, r] : s->records("SSIADTOURNEE")) {
        ASSERT_EQ(key.size(), 17u);
        const mvdb::DynamicRecord& t = tournees.at(key.substr(0, 3));
        ASSERT_TRUE(protocoles.count(r(2))) << key;
        const mvdb::DynamicRecord& p = protocoles.at(r(2));
        std::string codeAide = key.substr(3, 5);
        int internalDay = number(key.substr(8, 5)), start = number(key.substr(13, 4)), end = number(r(1));
        EXPECT_EQ(r(2).substr(0, 5), codeAide) << key;
        EXPECT_TRUE(t(9).empty()) << key;
        EXPECT_EQ(number(t(2)) + 1, base::Date::fromInternal(internalDay).weekday()) << key;
        EXPECT_TRUE(internalDay >= today - o.historyDays && internalDay <= today + 2) << key;
        EXPECT_TRUE(inForce(p, internalDay)) << key;
        EXPECT_TRUE(hasValue(t, 8, elements.at(codeAide + r(2).substr(10, 6))(23))) << key;
        EXPECT_TRUE(t(7) != "S" || kindOf(p, soins) == 'A') << key;
        EXPECT_TRUE(t(10) != "2" || p(5) == "2") << key;
        EXPECT_EQ(r(1).size(), 4u) << key;
        EXPECT_NEAR(end - start, number(p(4)) * 100.0 / 60, 0.5) << key;
        EXPECT_TRUE(start >= tourneeStart(t) && end <= tourneeEnd(t)) << key;
        const mvdb::DynamicRecord& aide = aides.at(codeAide);
        for (int v = 1; v <= aide.DCount(20); ++v) {
            EXPECT_FALSE(number(aide(20, v)) <= internalDay && internalDay <= number(aide(21, v))) << key;
        }
        EXPECT_TRUE(coveredByAccord(accords, codeAide, internalDay, today)) << key;
        outside += start < number(r(2).substr(17, 4)) || end > number(p(2)) ? 1 : 0;
    }
    EXPECT_LE(outside, 1);
}

INSTANTIATE_TEST_SUITE_P(Sizes, DemoConsistency,
                         ::testing::Values(options(40, 60), options(1, 14), options(7, 21, 5),
                                           options(150, 30, 9)));

TEST(DemoData, HistoryHoldsPastDaysAFewDaysAheadAndOneAnomaly) {
    auto s = generate(options(40, 60));
    const int today = day(22, 11, 2026).internalDay();
    std::map<std::string, int> latest;  // tournée -> latest saved day
    std::set<int> days;
    int anomalies = 0, anomaliesAhead = 0;
    Records protocoles = s->records("SSIADPROTOCOLE");
    for (const auto& [key, r] : s->records("SSIADTOURNEE")) {
        int d = number(key.substr(8, 5));
        days.insert(d);
        latest[key.substr(0, 3)] = std::max(latest[key.substr(0, 3)], d);
        if (number(key.substr(13, 4)) < number(r(2).substr(17, 4)) ||
            number(r(1)) > number(protocoles.at(r(2))(2))) {
            ++anomalies;
            anomaliesAhead += d >= today ? 1 : 0;
        }
    }
    EXPECT_TRUE(days.count(today - 60) || days.count(today - 59));
    EXPECT_GT(std::count_if(days.begin(), days.end(), [&](int d) { return d > today; }), 0);
    // A tournée last saved a week or more ago is shown today from that older version.
    EXPECT_TRUE(
        std::any_of(latest.begin(), latest.end(), [&](const auto& l) { return l.second < today - 6; }));
    EXPECT_GT(s->summary.interventions, 40u * 60 / 7);
    EXPECT_EQ(anomalies, 1);
    EXPECT_EQ(anomaliesAhead, 1);
}

TEST(DemoData, RefusesADatabaseThatHoldsAService) {
    for (const std::string file : {"CIVILAIDE", "SSIADCARACTTOURNEE"}) {
        Service s(day(22, 11, 2026));
        s.database.store().write(file, file == "CIVILAIDE" ? "00001" : "001", "DUPONT");
        try {
            writeDemoService(s.database, options(40, 60));
            ADD_FAILURE() << file;
        } catch (const base::Error& e) {
            EXPECT_EQ(e.code(), base::codes::kBadData);
            EXPECT_STREQ(e.what(), "La base contient déjà un service : demo-data ne l'écrase pas");
        }
        for (const std::string& other : kFiles)
            EXPECT_EQ(s.database.store().count(other), other == file ? 1u : 0u);
        EXPECT_FALSE(s.database.store().inTransaction());
    }
}

TEST(DemoData, RefusesOptionsOutOfRangeAndWritesNothing) {
    for (const DemoOptions& bad : {options(0, 60), options(100000, 60), options(40, -1), DemoOptions{}}) {
        Service s(day(22, 11, 2026));
        EXPECT_THROW(writeDemoService(s.database, bad), base::Error);
        for (const std::string& file : kFiles)
            EXPECT_EQ(s.database.store().count(file), 0u);
    }
}

TEST(DemoData, TourneeListQueryGivesTheLiveTourneesByLabel) {
    auto s = generate(options(40, 60));
    std::vector<std::string> expected;
    std::string pairCode;
    for (const auto& [code, t] : s->records("SSIADCARACTTOURNEE")) {
        if (t(9) != "1") expected.push_back(t(1) + "|" + code);
        if (t(10) == "2") pairCode = code;
    }
    std::sort(expected.begin(), expected.end());
    mvdb::DynamicRecord request;
    request.set(1, "SELECT SSIADCARACTTOURNEE AVEC 1 = \"]\" AND AVEC 9 <> \"1\" PAR 1");
    request.set(2, "SSIADCARACTTOURNEE");
    request.set(3, "0 1 10");
    mvdb::DynamicRecord reply = s->database.Query(request.text());
    ASSERT_EQ(reply.DCount(), static_cast<std::int64_t>(expected.size()));
    for (std::size_t i = 0; i < expected.size(); ++i) {
        auto row = static_cast<std::int64_t>(i) + 1;
        EXPECT_EQ(reply(row, 2) + "|" + reply(row, 1), expected[i]) << row;
        EXPECT_EQ(reply(row, 3), reply(row, 1) == pairCode ? "2" : "") << row;
    }
}

TEST(DemoData, LabelPrefixFindsOnlyThatKindOfTournee) {
    auto s = generate(options(40, 60));
    mvdb::DynamicRecord request;
    request.set(1, "SELECT SSIADCARACTTOURNEE AVEC 1 = \"INFIRMIER MATIN]\" AND AVEC 9 <> \"1\" PAR 1");
    request.set(2, "SSIADCARACTTOURNEE");
    request.set(3, "0 1 10");
    mvdb::DynamicRecord reply = s->database.Query(request.text());
    ASSERT_GE(reply.DCount(), 7);
    for (std::int64_t row = 1; row <= reply.DCount(); ++row)
        EXPECT_EQ(reply(row, 2).rfind("INFIRMIER MATIN ", 0), 0u);
}

}  // namespace
}  // namespace app
