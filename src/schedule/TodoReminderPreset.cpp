#include "schedule/TodoReminderPreset.h"

#include "base/DayArithmetic.h"

#include <cstddef>

namespace korvex::schedule {

namespace {

struct PresetRow {
    std::string_view name;
    std::string_view title;
    base::CalendarUnit unit;
    int amount;
};

using base::CalendarUnit;

// In the order of the enumeration.
constexpr std::array<PresetRow, kAllReminderPresets.size()> kPresets{{
    {"atDueTime", "At due time", CalendarUnit::minute, 0},
    {"fifteenMinutes", "15 minutes before", CalendarUnit::minute, -15},
    {"oneHour", "1 hour before", CalendarUnit::hour, -1},
    {"oneDay", "1 day before", CalendarUnit::day, -1},
    {"twoDays", "2 days before", CalendarUnit::day, -2},
    {"oneWeek", "1 week before", CalendarUnit::day, -7},
}};

const PresetRow& row(TodoReminderPreset preset) {
    return kPresets[static_cast<std::size_t>(preset)];
}

} // namespace

std::string_view title(TodoReminderPreset preset) {
    return row(preset).title;
}

std::string_view name(TodoReminderPreset preset) {
    return row(preset).name;
}

std::optional<TodoReminderPreset> reminderPreset(std::string_view name) {
    for (const auto preset : kAllReminderPresets) {
        if (row(preset).name == name) {
            return preset;
        }
    }
    return std::nullopt;
}

std::optional<base::Instant> reminderDate(TodoReminderPreset preset, base::Instant anchor,
                                          const base::Calendar& calendar) {
    return calendar.adding(anchor, row(preset).unit, row(preset).amount);
}

std::optional<base::Instant> allDayAnchor(base::DayNumber day, int minutesAfterMidnight,
                                          const base::Calendar& calendar) {
    const auto civil = base::civilDayOfNumber(day);
    if (!civil) {
        return std::nullopt;
    }
    return calendar.instant({.year = civil->year,
                             .month = civil->month,
                             .day = civil->day,
                             .hour = minutesAfterMidnight / 60,
                             .minute = minutesAfterMidnight % 60});
}

} // namespace korvex::schedule
