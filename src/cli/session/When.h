#pragma once

#include "model/TodoSchedule.h"

#include <optional>
#include <string>

namespace korvex::cli {

class Session;

/// What was typed for a todo's schedule.
struct ScheduleOptions {
    std::optional<std::string> due;
    std::optional<std::string> from;
    std::optional<std::string> remind;

    bool isEmpty() const { return !due && !from && !remind; }
};

/// The schedule that the options describe, in the machine's time zone. Whether it makes sense is
/// the service's to say. Throws CommandLineError: `wrongUsage` for what is no date or cannot be
/// combined, `refused` for a date that no calendar has.
model::TodoSchedule readSchedule(const ScheduleOptions& options, Session& session);

/// The moment that was typed for a reminder of a todo with this schedule: a time, a day, on which
/// it comes at the default reminder time, or a preset, which counts back from what is due. Throws
/// the same.
base::Instant readReminder(const std::string& typed, const model::TodoSchedule& schedule,
                           Session& session);

} // namespace korvex::cli
