#include "services/EntryService.h"

#include "base/Digest.h"
#include "base/Text.h"
#include "model/EntryContentLimit.h"
#include "store/ModelContainer.h"

namespace korvex::services {

using model::Entry;
using model::EntryServiceError;
using model::EntryServiceErrorCase;

EntryService::EntryService(store::ModelContext& context, ReminderReconciling& reminders,
                           WidgetReloading& widgets, base::LogSink& log, UndoManager* undoManager)
    : m_modelContext(&context),
      m_reminders(&reminders),
      m_widgets(&widgets),
      m_undoManager(undoManager),
      m_log(log, "EntryService"),
      m_serializer(log) {}

std::string EntryService::normalized(std::string_view content) {
    if (!model::EntryContentLimit::allows(content)) {
        throw EntryServiceError(EntryServiceErrorCase::contentTooLong);
    }
    const auto trimmed = base::trimmed(content);
    if (trimmed.empty()) {
        throw EntryServiceError(EntryServiceErrorCase::emptyContent);
    }
    return std::string(trimmed);
}

void EntryService::validateWritableStore() const {
    if (!m_modelContext->container().allowsSave()) {
        throw EntryServiceError(EntryServiceErrorCase::readOnlyStore);
    }
}

void EntryService::validateBoard(const model::Board& board) const {
    validateWritableStore();
    if (!board.isLive() || !m_modelContext->isStored(board)) {
        throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
    }
}

void EntryService::validate(const model::TodoSchedule& schedule,
                            const std::optional<base::Instant>& previousReminder,
                            base::Instant now) {
    if (!schedule.isValid()) {
        throw EntryServiceError(EntryServiceErrorCase::invalidSchedule);
    }
    if (schedule.reminderDate && *schedule.reminderDate <= now &&
        schedule.reminderDate != previousReminder) {
        throw EntryServiceError(EntryServiceErrorCase::pastReminder);
    }
}

Entry& EntryService::persisted(Entry& entry) const {
    validateWritableStore();
    if (!entry.isLive() || !m_modelContext->isStored(entry)) {
        throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
    }
    return entry;
}

Entry& EntryService::persisted(Entry& entry, model::EntryType type) const {
    if (persisted(entry).type() != type) {
        throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
    }
    return entry;
}

void EntryService::change(const std::function<void()>& makeChange) {
    try {
        makeChange();
        save();
    } catch (...) {
        m_modelContext->rollback();
        throw;
    }
}

void EntryService::save() {
    try {
        m_modelContext->save();
    } catch (const base::Error& error) {
        m_modelContext->rollback();
        m_log.error("Entry persistence failed; rolled back: " + error.errorDescription() + " (" +
                    std::to_string(error.code()) + ")");
        throw;
    }
}

void EntryService::todosChanged() {
    m_widgets->reloadTodoWidgets();
    m_reminders->requestReconcile();
}

void EntryService::logDone(std::string_view what, const base::Uuid& id) const {
    if (m_log.accepts(base::LogLevel::info)) {
        m_log.info(std::string(what) + " with identifier " + base::maskHash(id.text()));
    }
}

} // namespace korvex::services
