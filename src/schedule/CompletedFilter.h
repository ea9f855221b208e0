#pragma once

#include "base/Calendar.h"
#include "base/Instant.h"
#include "base/Uuid.h"
#include "model/Entry.h"
#include "services/FoldedTexts.h"

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
    /// Of a custom period: whole days, both included; when they are in the wrong order, the day of
    /// the first.
    base::Instant startDate;
    base::Instant endDate;

    bool operator==(const CompletedFilter&) const = default;

    /// Whether any criterion can hide a todo.
    bool isActive() const;

    /// The completed todos among `entries` that meet every criterion, the latest first. `texts`
    /// answers for the query. Weeks begin as `calendar`'s locale has it.
    std::vector<model::Entry*> apply(std::span<model::Entry* const> entries, base::Instant now,
                                     const base::Calendar& calendar,
                                     services::FoldedTexts& texts) const;
};

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

    /// The newest day first; inside a day as in `entries`.
    static std::vector<CompletedTodoGroup> groups(std::span<model::Entry* const> entries,
                                                  const base::Calendar& calendar);
};

} // namespace korvex::schedule
