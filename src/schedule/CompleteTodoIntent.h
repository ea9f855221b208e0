#pragma once

#include "base/Instant.h"
#include "base/Log.h"
#include "schedule/NotificationScheduling.h"
#include "services/Collaborators.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"

#include <functional>
#include <memory>
#include <string_view>

namespace korvex::schedule {

/// Completes a todo from outside the windows: from a widget or a notification, which may show what
/// is stored no longer. A value over its collaborators, which must outlive it. Main thread.
class CompleteTodoIntent {
public:
    /// In English, to be translated.
    static constexpr std::string_view kTitle = "Complete Todo";

    CompleteTodoIntent(services::ReminderReconciling& reconciling,
                       services::WidgetReloading& widgets, base::LogSink& log);

    /// True when the todo was completed now. False, with nothing changed, where `todoID` is no
    /// identifier or names no todo, and where its board is archived. Of several who complete it at
    /// once, one gets true; for the others it is completed already, and what still reminds of it is
    /// cancelled in `reminders`, if there are any. Throws what the store, the service and
    /// `reminders` throw.
    bool complete(std::string_view todoID, store::ModelContext& context, base::Instant now,
                  NotificationScheduling* reminders) const;

    /// How a program that does not have the store open reaches it.
    struct SharedStore {
        /// Opens it where there is one; creates none.
        std::function<std::unique_ptr<store::ModelContainer>()> openExisting;
        /// Tells the other programs that it has changed. Must not throw.
        std::function<void()> announceChange;
    };
    /// The same in the shared store. The widgets show what is stored by then, and the change is
    /// announced if there was one. What it throws is logged.
    bool perform(std::string_view todoID, const SharedStore& store, base::Instant now,
                 NotificationScheduling& reminders) const;

private:
    enum class Outcome { refused, completedAlready, completed };
    Outcome completeStored(std::string_view todoID, store::ModelContext& context,
                           base::Instant now) const;
    static void withdrawStale(std::string_view todoID, Outcome outcome,
                              NotificationScheduling& reminders);

    services::ReminderReconciling& m_reconciling;
    services::WidgetReloading& m_widgets;
    base::LogSink& m_sink;
    base::Logger m_log;
};

} // namespace korvex::schedule
