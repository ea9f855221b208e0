#pragma once

#include "base/Calendar.h"

#include <array>
#include <map>
#include <memory>
#include <optional>

namespace korvex::schedule {

/// What the calendar says of days, asked once a day: it takes microseconds for each answer, and
/// many todos share few days. Main thread; the calendar must outlive it.
class DayCache {
public:
    explicit DayCache(const base::Calendar& calendar) : m_calendar(calendar) {}

    const base::Calendar& calendar() const { return m_calendar; }

    /// The effective date of a due day: its noon; absent when it is no day.
    std::optional<base::Instant> effectiveDate(base::DayNumber dueDay);
    /// Whether the day of `instant` comes after the due day.
    bool isAfter(base::Instant instant, base::DayNumber dueDay);

    /// The start of the day that `instant` lies in; what no calendar has stays as it is.
    base::Instant startOfDay(base::Instant instant);

private:
    struct DueDay {
        /// Zero while the place is free: no day has that number.
        base::DayNumber number = 0;
        std::optional<base::Instant> noon;
        /// Where the next day starts; absent for a number that is no day.
        std::optional<base::Instant> end;
    };
    /// Days of about eleven years have places of their own; others take each other's.
    static constexpr std::size_t kDueDays = 4096;

    const DueDay& dueDay(base::DayNumber number);

    const base::Calendar& m_calendar;
    std::unique_ptr<std::array<DueDay, kDueDays>> m_dueDays;
    /// The end of each known day, by its start.
    std::map<base::Instant, base::Instant> m_days;
    /// The day of the last answer: the next one's is mostly the same.
    base::DateInterval m_lastDay;
};

} // namespace korvex::schedule
