#include "schedule/CompletedFilter.h"

#include "schedule/CompletedCriteria.h"

#include <algorithm>

namespace korvex::schedule {

namespace {

/// Whole days from the day of `first` to the day of `last`, both included.
base::DateInterval wholeDays(base::Instant first, base::Instant last,
                             const base::Calendar& calendar) {
    last = std::max(first, last);
    const auto start = calendar.startOfDay(first).value_or(first);
    const auto lastDay = calendar.interval(base::CalendarPeriod::day, last);
    return {.start = start, .end = std::max(start, lastDay ? lastDay->end : last)};
}

} // namespace

bool CompletedFilter::isActive() const {
    return !query.empty() || boardID || period != Period::any || schedule != Schedule::any ||
           boardStatus != BoardStatus::any;
}

std::optional<base::DateInterval> CompletedFilter::interval(base::Instant now,
                                                            const base::Calendar& calendar) const {
    switch (period) {
    case Period::any:
        return std::nullopt;
    case Period::today:
        return calendar.interval(base::CalendarPeriod::day, now);
    case Period::week:
        return calendar.interval(base::CalendarPeriod::week, now);
    case Period::month:
        return calendar.interval(base::CalendarPeriod::month, now);
    case Period::custom:
        return wholeDays(startDate, endDate, calendar);
    }
    return std::nullopt;
}

store::Condition CompletedFilter::condition(base::Instant now,
                                            const base::Calendar& calendar) const {
    using model::Entry;
    using store::Condition;
    using store::FieldReference;
    using store::Value;
    std::vector all{Entry::completedTodos()};
    if (boardID) {
        all.push_back(Entry::onBoard(*boardID));
    }
    if (const auto bounds = interval(now, calendar)) {
        const FieldReference completedAt{Entry::completedAtField};
        all.push_back(completedAt >= Value{bounds->start.seconds} &&
                      completedAt < Value{bounds->end.seconds});
    }
    const auto hasDue =
        Condition::isPresent(Entry::dueDayField) || Condition::isPresent(Entry::dueDateField);
    if (schedule != Schedule::any) {
        all.push_back(schedule == Schedule::noDueDate ? !hasDue : hasDue);
    }
    return Condition::all(std::move(all));
}

std::vector<model::Entry*> CompletedFilter::apply(std::span<model::Entry* const> entries,
                                                  base::Instant now, const base::Calendar& calendar,
                                                  services::FoldedTexts& texts) const {
    CompletedCriteria criteria(*this, now, calendar, texts);
    std::vector<KeyedEntry> shown;
    visitEntries(
        entries, [](const model::Entry* entry) { return entry; },
        [&](model::Entry* entry) {
            if (const auto key = criteria.keyOf(*entry)) {
                shown.push_back({*key, entry});
            }
        });
    // In a walk of its own the memory answers for several texts at once.
    std::vector<KeyedEntry> matching;
    matching.reserve(shown.size());
    visitEntries(
        shown, [](const KeyedEntry& each) { return each.entry; },
        [&](const KeyedEntry& each) {
            if (criteria.matchesQuery(*each.entry)) {
                matching.push_back(each);
            }
        });
    std::vector<model::Entry*> result;
    result.reserve(matching.size());
    for (const auto& each : inOrder(matching)) {
        result.push_back(each.entry);
    }
    return result;
}

base::Instant completionDate(const model::Entry& entry) {
    const auto completedAt = entry.completedAt();
    if (completedAt && completedAt->isValid()) {
        return *completedAt;
    }
    return entry.updatedAt().isValid() ? entry.updatedAt() : base::Instant::distantPast();
}

std::string_view title(CompletedFilter::Period period) {
    switch (period) {
    case CompletedFilter::Period::any:
        return "Any time";
    case CompletedFilter::Period::today:
        return "Today";
    case CompletedFilter::Period::week:
        return "This week";
    case CompletedFilter::Period::month:
        return "This month";
    case CompletedFilter::Period::custom:
        return "Custom range";
    }
    return {};
}

std::string_view title(CompletedFilter::Schedule schedule) {
    switch (schedule) {
    case CompletedFilter::Schedule::any:
        return "Any due date";
    case CompletedFilter::Schedule::hadDueDate:
        return "Had a due date";
    case CompletedFilter::Schedule::noDueDate:
        return "No due date";
    case CompletedFilter::Schedule::late:
        return "Completed late";
    }
    return {};
}

std::string_view title(CompletedFilter::BoardStatus status) {
    switch (status) {
    case CompletedFilter::BoardStatus::any:
        return "Any board status";
    case CompletedFilter::BoardStatus::active:
        return "Active boards";
    case CompletedFilter::BoardStatus::archived:
        return "Archived boards";
    }
    return {};
}

std::string CompletedTodoGroup::title(base::Instant now, const base::DateFormats& formats) const {
    const auto& calendar = formats.calendar();
    if (const auto today = calendar.interval(base::CalendarPeriod::day, now)) {
        if (today->start == date) {
            return formats.relativeDayWord(0);
        }
        if (calendar.startOfDay(today->start - 1) == date) {
            return formats.relativeDayWord(-1);
        }
    }
    return formats.dayWithFullMonth(date);
}

std::vector<CompletedTodoGroup> CompletedTodoGroup::groups(std::span<model::Entry* const> entries,
                                                           const base::Calendar& calendar) {
    DayCache days(calendar);
    std::vector<GroupedEntry> grouped;
    grouped.reserve(entries.size());
    visitEntries(
        entries, [](const model::Entry* entry) { return entry; },
        [&](model::Entry* entry) {
            grouped.push_back({dayKey(*entry, days), entry});
        });
    const auto isEarlierGroup = [](const GroupedEntry& left, const GroupedEntry& right) {
        return left.group < right.group;
    };
    // Mostly they come in the order that `apply` gives them.
    if (!std::is_sorted(grouped.begin(), grouped.end(), isEarlierGroup)) {
        std::stable_sort(grouped.begin(), grouped.end(), isEarlierGroup);
    }
    return cutIntoGroups<CompletedTodoGroup>(grouped, emptyDayGroup);
}

} // namespace korvex::schedule
