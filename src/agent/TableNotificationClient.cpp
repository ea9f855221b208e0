#include "agent/TableNotificationClient.h"

#include "store/StoreError.h"

namespace korvex::agent {

using schedule::PendingReminder;
using schedule::ReminderNotification;
using schedule::ReminderRequest;

TableNotificationClient::TableNotificationClient(ReminderTable& table) : m_table(table) {}

std::vector<PendingReminder> TableNotificationClient::pending(base::Instant now) {
    try {
        return m_table.standing(now);
    } catch (const store::StoreError& error) {
        if (ReminderFile::isDamage(error) && m_table.recover(error) == ReminderFile::Opened::anew) {
            return {};
        }
        throw;
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
    try {
        m_table.changeTogether(changes);
    } catch (const store::StoreError& error) {
        // What is planned into one that was begun anew is another difference.
        if (ReminderFile::isDamage(error)) {
            m_table.recover(error);
        }
        throw;
    }
}

} // namespace korvex::agent
