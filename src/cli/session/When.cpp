#include "cli/session/When.h"

#include "cli/session/Session.h"
#include "cli/terminal/CommandLineError.h"

#include "schedule/TodoReminderPreset.h"

#include <array>
#include <string_view>
#include <variant>

namespace korvex::cli {

namespace {

using When = std::variant<base::DayNumber, base::Instant>;

constexpr int kMinutesOfDay = 24 * 60;

/// "2025-02-31" and "2025-03-10T25:00" are dates by their form.
bool hasFormOfDate(std::string_view text) {
    constexpr std::string_view kForm = "0000-00-00";
    if (text.size() < kForm.size() || (text.size() > kForm.size() && text[kForm.size()] != 'T')) {
        return false;
    }
    for (std::size_t i = 0; i < kForm.size(); ++i) {
        const auto isDigit = text[i] >= '0' && text[i] <= '9';
        if (kForm[i] == '0' ? !isDigit : text[i] != kForm[i]) {
            return false;
        }
    }
    return true;
}

/// "14:30", in minutes since midnight; absent for what has another form. Minutes that no day has
/// are more than it has.
std::optional<int> minutesOf(std::string_view text) {
    const auto colon = text.find(':');
    if (colon == 0 || colon > 2 || text.size() != colon + 3) {
        return std::nullopt;
    }
    std::array<int, 2> numbers{};
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i == colon) {
            continue;
        }
        if (text[i] < '0' || text[i] > '9') {
            return std::nullopt;
        }
        auto& number = numbers[i > colon ? 1 : 0];
        number = 10 * number + (text[i] - '0');
    }
    return numbers[0] < 24 && numbers[1] < 60 ? 60 * numbers[0] + numbers[1] : kMinutesOfDay;
}

CommandLineError noSuchMoment(std::string_view typed) {
    return refusal("There is no date or time \"" + std::string(typed) +
                   "\". Choose a valid todo schedule.");
}

base::DayNumber dayFromToday(int days, Session& session) {
    const auto& calendar = session.calendar();
    const auto moment = calendar.adding(session.now(), base::CalendarUnit::day, days);
    const auto day = moment ? calendar.day(*moment) : std::nullopt;
    if (!day) {
        throw refusal("The machine's clock shows no valid date.");
    }
    return *day;
}

base::Instant timeOn(base::DayNumber day, int minutes, Session& session, std::string_view typed) {
    const auto moment = minutes < kMinutesOfDay
                            ? schedule::allDayAnchor(day, minutes, session.calendar())
                            : std::nullopt;
    if (!moment) {
        throw noSuchMoment(typed);
    }
    return *moment;
}

/// A time alone is the next one.
When readWhen(std::string_view typed, Session& session) {
    if (const auto minutes = minutesOf(typed)) {
        const auto today = timeOn(dayFromToday(0, session), *minutes, session, typed);
        return today > session.now() ? today
                                     : timeOn(dayFromToday(1, session), *minutes, session, typed);
    }
    if (typed == "today") {
        return dayFromToday(0, session);
    }
    if (typed == "tomorrow") {
        return dayFromToday(1, session);
    }
    if (const auto day = base::dayFromIsoText(typed)) {
        return *day;
    }
    if (const auto instant = base::instantFromIsoText(typed, session.calendar())) {
        return *instant;
    }
    if (hasFormOfDate(typed)) {
        throw noSuchMoment(typed);
    }
    throw wrongUsage(
        "\"" + std::string(typed) +
        "\" is no date: write 2025-03-10, 2025-03-10T14:30, 14:30, today or tomorrow.");
}

base::Instant defaultReminderTime(base::DayNumber day, Session& session, std::string_view typed) {
    return timeOn(day, session.preferences().defaultReminderMinutes(), session, typed);
}

/// A time alone is on the day on which the window ends.
When readStart(std::string_view typed, const model::TodoSchedule& schedule, Session& session) {
    const auto minutes = minutesOf(typed);
    const auto day =
        minutes && schedule.dueDate ? session.calendar().day(*schedule.dueDate) : std::nullopt;
    return day ? timeOn(*day, *minutes, session, typed) : readWhen(typed, session);
}

} // namespace

model::TodoSchedule readSchedule(const ScheduleOptions& options, Session& session) {
    model::TodoSchedule schedule;
    if (options.due) {
        const auto due = readWhen(*options.due, session);
        if (const auto* day = std::get_if<base::DayNumber>(&due)) {
            schedule = model::TodoSchedule::dueOn(*day);
        } else {
            schedule = model::TodoSchedule::dueAt(std::get<base::Instant>(due));
        }
    }
    if (options.from) {
        const auto from = readStart(*options.from, schedule, session);
        const auto* start = std::get_if<base::Instant>(&from);
        if (!start || !schedule.dueDate) {
            throw wrongUsage("A window needs two times, as in --from 2025-03-10T09:00 "
                             "--due 2025-03-10T10:00.");
        }
        schedule.dueStartDate = *start;
    }
    if (options.remind) {
        schedule.reminderDate = readReminder(*options.remind, schedule, session);
    }
    return schedule;
}

base::Instant readReminder(const std::string& typed, const model::TodoSchedule& schedule,
                           Session& session) {
    const auto preset = schedule::reminderPreset(typed);
    if (!preset) {
        const auto when = readWhen(typed, session);
        const auto* instant = std::get_if<base::Instant>(&when);
        return instant ? *instant
                       : defaultReminderTime(std::get<base::DayNumber>(when), session, typed);
    }
    if (!schedule.hasDue()) {
        throw wrongUsage("--remind " + typed + " counts back from a due date: add --due.");
    }
    const auto anchor = schedule.dueDate ? *schedule.dueDate
                                         : defaultReminderTime(*schedule.dueDay, session, typed);
    const auto reminder = schedule::reminderDate(*preset, anchor, session.calendar());
    if (!reminder) {
        throw noSuchMoment(typed);
    }
    return *reminder;
}

} // namespace korvex::cli
