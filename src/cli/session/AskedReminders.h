#pragma once

#include "schedule/ReminderRequest.h"
#include "services/Collaborators.h"

#include <span>
#include <string>
#include <vector>

namespace korvex::cli {

/// Keeps what the services ask of reminders until the command has ended: then it is asked once.
class AskedReminders final : public services::ReminderReconciling {
public:
    void requestReconcile() override { m_isAsked = true; }
    void removePending(std::span<const base::Uuid> entryIDs) override {
        m_isAsked = true;
        for (const auto& id : entryIDs) {
            m_withdrawn.push_back(schedule::ReminderNotification::identifier(id));
        }
    }

    bool isAsked() const { return m_isAsked; }
    /// The identifiers of notifications that are to be removed at once.
    const std::vector<std::string>& withdrawn() const { return m_withdrawn; }

private:
    bool m_isAsked = false;
    std::vector<std::string> m_withdrawn;
};

} // namespace korvex::cli
