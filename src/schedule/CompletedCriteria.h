#pragma once

#include "base/Needle.h"
#include "schedule/CompletedFilter.h"
#include "schedule/DayCache.h"
#include "schedule/EntryKey.h"

#include <vector>

namespace korvex::schedule {

/// A filter made ready at one moment for many todos: its period computed, its query folded. All
/// that it is made of must outlive it. Main thread.
class CompletedCriteria {
public:
    CompletedCriteria(const CompletedFilter& filter, base::Instant now,
                      const base::Calendar& calendar, services::FoldedTexts& texts);
    CompletedCriteria(const CompletedCriteria&) = delete;
    CompletedCriteria& operator=(const CompletedCriteria&) = delete;

    /// Where a todo stands that meets every criterion but the query, the latest first; absent for
    /// any other. Its group is left out.
    std::optional<EntryKey> keyOf(const model::Entry& entry);
    /// To be asked last: it costs more than all the others.
    bool matchesQuery(const model::Entry& entry) const;

    DayCache& days() { return m_days; }

private:
    bool isInPeriod(const model::Entry& entry) const;
    bool isOnBoard(const model::Entry& entry) const;
    bool hasSchedule(const model::Entry& entry);
    bool isLate(const model::Entry& entry);

    const CompletedFilter& m_filter;
    services::FoldedTexts& m_texts;
    DayCache m_days;
    std::optional<base::DateInterval> m_interval;
    std::vector<base::Needle> m_terms;
};

/// The group of a completed todo's key: its day, the latest first.
std::uint64_t dayKey(const model::Entry& entry, DayCache& days);
/// The day of such a key, with no todos in it yet.
CompletedTodoGroup emptyDayGroup(std::uint64_t key);

} // namespace korvex::schedule
