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
                        if (!m_requests.looksAfter(store)) {
                            call.fail(kAgentHasOtherStore, "This agent looks after another store.");
                            return;
                        }
                        std::vector<base::Uuid> withdrawn;
                        for (const auto& identifier : told) {
                            if (const auto id =
                                    schedule::ReminderNotification::entryID(identifier)) {
                                withdrawn.push_back(*id);
                            }
                        }
                        m_requests.reconcile(withdrawn);
                        answerStatus(call);
                    },
                    kGivesStatus),
                Interface::method<>(
                    agent_method::kRequestAuthorization,
                    [this, answerStatus](IncomingCall& call) {
                        m_requests.requestAuthorization();
                        answerStatus(call);
                    },
                    kGivesStatus),
                Interface::method<>(agent_method::kGetStatus, answerStatus, kGivesStatus),
                Interface::method<>(
                    agent_method::kList,
                    [this](IncomingCall& call) {
                        std::vector<AgentReminderOnBus> reminders;
                        for (const auto& each : m_requests.reminders()) {
                            reminders.push_back(toBus(each));
                        }
                        call.reply(arguments(std::move(reminders)));
                    },
                    signatureOf<std::vector<AgentReminderOnBus>>()),
            },
        .signals = {{.name = kAgentStatusChanged, .carries = kGivesStatus}}};
}

void AgentObject::statusChanged(const app::AgentStatus& status) {
    m_object.emit(kAgentStatusChanged, arguments(toDictionary(status)));
}

} // namespace korvex::agent
