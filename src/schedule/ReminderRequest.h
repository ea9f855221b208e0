#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvex::schedule {

/// One notification that is to come.
struct ReminderRequest {
    base::Uuid entryID;
    /// When it is to be shown.
    base::Instant date;
    /// What the todo says.
    std::string body;

    bool operator==(const ReminderRequest&) const = default;
};

/// What every reminder's notification looks like, beside its body.
struct ReminderNotification {
    ReminderNotification() = delete;

    static constexpr std::string_view kTitle = "Todo Reminder";
    static constexpr std::string_view kCategory = "TODO_REMINDER";
    static constexpr std::string_view kCompleteAction = "TODO_REMINDER_COMPLETE";
    static constexpr std::string_view kCompleteTitle = "Mark Complete";

    /// What the notification of a todo is known by: "todo-reminder-" and the todo's identifier.
    static std::string identifier(const base::Uuid& entryID);
    /// The todo that a notification reminds of; absent for one that is no reminder.
    static std::optional<base::Uuid> entryID(std::string_view identifier);
};

} // namespace korvex::schedule
