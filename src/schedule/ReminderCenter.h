#pragma once

#include "base/Instant.h"
#include "base/Signal.h"
#include "schedule/NotificationScheduling.h"
#include "services/Collaborators.h"

#include <optional>
#include <string>
#include <utility>

namespace korvex::schedule {

/// Whoever plans and shows the reminders of all programs, as one of these programs sees it: mostly
/// another process, which may be away, and answers when it can. Main thread.
class ReminderCenter : public services::ReminderReconciling {
public:
    /// What it says of itself; texts in English, to be translated.
    struct Status {
        AuthorizationStatus authorization = AuthorizationStatus::unavailable;
        /// Why no notification can be shown; empty where one can, or where nobody knows.
        std::string reason = {};
        /// Where nobody takes one: the first reminder that nobody was shown, later than now where
        /// there is none; absent where nobody knows.
        std::optional<base::Instant> waitingSince = std::nullopt;
        /// Whether notifications can be answered where they are shown.
        bool canAct = true;
        /// The user is not to be disturbed: what comes now is seen later, if at all.
        bool isQuieted = false;
        /// What the user is to be told.
        std::optional<std::string> permissionErrorMessage = std::nullopt;
        std::optional<std::string> schedulingErrorMessage = std::nullopt;

        bool operator==(const Status&) const = default;
    };
    /// What is known now.
    virtual const Status& status() const = 0;
    /// Emitted when it is another.
    base::Signal<>& didChange() { return m_didChange; }
    /// Looks again; where notifications are not determined, the user is asked.
    virtual void requestAuthorization() = 0;

private:
    base::Signal<> m_didChange;
};

/// Stands in where a program or a test has nobody who shows reminders.
class NoReminderCenter final : public ReminderCenter {
public:
    explicit NoReminderCenter(Status status = {}) : m_status(std::move(status)) {}

    void requestReconcile() override {}
    void removePending(std::span<const base::Uuid>) override {}
    const Status& status() const override { return m_status; }
    void requestAuthorization() override {}

private:
    Status m_status;
};

} // namespace korvex::schedule
