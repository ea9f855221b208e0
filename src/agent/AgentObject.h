#pragma once

#include "app/AgentStatus.h"
#include "base/Uuid.h"
#include "platform/bus/OfferedObject.h"

#include <functional>
#include <span>
#include <string>

namespace korvex::agent {

/// What other programs may ask the agent for.
class AgentRequests {
public:
    virtual ~AgentRequests() = default;

    /// Whether it looks after that store; an empty path is its own.
    virtual bool looksAfter(const std::string& storeFile) const = 0;
    /// Removes these todos' notifications at once, and plans anew, soon.
    virtual void reconcile(std::span<const base::Uuid> withdrawn) = 0;
    virtual void requestAuthorization() = 0;
    virtual app::AgentStatus status() = 0;
    virtual app::AgentReminders reminders() = 0;
};

/// The agent on the bus. Main thread; the bus and whoever is asked must outlive it.
class AgentObject final {
public:
    AgentObject(platform::bus::Bus& bus, AgentRequests& requests);

    void statusChanged(const app::AgentStatus& status);

private:
    platform::bus::Interface interface();
    /// Calls `answer` where the agent looks after that store, and else says that it does not.
    void answerFor(const std::string& store, platform::bus::IncomingCall& call,
                   const std::function<void()>& answer);

    AgentRequests& m_requests;
    platform::bus::OfferedObject m_object;
};

} // namespace korvex::agent
