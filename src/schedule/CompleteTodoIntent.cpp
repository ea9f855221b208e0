#include "schedule/CompleteTodoIntent.h"

#include "base/Error.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "services/EntryService.h"

#include <exception>
#include <string>

namespace korvex::schedule {

CompleteTodoIntent::CompleteTodoIntent(services::ReminderReconciling& reconciling,
                                       services::WidgetReloading& widgets, base::LogSink& log)
    : m_reconciling(reconciling),
      m_widgets(widgets),
      m_sink(log),
      m_log(log, "CompleteTodoIntent") {}

bool CompleteTodoIntent::complete(std::string_view todoID, store::ModelContext& context,
                                  base::Instant now, NotificationScheduling* reminders) const {
    const auto outcome = completeStored(todoID, context, now);
    // Not within the step: nobody is to wait for the store as long as this takes.
    if (reminders) {
        withdrawStale(todoID, outcome, *reminders);
    }
    return outcome == Outcome::completed;
}

void CompleteTodoIntent::withdrawStale(std::string_view todoID, Outcome outcome,
                                       NotificationScheduling& reminders) {
    if (outcome == Outcome::completedAlready) {
        const auto identifier = ReminderNotification::identifier(*base::Uuid::parse(todoID));
        reminders.cancel({&identifier, 1});
    }
}

CompleteTodoIntent::Outcome CompleteTodoIntent::completeStored(std::string_view todoID,
                                                               store::ModelContext& context,
                                                               base::Instant now) const {
    const auto id = base::Uuid::parse(todoID);
    if (!id) {
        m_log.warning("Invalid todo UUID");
        return Outcome::refused;
    }
    // What is checked is what is completed, whoever else completes it at the same moment.
    const store::LockedStep step(context);
    auto* const entry = context.find<model::Entry>(*id);
    if (!entry) {
        m_log.warning("Todo not found");
        return Outcome::refused;
    }
    if (!entry->isTodo()) {
        m_log.warning("Rejected completion of a text entry");
        return Outcome::refused;
    }
    if (const auto* const board = entry->board(); board && board->isArchived()) {
        return Outcome::refused;
    }
    if (entry->isCompleted()) {
        return Outcome::completedAlready;
    }
    services::EntryService(context, m_reconciling, m_widgets, m_sink).completeTodo(*entry, now);
    return Outcome::completed;
}

bool CompleteTodoIntent::perform(std::string_view todoID, const SharedStore& store,
                                 base::Instant now, NotificationScheduling& reminders) const {
    try {
        const auto container = store.openExisting();
        store::ModelContext context(*container);
        const auto outcome = completeStored(todoID, context, now);
        if (outcome == Outcome::completed) {
            store.announceChange();
            return true;
        }
        // A widget that asked for what was refused shows what is no longer stored. A completion
        // reloads them by itself.
        m_widgets.reloadTodoWidgets();
        withdrawStale(todoID, outcome, reminders);
        return false;
    } catch (const std::exception& error) {
        m_log.error("Widget completion failed: " + std::string(error.what()) + " (" +
                    base::codeOf(error) + ")");
        throw;
    }
}

} // namespace korvex::schedule
