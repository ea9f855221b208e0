#pragma once

#include "schedule/DayCache.h"
#include "schedule/EntryKey.h"
#include "schedule/UpcomingGroup.h"

#include <array>

namespace korvex::schedule {

/// The sections of Upcoming at one moment in one zone: where their days begin is asked once, and
/// to place a todo is to compare instants. Main thread.
class UpcomingSections {
public:
    UpcomingSections(base::Instant now, const base::TimeZone& zone);
    UpcomingSections(const UpcomingSections&) = delete;
    UpcomingSections& operator=(const UpcomingSections&) = delete;

    base::Instant now() const { return m_now; }
    /// Moves on within today; false when that day is over, or was not yet: then nothing changes.
    bool moveTo(base::Instant now);

    /// Where a todo stands, be it completed or not: who wants the open ones asks for those only.
    /// Absent for what has no date, is no todo or stands on no active board.
    std::optional<EntryKey> keyOf(const model::Entry& entry);

private:
    std::optional<base::Instant> effectiveDate(const model::Entry& entry);
    UpcomingSection section(const model::Entry& entry, base::Instant effectiveDate) const;

    base::Calendar m_calendar;
    DayCache m_days;
    base::Instant m_now;
    /// Zero, before every day, when the calendar has no today.
    base::DayNumber m_todayNumber = 0;
    base::DateInterval m_today;
    /// Where the days begin that are 4, 8 and 15 days away. Never, when the calendar cannot say.
    std::array<base::Instant, 3> m_starts;
};

/// The section of an upcoming todo's key, with no todos in it yet.
UpcomingGroup emptySectionGroup(std::uint64_t key);

} // namespace korvex::schedule
