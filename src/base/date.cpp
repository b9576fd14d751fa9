#include "base/date.h"

#include <array>
#include <cstdint>

#include "base/text.h"

namespace base {

namespace {

// Days from 1/1/1970 to the internal origin 31/12/1967, which is day 0.
constexpr std::int64_t kOriginFrom1970 = -732;

struct Civil {
    std::int64_t year;
    int month;
    int day;
};

// Howard Hinnant's days_from_civil: days since 1/1/1970 of a proleptic Gregorian date. Years are
// shifted to start in March so that the leap day falls at the end of the counting year.
std::int64_t daysFromCivil(std::int64_t year, int month, int day) {
    year -= month <= 2;
    const std::int64_t era = (year >= 0 ? year : year - 399) / 400;
    const std::int64_t yearOfEra = year - era * 400;
    const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

// The inverse of daysFromCivil.
Civil civilFromDays(std::int64_t days) {
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const std::int64_t dayOfEra = days - era * 146097;
    const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int day = static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    const int month = static_cast<int>(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    return {yearOfEra + era * 400 + (month <= 2), month, day};
}

bool isLeapYear(std::int64_t year) {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

int daysInMonth(std::int64_t year, int month) {
    static constexpr std::array<int, 12> kDays = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : kDays[static_cast<std::size_t>(month - 1)];
}

Civil civilOf(int internalDay) {
    return civilFromDays(internalDay + kOriginFrom1970);
}

int internalOf(std::int64_t year, int month, int day) {
    return static_cast<int>(daysFromCivil(year, month, day) - kOriginFrom1970);
}

// Reads one run of digits of `minLength` to `maxLength` characters at `pos`, followed by `end`
// (or by the end of the text when `end` is 0).
std::optional<int> readField(std::string_view text, std::size_t& pos, std::size_t minLength,
                             std::size_t maxLength, char end) {
    int value = 0;
    std::size_t length = 0;
    for (; pos < text.size() && text[pos] >= '0' && text[pos] <= '9'; ++pos, ++length) {
        if (length == maxLength) return std::nullopt;
        value = value * 10 + (text[pos] - '0');
    }
    if (length < minLength) return std::nullopt;
    if (end == 0) return pos == text.size() ? std::optional<int>(value) : std::nullopt;
    if (pos == text.size() || text[pos] != end) return std::nullopt;
    ++pos;
    return value;
}

}  // namespace

std::optional<Date> Date::fromDmy(int day, int month, int year) {
    if (year < 1 || year > 9999 || month < 1 || month > 12) return std::nullopt;
    if (day < 1 || day > daysInMonth(year, month)) return std::nullopt;
    return Date(internalOf(year, month, day));
}

Date Date::fromInternal(int internalDay) {
    return Date(internalDay);
}

std::optional<Date> Date::parse(std::string_view text) {
    std::size_t pos = 0;
    const auto day = readField(text, pos, 1, 2, '/');
    if (!day) return std::nullopt;
    const auto month = readField(text, pos, 1, 2, '/');
    if (!month) return std::nullopt;
    const auto year = readField(text, pos, 4, 4, 0);
    if (!year) return std::nullopt;
    return fromDmy(*day, *month, *year);
}

int Date::day() const {
    return civilOf(m_internal).day;
}
int Date::month() const {
    return civilOf(m_internal).month;
}
int Date::year() const {
    return static_cast<int>(civilOf(m_internal).year);
}

int Date::weekday() const {
    // 1/1/1970 was a Thursday, day 4 of the week.
    const std::int64_t days = m_internal + kOriginFrom1970;
    return static_cast<int>(((days + 3) % 7 + 7) % 7) + 1;
}

Date Date::addMonths(int months) const {
    const Civil civil = civilOf(m_internal);
    const std::int64_t total = civil.year * 12 + (civil.month - 1) + months;
    const std::int64_t year = (total >= 0 ? total : total - 11) / 12;
    const int month = static_cast<int>(total - year * 12) + 1;
    const int lastDay = daysInMonth(year, month);
    return Date(internalOf(year, month, civil.day < lastDay ? civil.day : lastDay));
}

std::string Date::text() const {
    const Civil civil = civilOf(m_internal);
    return zeroPad(civil.day, 2) + "/" + zeroPad(civil.month, 2) + "/" + zeroPad(civil.year, 4);
}

std::string Date::longText() const {
    const Civil civil = civilOf(m_internal);
    std::string text(weekdayName(weekday()));
    text += ' ';
    text += std::to_string(civil.day);
    text += ' ';
    text += monthName(civil.month);
    text += ' ';
    text += std::to_string(civil.year);
    return text;
}

std::string_view weekdayName(int weekday) {
    static constexpr std::array<std::string_view, 7> kNames = {"lundi",    "mardi",  "mercredi", "jeudi",
                                                               "vendredi", "samedi", "dimanche"};
    return weekday >= 1 && weekday <= 7 ? kNames[static_cast<std::size_t>(weekday - 1)] : std::string_view();
}

std::string_view monthName(int month) {
    static constexpr std::array<std::string_view, 12> kNames = {
        "janvier", "février", "mars",      "avril",   "mai",      "juin",
        "juillet", "août",    "septembre", "octobre", "novembre", "décembre"};
    return month >= 1 && month <= 12 ? kNames[static_cast<std::size_t>(month - 1)] : std::string_view();
}

}  // namespace base
