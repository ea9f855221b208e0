#pragma once

#include "base/Calendar.h"

#include <array>
#include <optional>
#include <string_view>

namespace korvex::schedule {

/// A reminder relative to the due moment, in the order of the picker.
enum class TodoReminderPreset { atDueTime, fifteenMinutes, oneHour, oneDay, twoDays, oneWeek };

inline constexpr std::array kAllReminderPresets{
    TodoReminderPreset::atDueTime, TodoReminderPreset::fifteenMinutes, TodoReminderPreset::oneHour,
    TodoReminderPreset::oneDay,    TodoReminderPreset::twoDays,        TodoReminderPreset::oneWeek,
};

/// The label in the picker: "1 hour before".
std::string_view title(TodoReminderPreset preset);
/// The case's own name, "oneHour", as the command line takes it.
std::string_view name(TodoReminderPreset preset);
std::optional<TodoReminderPreset> reminderPreset(std::string_view name);

/// The anchor plus the preset's offset; whole days keep the wall-clock time. Absent outside the
/// valid range.
std::optional<base::Instant> reminderDate(TodoReminderPreset preset, base::Instant anchor,
                                          const base::Calendar& calendar);
/// Minutes after midnight: what presets of an all-day todo count back from as long as the user has
/// chosen nothing else.
inline constexpr int kStandardReminderMinutes = 540;

/// The moment that presets of an all-day todo count back from: that many minutes after midnight, on
/// the due day. A time that does not exist that day becomes the next one; one that occurs twice,
/// the first. Absent for what is no day or no time of a day.
std::optional<base::Instant> allDayAnchor(base::DayNumber day, int minutesAfterMidnight,
                                          const base::Calendar& calendar);

} // namespace korvex::schedule
