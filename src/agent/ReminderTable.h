#pragma once

#include "agent/ReminderFile.h"
#include "base/Instant.h"
#include "base/Log.h"
#include "base/Uuid.h"
#include "schedule/NotificationScheduling.h"
#include "schedule/ReminderRequest.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::agent {

/// A notification as the daemon knows it.
struct ShownNotification {
    std::uint32_t id = 0;
    /// Which daemon, by the bus's own identifier and the daemon's unique name on it: the next
    /// session's bus gives the same names again.
    std::string daemon;

    bool operator==(const ShownNotification&) const = default;
};

/// What has become of a request. A reminder is a todo with the moment that it is due, and is shown
/// once: one that was shown is remembered, so that nothing shows it again when the clock is set
/// back, or when it is asked for once more.
enum class ReminderState {
    pending,
    /// The daemon has answered that it shows it.
    posted,
    /// Shown, and closed since.
    gone,
    /// Shown, and no longer asked for.
    withdrawn,
};

/// The agent's requests, one for each todo, in a file that is killed with the agent at any moment
/// and has all that was done before. Each function is done whole or not at all; each throws
/// StoreError. One thread.
class ReminderTable {
public:
    /// How many are remembered that were shown: those that were due last.
    static constexpr std::size_t kMaximumRemembered = 10'000;

    /// Opens or makes the file; one that is of no use is set aside, with a warning, and begun anew.
    ReminderTable(const std::filesystem::path& file, base::LogSink& log);
    ~ReminderTable();

    /// What an error of these functions asks for where `ReminderFile::isDamage`: opens the file
    /// again, or begins it anew where it is of no use: then it is to be reconciled. Where that
    /// fails, each function tries it again.
    ReminderFile::Opened recover(const store::StoreError& error);

    /// The requests that stand and are later than `after`, the earliest first; those too
    /// that were shown while the clock was further than it is now.
    std::vector<schedule::PendingReminder> standing(base::Instant after);
    /// Takes the place of the todo's former request. What was shown already stays so where it is
    /// due at the same moment.
    void put(const schedule::ReminderRequest& request);
    /// The same, but leaves a request that is due at the same moment as it is.
    void putUnlessKnown(const schedule::ReminderRequest& request);
    /// Takes the todo's request back, and its notification where one is shown.
    void withdraw(const base::Uuid& entry);

    /// The pending requests that are due at `now`, the earliest first.
    std::vector<schedule::ReminderRequest> due(base::Instant now, std::size_t atMost);
    /// When the next pending request is due that is not due at `now`.
    std::optional<base::Instant> nextDue(base::Instant now);

    /// The daemon shows it. Where it is not asked for any more, its notification is withdrawn.
    void setPosted(const base::Uuid& entry, base::Instant due, const ShownNotification& shown);
    /// The notification was closed, by the user, the daemon or us.
    void setClosed(const ShownNotification& shown);
    /// The todo that a notification reminds of.
    std::optional<base::Uuid> entryOf(const ShownNotification& shown);
    /// The requests whose notifications are shown.
    std::vector<schedule::ReminderRequest> posted();
    /// Notifications that are to be closed, of the daemon that is there now.
    std::vector<ShownNotification> withdrawals();

    /// What is shown is to be shown anew; the former notifications of that daemon are to be closed,
    /// those of others are void.
    void postAllAgain(std::string_view daemon);
    /// The same of what other daemons have shown; what that one shows stays.
    void postOthersAgain(std::string_view daemon);

    /// Up to when an agent has looked after the store's reminders; absent in a new table.
    std::optional<base::Instant> watchedUntil();
    void setWatchedUntil(base::Instant moment);

    struct Row {
        schedule::ReminderRequest request;
        ReminderState state = ReminderState::pending;
        std::optional<ShownNotification> shown = std::nullopt;

        bool operator==(const Row&) const = default;
    };
    struct Rows {
        std::vector<Row> read = {};
        /// How many there are besides.
        std::size_t more = 0;
    };
    /// The pending ones, the soonest first, then the others, the latest first. Where there are more
    /// than `atMost`, half of them is left to either kind, or what the other does not need.
    /// What was shown and closed has no body, unless it was asked for again.
    Rows rows(std::size_t atMost);

    /// Several changes as one, fast; may be nested. Forgets what is older than is to be remembered.
    void changeTogether(const std::function<void()>& changes);

private:
    struct Statements;

    ReminderFile::Opened openAgain();
    void prepare();
    Statements& statements();
    void atOnce(const std::function<void()>& changes);
    void forgetOldest();
    void withdrawNotification(const base::Uuid& entry);

    ReminderFile m_file;
    /// Null where the file could not be opened again.
    std::unique_ptr<Statements> m_statements;
    int m_depth = 0;
};

} // namespace korvex::agent
