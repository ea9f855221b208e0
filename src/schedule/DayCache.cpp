#include "schedule/DayCache.h"

#include "base/DayArithmetic.h"
#include "model/TodoSchedule.h"

namespace korvex::schedule {

const DayCache::DueDay& DayCache::dueDay(base::DayNumber number) {
    if (!m_dueDays) {
        m_dueDays = std::make_unique<std::array<DueDay, kDueDays>>();
    }
    // Neighbouring days have neighbouring places.
    const auto year = number / 10'000;
    const auto month = number / 100 % 100;
    const auto place = (year * 12 + month) * 31 + number % 100;
    auto& known = (*m_dueDays)[static_cast<std::uint64_t>(place) % kDueDays];
    if (known.number != number) {
        known = {.number = number,
                 .noon = model::TodoSchedule::dueOn(number).effectiveDate(m_calendar),
                 .end = std::nullopt};
        if (const auto civil = base::civilDayOfNumber(number)) {
            const auto next = base::civilDay(*base::daysSince1970(*civil) + 1);
            known.end =
                m_calendar.instant({.year = next.year, .month = next.month, .day = next.day});
        }
    }
    return known;
}

std::optional<base::Instant> DayCache::effectiveDate(base::DayNumber number) {
    // A stored number can be anything; zero is no day, and marks a free place.
    return number > 0 ? dueDay(number).noon : std::nullopt;
}

bool DayCache::isAfter(base::Instant instant, base::DayNumber number) {
    if (number > 0) {
        if (const auto& known = dueDay(number); known.end) {
            return instant >= *known.end;
        }
    }
    const auto day = m_calendar.day(instant);
    return day && *day > number;
}

base::Instant DayCache::startOfDay(base::Instant instant) {
    if (m_lastDay.contains(instant)) {
        return m_lastDay.start;
    }
    if (const auto next = m_days.upper_bound(instant); next != m_days.begin()) {
        const auto& [start, end] = *std::prev(next);
        if (instant < end) {
            m_lastDay = {start, end};
            return start;
        }
    }
    using base::CalendarPeriod;
    auto day = m_calendar.interval(CalendarPeriod::day, instant);
    if (day && instant >= day->end) {
        // Clocks that were set back over midnight show the last hour of a day after it has ended.
        day = m_calendar.interval(CalendarPeriod::day, day->end);
    }
    if (!day) {
        return m_calendar.startOfDay(instant).value_or(instant);
    }
    m_days.insert_or_assign(day->start, day->end);
    m_lastDay = *day;
    return day->start;
}

} // namespace korvex::schedule
