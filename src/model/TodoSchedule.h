#pragma once

#include "base/Calendar.h"
#include "base/DateFormats.h"
#include "base/Instant.h"

#include <optional>
#include <string>

namespace korvex::model {

/// When a todo is due and when to be reminded of it. A plain value that can hold anything;
/// `isValid` says whether it makes sense. Bad dates never throw: they read as absent.
struct TodoSchedule {
    /// The due day of an all-day todo, as year × 10000 + month × 100 + day; excludes the two dates
    /// below.
    std::optional<base::DayNumber> dueDay = std::nullopt;
    /// The due time, or the end of the window.
    std::optional<base::Instant> dueDate = std::nullopt;
    /// The start of the window; only with `dueDate`, and before it.
    std::optional<base::Instant> dueStartDate = std::nullopt;
    std::optional<base::Instant> reminderDate = std::nullopt;

    bool operator==(const TodoSchedule&) const = default;

    static TodoSchedule dueOn(base::DayNumber day) { return {.dueDay = day}; }
    static TodoSchedule dueAt(base::Instant instant) { return {.dueDate = instant}; }

    /// Noon of a day number in the zone; absent when it is no such day.
    static std::optional<base::Instant> date(base::DayNumber day, const base::Calendar& calendar);
    /// The day number of an instant in the zone; absent outside the valid range.
    static std::optional<base::DayNumber> day(base::Instant instant,
                                              const base::Calendar& calendar);

    bool isEmpty() const { return !dueDay && !dueDate && !dueStartDate && !reminderDate; }
    bool hasDue() const { return dueDay || dueDate; }
    bool isValid() const;

    /// The instant by which lists sort and group: noon of the due day, else the due time, else the
    /// reminder; absent when none of them is a valid date.
    std::optional<base::Instant> effectiveDate(const base::Calendar& calendar) const;

    /// Whether the todo is due and that has passed at `now`: an all-day todo once its day is over,
    /// a timed one from its very moment on.
    bool isOverdue(base::Instant now, const base::Calendar& calendar) const;

    /// "Today · 9:00 AM–10:00 AM"; absent without a valid effective date.
    std::optional<std::string> dueLabel(base::Instant now, const base::DateFormats& formats) const;

    /// What a screen reader says: "Due: Today, Overdue, Reminder: Mar 9, 2025, 9:00 AM"; empty for
    /// an empty schedule.
    std::string accessibilityLabel(bool completed, base::Instant now,
                                   const base::DateFormats& formats) const;
};

} // namespace korvex::model
