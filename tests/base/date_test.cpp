#include "base/date.h"

#include <gtest/gtest.h>

#include "base/clock.h"

namespace base {
namespace {

Date dmy(int day, int month, int year) {
    return Date::fromDmy(day, month, year).value();
}

TEST(Date, DayNumbersAndValidation) {
    EXPECT_EQ(dmy(31, 12, 1967).internalDay(), 0);
    EXPECT_EQ(dmy(1, 1, 1968).internalDay(), 1);
    EXPECT_EQ(dmy(22, 11, 2026).internalDay(), 21511);
    EXPECT_EQ(dmy(28, 2, 2100).addDays(1), dmy(1, 3, 2100));
    EXPECT_FALSE(Date::fromDmy(29, 2, 1900));
    EXPECT_FALSE(Date::fromDmy(31, 4, 2026));
    EXPECT_FALSE(Date::fromDmy(1, 13, 2026));
    EXPECT_FALSE(Date::fromDmy(1, 1, 0));
    EXPECT_EQ(dmy(29, 2, 2000).text(), "29/02/2000");
}

TEST(Date, ParseTakesOnlyDayMonthFourDigitYear) {
    const struct {
        const char* name;
        const char* text;
        std::optional<Date> expected;
    } rows[] = {
        {"two-digit year", "22/11/26", std::nullopt},   {"three-digit day", "022/11/2026", std::nullopt},
        {"blank", " 22/11/2026", std::nullopt},         {"trailing slash", "22/11/2026/", std::nullopt},
        {"impossible day", "30/02/2026", std::nullopt}, {"padded", "01/02/2027", dmy(1, 2, 2027)},
        {"short", "1/2/2027", dmy(1, 2, 2027)},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Date::parse(row.text), row.expected) << row.name;
}

TEST(Date, MonthsClampToTheMonthEnd) {
    EXPECT_EQ(dmy(31, 3, 2026).addMonths(-1), dmy(28, 2, 2026));
    EXPECT_EQ(dmy(29, 2, 2024).addYears(1), dmy(28, 2, 2025));
    EXPECT_EQ(dmy(15, 1, 2026).addMonths(-13), dmy(15, 12, 2024));
}

TEST(Date, TextsAndWeekdays) {
    const Date sunday = dmy(22, 11, 2026);
    EXPECT_EQ(sunday.weekday(), 7);
    EXPECT_EQ(sunday.addDays(1).weekday(), 1);
    EXPECT_EQ(dmy(1, 2, 27).text(), "01/02/0027");
    EXPECT_EQ(sunday.longText(), "dimanche 22 novembre 2026");
    EXPECT_EQ(dmy(1, 2, 2027).longText(), "lundi 1 février 2027");
    EXPECT_EQ(monthName(13), "");
}

TEST(SystemClock, PinnedDayAndRunningTime) {
    EXPECT_EQ(SystemClock(dmy(22, 11, 2026)).today(), dmy(22, 11, 2026));
    const int seconds = SystemClock().secondsOfDay();
    EXPECT_TRUE(seconds >= 0 && seconds < 86400) << seconds;
}

}  // namespace
}  // namespace base
