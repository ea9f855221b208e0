#include "model/TodoSchedule.h"

#include "base/DayArithmetic.h"

namespace korvex::model {

namespace {

constexpr std::string_view kBeforeTime = " · ";
constexpr std::string_view kBetweenTimes = "–";
constexpr std::string_view kBetweenMoments = " – ";

std::optional<base::Instant> validated(const std::optional<base::Instant>& instant) {
    return instant && instant->isValid() ? instant : std::nullopt;
}

/// The due time as far as it counts: an all-day schedule has none.
std::optional<base::Instant> dueTime(const TodoSchedule& schedule) {
    return schedule.dueDay ? std::nullopt : validated(schedule.dueDate);
}

std::string dayWord(base::DayNumber day, base::Instant date, base::Instant now,
                    const base::DateFormats& formats) {
    const auto& calendar = formats.calendar();
    for (const auto offset : {0, 1, -1}) {
        const auto other = calendar.adding(now, base::CalendarUnit::day, offset);
        if (other && calendar.day(*other) == day) {
            return formats.relativeDayWord(offset);
        }
    }
    return formats.dayWithWeekday(date);
}

} // namespace

std::optional<base::Instant> TodoSchedule::date(base::DayNumber day,
                                                const base::Calendar& calendar) {
    return calendar.noon(day);
}

std::optional<base::DayNumber> TodoSchedule::day(base::Instant instant,
                                                 const base::Calendar& calendar) {
    return calendar.day(instant);
}

bool TodoSchedule::isValid() const {
    if (dueDay && (dueDate || !base::noonInUtc(*dueDay))) {
        return false;
    }
    if (dueDate && !dueDate->isValid()) {
        return false;
    }
    if (dueStartDate &&
        (!dueStartDate->isValid() || dueDay || !dueDate || *dueStartDate >= *dueDate)) {
        return false;
    }
    return !reminderDate || reminderDate->isValid();
}

std::optional<base::Instant> TodoSchedule::effectiveDate(const base::Calendar& calendar) const {
    if (dueDay) {
        const auto noon = date(*dueDay, calendar);
        // A day that the zone skipped still sorts among its neighbours.
        return noon ? noon : base::noonInUtc(*dueDay);
    }
    const auto due = validated(dueDate);
    return due ? due : validated(reminderDate);
}

bool TodoSchedule::isOverdue(base::Instant now, const base::Calendar& calendar) const {
    if (dueDay) {
        const auto today = day(now, calendar);
        return today && *today > *dueDay && base::noonInUtc(*dueDay);
    }
    const auto due = dueTime(*this);
    return due && now >= *due;
}

std::optional<std::string> TodoSchedule::dueLabel(base::Instant now,
                                                  const base::DateFormats& formats) const {
    const auto& calendar = formats.calendar();
    const auto effective = effectiveDate(calendar);
    const auto effectiveDay = dueDay      ? dueDay
                              : effective ? day(*effective, calendar)
                                          : std::nullopt;
    if (!effective || !effectiveDay) {
        return std::nullopt;
    }

    auto label = dayWord(*effectiveDay, *effective, now, formats);
    const auto due = dueTime(*this);
    if (!due) {
        return label;
    }
    label += kBeforeTime;
    const auto start = validated(dueStartDate);
    if (!start || *start >= *due) {
        return label += formats.shortTime(*due);
    }
    if (day(*start, calendar) == effectiveDay) {
        label += formats.shortTime(*start);
        label += kBetweenTimes;
        return label += formats.shortTime(*due);
    }
    auto fromDayToDay = formats.dayAndShortTime(*start);
    fromDayToDay += kBetweenMoments;
    return fromDayToDay += label += formats.shortTime(*due);
}

std::string TodoSchedule::accessibilityLabel(bool completed, base::Instant now,
                                             const base::DateFormats& formats) const {
    std::string label;
    const auto append = [&label](std::string_view piece) {
        label.append(label.empty() ? "" : ", ").append(piece);
    };
    if (dueDay || dueTime(*this)) {
        if (const auto due = dueLabel(now, formats)) {
            append("Due: " + *due);
        }
        if (!completed && isOverdue(now, formats.calendar())) {
            append("Overdue");
        }
    }
    if (const auto reminder = validated(reminderDate)) {
        append("Reminder: " + formats.dayAndShortTime(*reminder));
    }
    return label;
}

} // namespace korvex::model
