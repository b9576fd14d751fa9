#include "base/clock.h"

#include <ctime>

namespace base {

namespace {

std::tm localNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local;
}

}  // namespace

Date SystemClock::today() const {
    if (m_isPinned) return m_pinned;
    const std::tm local = localNow();
    // The C library only gives days that exist; the fallback is there for a failed localtime_r.
    return Date::fromDmy(local.tm_mday, local.tm_mon + 1, local.tm_year + 1900)
        .value_or(Date::fromInternal(0));
}

int SystemClock::secondsOfDay() const {
    const std::tm local = localNow();
    // A leap second (tm_sec 60) stays within the day.
    const int seconds = local.tm_hour * 3600 + local.tm_min * 60 + local.tm_sec;
    return seconds < 86400 ? seconds : 86399;
}

}  // namespace base
