#pragma once

#include "agent/ReminderTable.h"
#include "schedule/NotificationScheduling.h"

namespace korvex::agent {

/// The agent's own table as the place where notifications wait. What is due already and not shown
/// yet is no longer pending: it is being delivered, and a reconcile leaves it alone. Main thread;
/// the table must outlive it.
class TableNotificationClient final : public schedule::NotificationScheduling {
public:
    explicit TableNotificationClient(ReminderTable& table);

    /// What is known of the desktop's own switch, and of whether there is anybody to show them.
    void setAuthorization(schedule::AuthorizationStatus status) { m_status = status; }

    /// Nothing: each notification brings its action along.
    void registerCategory() override {}
    schedule::AuthorizationStatus authorization() override { return m_status; }
    /// A damaged table is begun anew, and empty then. Any failure else is thrown.
    std::vector<schedule::PendingReminder> pending(base::Instant now) override;
    void add(const schedule::ReminderRequest& request) override;
    void cancel(std::span<const std::string> identifiers) override;
    /// Nothing: here nobody has to be asked.
    void requestAuthorization() override {}
    /// All or nothing. A damaged table is begun anew, for the next reconcile.
    void applyReconcile(const std::function<void()>& changes) override;

private:
    ReminderTable& m_table;
    schedule::AuthorizationStatus m_status = schedule::AuthorizationStatus::unavailable;
};

} // namespace korvex::agent
