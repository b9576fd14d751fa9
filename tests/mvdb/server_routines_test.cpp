#include "mvdb/server_routines.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "support/memory_database.h"

namespace {

// 22/11/2026 is internal day 21511, a Sunday; 23/11/2026 (21512) is a Monday.
class ServerRoutinesTest : public ::testing::Test {
protected:
    void SetUp() override {
        m.put("SSIADSOINS", "S01", {"Injection", "", "", "", "O"});
        m.put("SSIADSOINS", "S02", {"Toilette", "", "", "", ""});
        m.put("SSIADSOINS", "S03", {"Pansement", "", "", "", "O"});
        // Protocoles of aidé 00012: weekdays, end bound, soins, duration, intervenants, first, last day.
        m.put("SSIADPROTOCOLE", "000122140000000110750",
              {"1|3|5", "0900", "S01|S03", "15", "1", "21400", ""});
        m.put("SSIADPROTOCOLE", "000122140000000120700", {"", "0800", "S02", "30", "2", "21400", ""});
        m.put("SSIADPROTOCOLE", "000122140000000131700",
              {"7", "1900", "S01|S02", "20", "1", "21400", "21511"});
        m.put("SSIADPROTOCOLE", "000122150000000141800", {"", "2000", "S09", "20", "1", "21520", ""});
        m.put("SSIADPROTOCOLE", "000132140000000110750", {"", "0900", "S01", "15", "1", "21400", ""});
        m.put("CIVILAIDE", "00012", {"", "MARTIN", "Hélène"});
        m.put("CIVILAIDE", "00013",
              {"", "ROUX", "Paul",        "",           "", "", "", "", "", "", "", "", "", "", "", "", "",
               "", "",     "21500|21530", "21505|21540"});
        m.put("SSIADACCORDS", "00012001000001", {"21400", "21600", "A"});
        m.put("SSIADACCORDS", "00012002000001", {"21400", "21600", "S"});
    }

    // The rows of the program's reply for an aidé and a day: one text per row, its six columns joined.
    std::vector<std::string> rows(const std::string& codeAide, const std::string& day) {
        mvdb::DynamicRecord request;
        request.set(1, "AFFICHEPROTOCSSIAD |MARIE083000||S|" + day + "|" + day + "|||" + codeAide + "|AA|");
        m.db->RunProgram(request.text());
        std::optional<std::string> text = m.db->store().read("TPSTEMPO", "MARIE083000AFFICHEPROTOCSSIAD");
        EXPECT_TRUE(text.has_value());
        mvdb::DynamicRecord reply(text.value_or(""));
        std::vector<std::string> out;
        for (std::int64_t row = 1; !reply(1, 1, row).empty(); ++row) {
            std::string line;
            for (std::int64_t column = 1; column <= 6; ++column)
                line += (column > 1 ? " " : "") + reply(1, column, row);
            out.push_back(line);
        }
        return out;
    }

    testing_support::MemoryDatabase m;
};

TEST_F(ServerRoutinesTest, ExpandsTheProtocolesOfADay) {
    struct Case {
        const char* name;
        std::string codeAide, day;
        std::vector<std::string> expected;
    } cases[] = {
        {"a Monday: weekday list and every-day protocole",
         "00012",
         "21512",
         {"IntervS 0750 0900 000122140000000110750 15 I", "IntervS 0700 0800 000122140000000120700 30 A"}},
        {"a Sunday: the Sunday protocole, mixed soins",
         "00012",
         "21511",
         {"IntervS 0700 0800 000122140000000120700 30 A", "IntervS 1700 1900 000122140000000131700 20 M"}},
        {"a Sunday after the Sunday protocole ended; another not yet begun",
         "00012",
         "21518",
         {"IntervS 0700 0800 000122140000000120700 30 A"}},
        {"a protocole begun, its soin missing from SSIADSOINS",
         "00012",
         "21520",
         {"IntervS 0700 0800 000122140000000120700 30 A", "IntervS 1800 2000 000122150000000141800 20 A"}},
        {"absent on that day", "00013", "21505", {"AbsAide     "}},
        {"between two absences", "00013", "21510", {"IntervS 0750 0900 000132140000000110750 15 I"}},
        {"an aidé without protocole", "00099", "21511", {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(rows(c.codeAide, c.day), c.expected);
    }
}

// Days that are not days cannot say whether a protocole is in force nor whether an aidé is away: the
// protocole is passed on for the screen to name, the absence counts for nothing.
TEST_F(ServerRoutinesTest, PassesOnProtocolesWhoseDaysMakeNoSenseAndIgnoresSuchAbsences) {
    m.put("SSIADPROTOCOLE", "000142140000000110800", {"2", "0900", "S02", "30", "1", "21x00", ""});
    m.put("SSIADPROTOCOLE", "000142140000000121000", {"", "1100", "S02", "30", "1", "21600", "21500"});
    m.put("SSIADPROTOCOLE", "000142140000000131200", {"", "1300", "S02", "30", "1", "21600", ""});
    m.put("CIVILAIDE", "00014", {"", "BLANC", "Léa", "", "", "", "", "", "",      "",     "",
                                 "", "",      "",    "", "", "", "", "", "2150a", "21520"});
    EXPECT_EQ(rows("00014", "21511"), (std::vector<std::string>{
                                          "IntervS 0800 0900 000142140000000110800 30 A",
                                          "IntervS 1000 1100 000142140000000121000 30 A",
                                      }));
}

TEST_F(ServerRoutinesTest, RefusesACommandLineItCannotRead) {
    mvdb::DynamicRecord request;
    request.set(1, "AFFICHEPROTOCSSIAD |X|");
    EXPECT_THROW(m.db->RunProgram(request.text()), base::Error);
    request.set(1, "NOPROGRAM |X");
    try {
        m.db->RunProgram(request.text());
        ADD_FAILURE();
    } catch (const base::Error& e) {
        EXPECT_EQ(std::string(e.what()), "Programme inconnu du serveur : « NOPROGRAM »");
    }
}

TEST_F(ServerRoutinesTest, PeriodeActiveAnswersOneOnlyForAnActiveAccord) {
    struct Case {
        const char* name;
        std::string key, first, last, expected;
    } cases[] = {
        {"active", "00012001000001", "21400", "21600", "1"},
        {"suspended", "00012002000001", "21400", "21600", "0"},
        {"no such accord", "00012003000001", "21400", "21600", "0"},
        {"first day after last day", "00012001000001", "21601", "21600", "0"},
        {"one-day period", "00012001000001", "21600", "21600", "1"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        mvdb::DynamicRecord args;
        args.set(1, c.key);
        args.set(2, c.first);
        args.set(3, c.last);
        args.set(4, "E");
        args.set(5, "SA");
        EXPECT_EQ(m.db->CallSubroutine("SSIADPERIODEACTIVE", args.text()).text(), c.expected);
    }
}

}  // namespace
