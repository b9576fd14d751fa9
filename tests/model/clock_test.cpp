#include "model/clock.h"

#include <gtest/gtest.h>

#include "base/text.h"

namespace model {
namespace {

struct Row {
    const char* name;
    double value;
    const char* expected;  // as the system prints the result
};

TEST(ClockArithmetic, CentiemesVersHeureRoundsToFiveMinutes) {
    const Row rows[] = {
        {"23.99 carries to 24, not 0", 23.99, "24"},
        {"8.96 carries", 8.96, "9"},
        {"whole hour", 8.00, "8"},
        {"quarter", 8.25, "8,15"},
        {"half", 8.50, "8,3"},
        {"three quarters", 8.75, "8,45"},
        {"36 minutes to 35", 8.60, "8,35"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(base::numberText(CentiemesVersHeure(row.value)), row.expected) << row.name;
}

TEST(ClockArithmetic, HeureVersCentiemesWithoutRangeCheck) {
    const Row rows[] = {
        {"60 minutes not refused", 8.60, "9"},
        {"half", 8.30, "8,5"},
        {"five minutes, not rounded", 8.05, "8,08"},
        {"55 minutes", 6.55, "6,92"},
        {"4.5 minutes: the float quotient falls below the half", 8.045, "8,07"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(base::numberText(HeureVersCentiemes(row.value)), row.expected) << row.name;
}

TEST(ClockArithmetic, FiveMinuteStepsRoundTripExactly) {
    for (int hour = 0; hour < 24; ++hour) {
        for (int minute = 0; minute < 60; minute += 5) {
            const double time = (hour * 100 + minute) / 100.0;
            EXPECT_EQ(CentiemesVersHeure(HeureVersCentiemes(time)), time) << base::numberText(time);
        }
    }
}

}  // namespace
}  // namespace model
