#include "platform/bus/AgentClient.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace korvex::platform::bus {

namespace {

using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;

/// An agent that was replaced by a newer one is soon there again.
constexpr Seconds kShortestPause = 1s;
constexpr Seconds kLongestPause = 300s;

constexpr std::string_view kNoBus = "There is no session bus.";
constexpr std::string_view kNotStarted =
    "The service for reminders (korvex-agent) cannot be started.";
constexpr std::string_view kSilent = "The service for reminders (korvex-agent) does not answer.";

} // namespace

void AgentClient::Wishes::add(Wishes others) {
    reconcile = reconcile || others.reconcile;
    authorization = authorization || others.authorization;
    std::move(others.withdrawn.begin(), others.withdrawn.end(), std::back_inserter(withdrawn));
    withdrawn.resize(std::min(withdrawn.size(), kMostWithdrawn));
}

AgentClient::AgentClient(Bus& bus, base::RunLoop& runLoop, const std::filesystem::path& storeFile,
                         StartAgent startAgent, base::LogSink& log)
    : m_bus(bus),
      m_runLoop(runLoop),
      m_store(agentStoreArgument(storeFile)),
      m_startAgent(std::move(startAgent)),
      m_log(log, "AgentClient"),
      m_pause(kShortestPause),
      m_watch(bus, kAgentName) {
    m_owners = m_watch.changed().connect([this](const std::string& owner) { followOwner(owner); });
    m_states = m_bus.stateChanged().connect([this](Bus::State state) {
        if (state == Bus::State::connected) {
            m_pause = kShortestPause;
            askSoon();
        } else if (state == Bus::State::waiting) {
            // Who is on the next bus is asked what holds there.
            m_wishes.reconcile = m_wishes.reconcile || m_agent || isOthers();
            setUnreachable(kNoBus);
        }
    });
    m_changes = m_bus.match({.sender = kAgentName,
                             .path = kAgentPath,
                             .interface = kAgentInterface,
                             .member = kAgentStatusChanged},
                            [this](const IncomingSignal& signal) {
                                // Until it has answered it may be that of another store.
                                if (m_agent) {
                                    setAgent(agentStatusOf(signal.read<Dictionary>()));
                                } else if (!isOthers()) {
                                    askSoon();
                                }
                            });
}

AgentClient::~AgentClient() = default;

void AgentClient::requestReconcile() {
    wish({.reconcile = true});
}

void AgentClient::removePending(std::span<const base::Uuid> entryIDs) {
    std::vector<std::string> identifiers;
    identifiers.reserve(entryIDs.size());
    for (const auto& id : entryIDs) {
        identifiers.push_back(schedule::ReminderNotification::identifier(id));
    }
    withdraw(identifiers);
}

void AgentClient::requestAuthorization() {
    wish({.authorization = true});
}

void AgentClient::withdraw(std::span<const std::string> identifiers) {
    wish({.reconcile = true, .withdrawn = {identifiers.begin(), identifiers.end()}});
}

void AgentClient::wish(Wishes wishes) {
    m_wishes.add(std::move(wishes));
    askSoon();
}

void AgentClient::askSoon() {
    if (std::exchange(m_willAsk, true)) {
        return;
    }
    m_runLoop.post([this, life = std::weak_ptr<const bool>(m_life)] {
        if (!life.expired()) {
            m_willAsk = false;
            ask();
        }
    });
}

void AgentClient::ask() {
    if (m_asked || m_wishes.isEmpty() || !m_bus.isConnected()) {
        if (m_bus.state() == Bus::State::waiting) {
            setUnreachable(kNoBus);
        }
        return; // asked again after the answer, or when there is a bus
    }
    m_retry.reset();
    m_asked = std::exchange(m_wishes, {});
    const auto takeAnswer = [this](const Reply& reply) { take(reply); };
    if (m_asked->authorization && !m_asked->reconcile) {
        m_call = m_bus.call(
            agentMethod(agent_method::kRequestAuthorization, MethodAddress::Start::allowed), {},
            takeAnswer);
        return;
    }
    // What else is wished for comes after it.
    m_wishes.authorization = std::exchange(m_asked->authorization, false);
    m_call = m_bus.call(agentMethod(agent_method::kReconcile, MethodAddress::Start::allowed),
                        arguments(m_store, m_asked->withdrawn), takeAnswer);
}

void AgentClient::take(const Reply& reply) {
    auto asked = *std::exchange(m_asked, std::nullopt);
    if (const auto* const error = reply.error()) {
        if (error->name() != kAgentHasOtherStore) {
            asked.add(std::move(m_wishes));
            m_wishes = std::move(asked);
        }
        fail(*error);
        return;
    }
    m_pause = kShortestPause;
    m_startsInVain = 0;
    setAgent(agentStatusOf(reply.read<Dictionary>()));
    if (!m_wishes.isEmpty()) {
        askSoon();
    }
}

void AgentClient::fail(const BusError& error) {
    if (error.name() == kAgentHasOtherStore) {
        setUnreachable(kOtherStore);
        return;
    }
    if (error.which() == BusErrorCase::noBus) {
        return; // which is said when it has gone, and asked again when it is back
    }
    if (error.which() == BusErrorCase::refused && m_watch.owner().empty()) {
        // The bus cannot start it: from a folder that it was built in, nobody has told it how.
        const auto isStarted = m_startAgent && m_startAgent();
        if (!isStarted || m_startsInVain++ > 0) {
            m_log.info("The agent cannot be started: " + error.errorDescription());
            setUnreachable(kNotStarted);
        }
    } else {
        m_log.warning("The agent was asked in vain: " + error.errorDescription());
        setUnreachable(kSilent);
    }
    retryLater();
}

void AgentClient::followOwner(const std::string& owner) {
    if (!owner.empty()) {
        m_pause = kShortestPause;
        askSoon();
    } else if (m_bus.isConnected() && (m_agent || isOthers())) {
        // It looks after the reminders for as long as anybody needs them; a newer one may have been
        // installed. One for another store has made room.
        m_agent.reset();
        setStatus({}); // whether anything is shown meanwhile
        m_wishes.reconcile = true;
        retryLater();
    }
}

void AgentClient::retryLater() {
    m_retry = m_runLoop.callAfter(m_pause, [this] { ask(); });
    m_pause = std::min(m_pause * 2, kLongestPause);
}

void AgentClient::setAgent(const app::AgentStatus& agent) {
    m_agent = agent;
    auto status = agent.reminders;
    // Where the user wants none, a daemon takes them all the same, and shows nobody anything.
    if (status.authorization == schedule::AuthorizationStatus::unavailable &&
        agent.isNextDueKnown) {
        status.waitingSince = agent.nextDue.value_or(base::Instant::distantFuture());
    }
    setStatus(std::move(status));
}

void AgentClient::setUnreachable(std::string_view reason) {
    m_agent.reset();
    setStatus({.reason = std::string(reason)});
}

void AgentClient::setStatus(Status status) {
    if (status != m_status) {
        m_status = std::move(status);
        didChange().emit();
    }
}

} // namespace korvex::platform::bus
