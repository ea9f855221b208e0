#include "schedule/ReminderRequest.h"

namespace korvex::schedule {

namespace {

constexpr std::string_view kPrefix = "todo-reminder-";

} // namespace

std::string ReminderNotification::identifier(const base::Uuid& entryID) {
    return std::string(kPrefix) + entryID.text();
}

std::optional<base::Uuid> ReminderNotification::entryID(std::string_view identifier) {
    return identifier.starts_with(kPrefix) ? base::Uuid::parse(identifier.substr(kPrefix.size()))
                                           : std::nullopt;
}

} // namespace korvex::schedule
