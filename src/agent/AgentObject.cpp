#include "agent/AgentObject.h"

#include "platform/bus/AgentProtocol.h"
#include "schedule/ReminderRequest.h"

namespace korvex::agent {

using namespace platform::bus;

namespace {

constexpr const char* kGivesStatus = "a{sv}";

} // namespace

AgentObject::AgentObject(Bus& bus, AgentRequests& requests)
    : m_requests(requests), m_object(bus, kAgentPath, interface()) {}

void AgentObject::answerFor(const std::string& store, IncomingCall& call,
                            const std::function<void()>& answer) {
    if (m_requests.looksAfter(store)) {
        answer();
    } else {
        call.fail(kAgentHasOtherStore, "This agent looks after another store.");
    }
}

Interface AgentObject::interface() {
    const auto answerStatus = [this](IncomingCall& call) {
        call.reply(arguments(toDictionary(m_requests.status())));
    };
    return {
        .name = kAgentInterface,
        .methods =
            {
                Interface::method<std::string, std::vector<std::string>>(
                    agent_method::kReconcile,
                    [this, answerStatus](IncomingCall& call, const auto& store, const auto& told) {
                        answerFor(store, call, [&] {
                            std::vector<base::Uuid> withdrawn;
                            for (const auto& identifier : told) {
                                if (const auto id =
                                        schedule::ReminderNotification::entryID(identifier)) {
                                    withdrawn.push_back(*id);
                                }
                            }
                            m_requests.reconcile(withdrawn);
                            answerStatus(call);
                        });
                    },
                    kGivesStatus),
                Interface::method<>(
                    agent_method::kRequestAuthorization,
                    [this, answerStatus](IncomingCall& call) {
                        m_requests.requestAuthorization();
                        answerStatus(call);
                    },
                    kGivesStatus),
                Interface::method<std::string>(
                    agent_method::kGetStatus,
                    [this, answerStatus](IncomingCall& call, const auto& store) {
                        answerFor(store, call, [&] { answerStatus(call); });
                    },
                    kGivesStatus),
                Interface::method<std::string>(
                    agent_method::kList,
                    [this](IncomingCall& call, const auto& store) {
                        answerFor(store, call,
                                  [&] { call.reply(argumentsOf(m_requests.reminders())); });
                    },
                    signatureOf<std::vector<AgentReminderOnBus>, std::uint32_t>()),
            },
        .signals = {{.name = kAgentStatusChanged, .carries = kGivesStatus}}};
}

void AgentObject::statusChanged(const app::AgentStatus& status) {
    m_object.emit(kAgentStatusChanged, arguments(toDictionary(status)));
}

} // namespace korvex::agent
