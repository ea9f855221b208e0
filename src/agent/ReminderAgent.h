#pragma once

#include "agent/AgentObject.h"
#include "agent/NotificationSwitches.h"
#include "agent/ReminderDelivery.h"
#include "agent/ReminderPosting.h"
#include "agent/ReminderResponses.h"
#include "agent/ReminderTable.h"
#include "agent/TableNotificationClient.h"
#include "agent/UserStore.h"
#include "base/Clock.h"
#include "base/Log.h"
#include "base/RunLoop.h"
#include "platform/bus/NotificationDaemon.h"
#include "platform/bus/StoreChangeSignal.h"
#include "platform/system/FolderWatcher.h"
#include "schedule/ReminderScheduler.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace korvex::agent {

/// Reminds of the user's todos, whichever other program runs: keeps what is to be shown in step
/// with the store, has it shown when it is due, and does what is answered. Main thread; all that it
/// is given must outlive it.
class ReminderAgent final : private AgentRequests {
public:
    struct Surroundings {
        platform::bus::Bus& bus;
        base::RunLoop& runLoop;
        const base::Clock& clock;
        base::LogSink& log;
        std::filesystem::path storeFile;
        /// The file of its requests; empty keeps them in memory.
        std::filesystem::path tableFile;
        /// The user's folder for settings, where some desktops keep theirs.
        std::filesystem::path settings;
        std::string version;
        ReminderResponses::StartDesktop startDesktop;
    };
    /// Throws StoreError: `busy` where another agent has the file of requests.
    explicit ReminderAgent(Surroundings surroundings);
    ~ReminderAgent() override;
    ReminderAgent(const ReminderAgent&) = delete;
    ReminderAgent& operator=(const ReminderAgent&) = delete;

    /// The clock was set, the machine woke, or the time zone is another.
    void timeChanged();
    /// Whether nothing is under way that would be done again, or not at all, if it ended now.
    bool isQuiet() const { return m_posting.isQuiet() && m_responses.isQuiet(); }
    base::Signal<>& becameQuiet() { return m_becameQuiet; }

private:
    enum class Reason {
        /// Only if the store is another than the last time.
        hint,
        request,
    };

    bool looksAfter(const std::string& storeFile) const override;
    void reconcile(std::span<const base::Uuid> withdrawn) override;
    void requestAuthorization() override;
    app::AgentStatus status() override;
    app::AgentReminders reminders() override;

    void takeHint();
    void reconcileSoon(Reason reason);
    void reconcileNow();
    void followDaemon();
    void refreshAuthorization();
    void tellStatus();

    Surroundings m_surroundings;
    base::Logger m_log;
    ReminderTable m_table;
    TableNotificationClient m_client;
    /// It is never started: what it plans is read from a store that is open for a moment only.
    schedule::ReminderScheduler m_scheduler;
    UserStore m_store;
    ReminderDelivery m_delivery;
    platform::bus::NotificationDaemon m_daemon;
    NotificationSwitches m_switches;
    ReminderPosting m_posting;
    ReminderResponses m_responses;
    AgentObject m_object;
    platform::bus::StoreChangeListener m_changes;
    platform::system::FolderWatcher m_files;
    /// Why no notification can be shown.
    std::string m_reason;
    bool m_canAct = true;
    bool m_isQuieted = false;
    app::AgentStatus m_told;
    /// Which store was planned from last, and its revision then.
    std::optional<std::pair<base::Uuid, std::int64_t>> m_planned;
    bool m_isRequested = false;
    bool m_willReconcile = false;
    std::unique_ptr<base::RunLoop::Timer> m_pause;
    /// Runs while the store could not be followed.
    std::unique_ptr<base::RunLoop::Timer> m_retry;
    std::chrono::duration<double> m_retryDelay{};
    base::Signal<> m_becameQuiet;
    std::vector<base::Subscription> m_subscriptions;
    /// Gone with this object: posted work may outlive it.
    std::shared_ptr<const bool> m_life = std::make_shared<bool>(true);
};

} // namespace korvex::agent
