#pragma once

#include "base/Log.h"
#include "base/RunLoop.h"
#include "platform/bus/Bus.h"
#include "platform/bus/NameWatch.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace korvex::platform::bus {

/// Whoever shows notifications on this desktop (`org.freedesktop.Notifications`), which may be
/// another program at any time. Main thread; the bus and the log must outlive it.
class NotificationDaemon final {
public:
    NotificationDaemon(Bus& bus, base::LogSink& log);

    enum class Presence {
        /// The bus has not said it yet.
        unknown,
        running,
        /// The bus starts one for whoever shows something.
        startable,
        missing,
    };
    Presence presence() const;
    /// Which one runs: no other daemon, of this session or another one, is called so. Absent while
    /// none runs.
    std::optional<std::string> identity() const;
    /// What it calls itself, and that with its version; empty as long as it has not said it.
    const std::string& name() const { return m_name; }
    const std::string& description() const { return m_description; }
    /// What keeps it from showing anything, though it runs or is to be started.
    enum class Failure {
        none,
        notStarted,
        /// It runs, and leaves what it is asked unanswered.
        silent,
        /// For longer than a program refuses that is asked too often.
        refusing,
    };
    Failure failure() const { return m_failure; }
    /// Whether it has said, or will not say, what it is and what it can.
    bool isKnown() const;
    /// Whether its notifications can be answered; true as long as it has not said otherwise.
    bool canAct() const { return !m_capabilities || can(kActions); }
    /// Emitted when one of these is another.
    base::Signal<>& changed() { return m_changed; }
    /// Looks again which daemons the bus could start, and whether one that has failed does so
    /// still.
    void look();

    struct Notification {
        std::string title;
        /// As it is typed: it is no markup.
        std::string body;
        /// What can be done beside opening it, and what the button says.
        std::string action;
        std::string actionTitle;
        std::string category;
    };
    /// A notification that is shown: by its daemon's number and that daemon's identity.
    struct Shown {
        std::uint32_t id = 0;
        std::string daemon;
        bool operator==(const Shown&) const = default;
    };
    /// What has become of it.
    struct Outcome {
        /// Absent where it is not shown.
        std::optional<Shown> shown = std::nullopt;
        /// The daemon runs and has said no, maybe to this one alone.
        bool isRefused = false;
    };
    using Answer = std::function<void(const Outcome&)>;
    /// Starts a daemon where none runs and the bus can. The answer comes later, and once: from a
    /// daemon that is stopped for long when it goes on, since it shows then what it was asked for.
    void show(const Notification& notification, Answer answer);
    /// `closed` is called once the daemon has answered, or cannot any more.
    void close(const Shown& shown, std::function<void()> closed);

    /// What the user has chosen, with the desktop's leave to bring a window forward, where it gave
    /// one. `kOpen` for the notification itself.
    struct Choice {
        Shown shown;
        std::string action;
        std::string token;
    };
    static constexpr const char* kOpen = "default";
    base::Signal<const Choice&>& chosen() { return m_chosen; }
    /// Closed by the user, the daemon, or on request.
    base::Signal<const Shown&>& closed() { return m_closed; }

private:
    struct Waiting {
        Notification notification;
        Answer answer;
    };

    /// A call that is under way.
    struct Call {
        base::Subscription answer;
        /// Runs until an answer is overdue.
        std::unique_ptr<base::RunLoop::Timer> silence;
        bool isOverdue = false;
    };

    void follow();
    void askForServices();
    void setFailure(Failure failure);
    void greet();
    void introduce();
    void takeIntroduction(const Reply& reply);
    void takeCapabilities(const Reply& reply);
    void post(const Waiting& waiting);
    void takeRefusal();
    void take(const IncomingSignal& signal);
    std::string identityOf(const std::string& uniqueName) const;
    static constexpr const char* kActions = "actions";
    bool can(const char* capability) const { return m_capabilities->contains(capability); }
    /// The call is forgotten once it was answered. Its number.
    std::uint64_t call(const char* member, const Arguments& sent, Bus::Answer answer,
                       std::chrono::duration<double> limit = Bus::kPatience);

    Bus& m_bus;
    base::Logger m_log;
    NameWatch m_owner;
    std::optional<bool> m_isStartable;
    /// Of the one that runs; absent as long as it has not said them.
    std::optional<std::set<std::string, std::less<>>> m_capabilities;
    bool m_isGreeting = false;
    bool m_isIntroduced = false;
    std::string m_name;
    std::string m_description;
    Failure m_failure = Failure::none;
    /// When it refused first after it has shown something.
    std::optional<std::chrono::duration<double>> m_refusingSince;
    /// To be shown as soon as it is known what the daemon understands.
    std::vector<Waiting> m_waiting;
    /// The leave came for that notification, before its action.
    std::pair<std::uint32_t, std::string> m_token;
    base::Signal<> m_changed;
    base::Signal<const Choice&> m_chosen;
    base::Signal<const Shown&> m_closed;
    std::uint64_t m_lastCall = 0;
    std::map<std::uint64_t, Call> m_calls;
    std::unique_ptr<base::RunLoop::Timer> m_askAgain;
    base::Subscription m_greeting;
    base::Subscription m_introduction;
    base::Subscription m_asked;
    base::Subscription m_owners;
    base::Subscription m_states;
    base::Subscription m_services;
    base::Subscription m_signals;
};

} // namespace korvex::platform::bus
