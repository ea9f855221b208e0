#pragma once

#include "base/Uuid.h"

#include <span>

namespace korvex::services {

/// Whoever keeps the pending reminder notifications in step with the stored todos. Must not throw:
/// a change that is saved is done, whatever becomes of its reminder.
class ReminderReconciling {
public:
    virtual ~ReminderReconciling() = default;
    /// The stored todos changed: plan anew, soon.
    virtual void requestReconcile() = 0;
    /// These todos need no reminder any more: withdraw theirs at once.
    virtual void removePending(std::span<const base::Uuid> entryIDs) = 0;
};

/// Whoever shows todos outside the main window. Must not throw.
class WidgetReloading {
public:
    virtual ~WidgetReloading() = default;
    virtual void reloadTodoWidgets() = 0;
};

/// Stand in where a program or a test has no reminders or widgets: both do nothing.
class NoReminders final : public ReminderReconciling {
public:
    void requestReconcile() override {}
    void removePending(std::span<const base::Uuid>) override {}
};
class NoWidgets final : public WidgetReloading {
public:
    void reloadTodoWidgets() override {}
};

} // namespace korvex::services
