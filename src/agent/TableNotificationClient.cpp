#include "agent/TableNotificationClient.h"

#include "store/StoreError.h"

namespace korvex::agent {

using schedule::ReminderNotification;
using schedule::ReminderRequest;

TableNotificationClient::TableNotificationClient(ReminderTable& table, const base::Clock& clock)
    : m_table(table), m_clock(clock) {}

std::vector<ReminderRequest> TableNotificationClient::pending() {
    try {
        return m_table.standing(m_clock.now());
    } catch (const store::StoreError& error) {
        if (!ReminderFile::isDamage(error)) {
            throw;
        }
        m_table.beginAnew(error.errorDescription());
        return {};
    }
}

void TableNotificationClient::add(const ReminderRequest& request) {
    m_table.put(request);
}

void TableNotificationClient::cancel(std::span<const std::string> identifiers) {
    m_table.changeTogether([&] {
        for (const auto& identifier : identifiers) {
            if (const auto entry = ReminderNotification::entryID(identifier)) {
                m_table.withdraw(*entry);
            }
        }
    });
}

void TableNotificationClient::applyReconcile(const std::function<void()>& changes) {
    m_table.changeTogether(changes);
}

} // namespace korvex::agent
