#pragma once

#include "base/date.h"

namespace base {

// Where today and the time of day come from, so that a test or `--today` can fix the day.
class Clock {
public:
    virtual ~Clock() = default;
    virtual Date today() const = 0;
    // Seconds since midnight, local time.
    virtual int secondsOfDay() const = 0;
};

// The computer's local date and time; the day can be pinned while the time runs on.
class SystemClock : public Clock {
public:
    SystemClock() = default;
    explicit SystemClock(Date pinnedToday) : m_pinned(pinnedToday), m_isPinned(true) {}
    Date today() const override;
    int secondsOfDay() const override;

private:
    Date m_pinned = Date::fromInternal(0);
    bool m_isPinned = false;
};

// A fixed day and time, for tests.
class FixedClock : public Clock {
public:
    FixedClock(Date today, int secondsOfDay) : m_today(today), m_seconds(secondsOfDay) {}
    Date today() const override { return m_today; }
    int secondsOfDay() const override { return m_seconds; }
    void setToday(Date today) { m_today = today; }

private:
    Date m_today;
    int m_seconds;
};

}  // namespace base
