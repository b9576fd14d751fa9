#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace base {

// A calendar day of the Gregorian calendar. Internal day numbers count days from 31/12/1967
// (1/1/1968 is day 1; 22/11/2026 is 21511), which gives five digits for every date in use.
class Date {
public:
    // The day, or nullopt when it does not exist (31/02, month 13, year outside 1..9999).
    static std::optional<Date> fromDmy(int day, int month, int year);
    static Date fromInternal(int internalDay);
    // Reads "d/m/yyyy" (one or two digits for day and month, four for the year). Anything else: nullopt.
    static std::optional<Date> parse(std::string_view text);

    int day() const;
    int month() const;
    int year() const;
    // 1 Monday to 7 Sunday.
    int weekday() const;
    int internalDay() const { return m_internal; }

    Date addDays(int days) const { return Date(m_internal + days); }
    // Calendar months, the day clamped to the end of a shorter month (31/03 minus one month is 28/02 or
    // 29/02).
    Date addMonths(int months) const;
    Date addYears(int years) const { return addMonths(12 * years); }

    // "dd/mm/yyyy".
    std::string text() const;
    // "dddd d mmmm yyyy" in French: "dimanche 22 novembre 2026".
    std::string longText() const;

    auto operator<=>(const Date&) const = default;

private:
    explicit Date(int internalDay) : m_internal(internalDay) {}
    int m_internal;
};

// French names, 1 Monday to 7 Sunday and 1 January to 12 December, in lower case.
std::string_view weekdayName(int weekday);
std::string_view monthName(int month);

}  // namespace base
