#pragma once

#include "base/Log.h"
#include "base/RunLoop.h"
#include "platform/bus/AgentProtocol.h"
#include "platform/bus/Bus.h"
#include "platform/bus/NameWatch.h"
#include "schedule/NotificationScheduling.h"
#include "schedule/ReminderCenter.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::platform::bus {

/// The agent, which plans and shows the reminders of all programs, as seen over the bus: only for
/// the user's own store, after which it looks. Whoever asks it for something starts it, where the
/// bus knows how to, else by a function; one that ends meanwhile is started again. What is asked
/// while it cannot be reached is asked as soon as it can be, and nothing is lost where it never
/// can: the store has it all. Main thread; the bus, the run loop and the log must outlive it.
class AgentClient final : public schedule::ReminderCenter {
public:
    /// Starts the program where the bus does not know it; false where that cannot be.
    using StartAgent = std::function<bool()>;

    AgentClient(Bus& bus, base::RunLoop& runLoop, const std::filesystem::path& storeFile,
                StartAgent startAgent, base::LogSink& log);
    ~AgentClient() override;

    /// Several at a time are asked as one.
    void requestReconcile() override;
    void removePending(std::span<const base::Uuid> entryIDs) override;
    const Status& status() const override { return m_status; }
    void requestAuthorization() override;

    /// What it says of itself besides; absent as long as it has not said anything.
    const std::optional<app::AgentStatus>& agent() const { return m_agent; }

    /// For whoever completes todos: it cancels. All else is the agent's own and does
    /// nothing here: no request is known, and none can be added.
    schedule::NotificationScheduling& notifications() { return m_notifications; }

private:
    class Notifications final : public schedule::NotificationScheduling {
    public:
        explicit Notifications(AgentClient& client) : m_client(client) {}

        void registerCategory() override {}
        schedule::AuthorizationStatus authorization() override {
            return m_client.status().authorization;
        }
        std::vector<schedule::PendingReminder> pending(base::Instant) override { return {}; }
        void add(const schedule::ReminderRequest&) override {}
        void cancel(std::span<const std::string> identifiers) override {
            m_client.withdraw(identifiers);
        }
        void requestAuthorization() override { m_client.requestAuthorization(); }

    private:
        AgentClient& m_client;
    };

    static constexpr std::string_view kOtherStore =
        "The service for reminders (korvex-agent) looks after another store.";

    /// What is to be asked; the same once more does no harm.
    struct Wishes {
        bool reconcile = false;
        bool authorization = false;
        std::vector<std::string> withdrawn = {};

        bool isEmpty() const { return !reconcile && !authorization && withdrawn.empty(); }
        void add(Wishes others);
    };

    void withdraw(std::span<const std::string> identifiers);
    void wish(Wishes wishes);
    void askSoon();
    void ask();
    void take(const Reply& reply);
    void fail(const BusError& error);
    void followOwner(const std::string& owner);
    void retryLater();
    bool isOthers() const { return m_status.reason == kOtherStore; }
    void setAgent(const app::AgentStatus& agent);
    void setUnreachable(std::string_view reason);
    void setStatus(Status status);

    Bus& m_bus;
    base::RunLoop& m_runLoop;
    std::string m_store;
    StartAgent m_startAgent;
    base::Logger m_log;
    Notifications m_notifications{*this};
    Status m_status;
    std::optional<app::AgentStatus> m_agent;
    Wishes m_wishes;
    /// Those of the call that is under way.
    std::optional<Wishes> m_asked;
    bool m_willAsk = false;
    /// How often it was started since it has answered last.
    int m_startsInVain = 0;
    std::chrono::duration<double> m_pause;
    std::unique_ptr<base::RunLoop::Timer> m_retry;
    NameWatch m_watch;
    base::Subscription m_call;
    base::Subscription m_owners;
    base::Subscription m_states;
    base::Subscription m_changes;
    /// Gone with this object: posted work may outlive it.
    std::shared_ptr<const bool> m_life = std::make_shared<bool>(true);
};

} // namespace korvex::platform::bus
