#pragma once

#include "base/Calendar.h"
#include "base/DateFormats.h"
#include "base/Instant.h"
#include "base/Uuid.h"
#include "model/Entry.h"
#include "services/FoldedTexts.h"
#include "store/Condition.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::schedule {

/// Which completed todos the Completed view shows. A plain value.
struct CompletedFilter {
    enum class Period { any, today, week, month, custom };
    enum class Schedule { any, hadDueDate, noDueDate, late };
    enum class BoardStatus { any, active, archived };

    std::string query;
    std::optional<base::Uuid> boardID;
    Period period = Period::any;
    Schedule schedule = Schedule::any;
    BoardStatus boardStatus = BoardStatus::any;
    /// The first and the last day of a custom period, both included as whole days; when they are in
    /// the wrong order, the period is the day of the first.
    base::Instant startDate;
    base::Instant endDate;

    bool operator==(const CompletedFilter&) const = default;

    /// Whether any criterion can hide a todo.
    bool isActive() const;
    /// When the completed todos of the period were completed; absent for any time, and for what no
    /// calendar has.
    std::optional<base::DateInterval> interval(base::Instant now,
                                               const base::Calendar& calendar) const;
    /// Every todo that meets the criteria, and some that do not: as much as the store can tell.
    store::Condition condition(base::Instant now, const base::Calendar& calendar) const;

    /// The completed todos among `entries` that meet every criterion, in the order of
    /// `services::completedTodos`: the latest first, then as their boards and they themselves
    /// stand. `texts` answers for the query. A todo without a board is on no active and on no
    /// archived one.
    std::vector<model::Entry*> apply(std::span<model::Entry* const> entries, base::Instant now,
                                     const base::Calendar& calendar,
                                     services::FoldedTexts& texts) const;
};

/// When a completed todo was completed, for the day that it is shown under: where that is not
/// known, its last change. Such a todo is of no period, and not late.
base::Instant completionDate(const model::Entry& entry);

/// English titles: "Any time", "This week" …; "Any due date" …; "Any board status" …
std::string_view title(CompletedFilter::Period period);
std::string_view title(CompletedFilter::Schedule schedule);
std::string_view title(CompletedFilter::BoardStatus status);

/// The completed todos of one day.
struct CompletedTodoGroup {
    /// The start of the day.
    base::Instant date;
    std::vector<model::Entry*> entries;

    bool operator==(const CompletedTodoGroup&) const = default;

    /// "Today", "Yesterday" or "January 15, 2025", in the locale's words and order.
    std::string title(base::Instant now, const base::DateFormats& formats) const;

    /// The newest day first; inside a day as in `entries`.
    static std::vector<CompletedTodoGroup> groups(std::span<model::Entry* const> entries,
                                                  const base::Calendar& calendar);
};

} // namespace korvex::schedule
