#pragma once

#include "schedule/ReminderRequest.h"

#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::schedule {

/// Whether notifications may be shown.
enum class AuthorizationStatus {
    notDetermined,
    denied,
    authorized,
    provisional,
    ephemeral,
    /// Nobody can be had who would show them.
    unavailable,
};
/// What the settings say of it, in English, to be translated.
std::string_view statusLabel(AuthorizationStatus status);
/// Whether the user sees notifications under this status.
bool showsNotifications(AuthorizationStatus status);

/// What the user is told about notifications, in English, to be translated.
struct NotificationTexts {
    NotificationTexts() = delete;

    static constexpr std::string_view kPurpose =
        "Notifications are used only for reminders you create.";
    static constexpr std::string_view kEnable = "Enable Notifications";
    /// Where they are denied: at a reminder in short and in full, and in the settings.
    static constexpr std::string_view kDisabled = "Notifications disabled on this computer";
    static constexpr std::string_view kDisabledAtReminder =
        "Notifications are disabled on this computer. Your reminder can still be saved. Enable "
        "them in your desktop's settings → Notifications → Korvex.";
    static constexpr std::string_view kDisabledInSettings =
        "Enable notifications in your desktop's settings → Notifications → Korvex. Your reminder "
        "dates remain saved.";
    /// Where nobody can be had who would show them, beside the reason.
    static constexpr std::string_view kUnavailable = "Notifications unavailable on this computer";
    static constexpr std::string_view kUnavailableAtReminder = "Your reminder can still be saved.";
    static constexpr std::string_view kPermissionFailed =
        "Notification permission could not be requested. Your reminder can still be saved.";
    static constexpr std::string_view kSchedulingFailed =
        "Reminders could not be updated on this computer. Try again by reopening Korvex.";
};

/// A request at the place where notifications wait.
struct PendingReminder {
    ReminderRequest request;
    /// It was shown already, and is remembered under its moment only: its body is of no account.
    bool wasShown = false;

    bool operator==(const PendingReminder&) const = default;
};

/// The one place where notifications of reminders wait to be shown. Main thread.
class NotificationScheduling {
public:
    virtual ~NotificationScheduling() = default;

    /// Makes the action of reminders known, once. Must not throw.
    virtual void registerCategory() = 0;
    /// As it is known now, without waiting for anybody. Must not throw.
    virtual AuthorizationStatus authorization() = 0;
    /// The reminders that are still to come at `now`, one for each todo; notifications of another
    /// kind are none. May throw, as all that follow.
    virtual std::vector<PendingReminder> pending(base::Instant now) = 0;
    virtual void add(const ReminderRequest& request) = 0;
    /// Removes the notifications of these identifiers, those too that are shown already.
    virtual void cancel(std::span<const std::string> identifiers) = 0;

    /// Asks the user for permission, where that is not determined.
    virtual void requestAuthorization() = 0;
    /// Once for each reconcile: calls `changes`, which cancels and adds what differs, and all of it
    /// comes at once where that can be had.
    virtual void applyReconcile(const std::function<void()>& changes) { changes(); }
};

/// Stands in where nobody shows notifications of this store.
class NoNotifications final : public NotificationScheduling {
public:
    void registerCategory() override {}
    AuthorizationStatus authorization() override { return AuthorizationStatus::unavailable; }
    std::vector<PendingReminder> pending(base::Instant) override { return {}; }
    void add(const ReminderRequest&) override {}
    void cancel(std::span<const std::string>) override {}
    void requestAuthorization() override {}
};

} // namespace korvex::schedule
