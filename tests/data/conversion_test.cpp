#include "data/conversion.h"

#include <gtest/gtest.h>

#include "base/clock.h"

namespace {

TEST(ObjetConversion, NormaliserDateCompletesTypedDates) {
    base::FixedClock clock(*base::Date::fromDmy(22, 11, 2026), 0);
    data::ObjetConversion conversion(clock);
    struct Case {
        const char* name;
        std::string typed;
        std::string expected;  // empty: the date must be typed again, and the text comes back
    } cases[] = {
        {"letters", "demain", ""},
        {"empty", "", ""},
        {"no such day", "31/02/2026", ""},
        {"month 13", "1/13", ""},
        {"three-digit year", "1/2/202", ""},
        {"five digits", "12345", ""},
        {"blank inside", "1/ 2", ""},
        {"day and month", "5/3", "05/03/2026"},
        {"two-digit year", "5/3/27", "05/03/2027"},
        {"full", "30/11/2026", "30/11/2026"},
        {"ddmm", "0503", "05/03/2026"},
        {"ddmmyy", "050327", "05/03/2027"},
        {"ddmmyyyy", "29022028", "29/02/2028"},
        {"29 February of a common year", "2902", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        std::string result = conversion.NormaliserDate(c.typed);
        EXPECT_EQ(conversion.LireOptionDate(), c.expected.empty());
        EXPECT_EQ(result, c.expected.empty() ? c.typed : c.expected);
    }
}

TEST(ObjetConversion, InternalDaysAndNumbers) {
    base::FixedClock clock(*base::Date::fromDmy(22, 11, 2026), 0);
    data::ObjetConversion conversion(clock);
    EXPECT_EQ(conversion.DateInterne(std::string_view("22/11/2026")), "21511");
    EXPECT_EQ(conversion.DateInterne(std::string_view("01/01/1990")), "08037")
        << "five digits keep text order";
    EXPECT_EQ(conversion.DateInterne(std::string_view("32/11/2026")), "");
    EXPECT_EQ(conversion.DateDepuisInterne("21512"), "23/11/2026");
    EXPECT_EQ(conversion.DateDepuisInterne("x"), "");
    EXPECT_EQ(conversion.FormaterNombre("12.5", 2), "12,50");
    EXPECT_EQ(conversion.FormaterNombre("8,333", 2), "8,33");
}

}  // namespace
