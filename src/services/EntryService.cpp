#include "services/EntryService.h"

#include "base/Digest.h"
#include "base/Text.h"
#include "model/EntryContentLimit.h"
#include "store/ModelContainer.h"

#include <algorithm>

namespace korvex::services {

using model::Entry;

namespace {

[[noreturn]] void refuse(EntryServiceErrorCase which) {
    throw EntryServiceError(which);
}

std::vector<Entry*>::iterator positionOf(std::vector<Entry*>& entries, const base::Uuid& id) {
    return std::find_if(entries.begin(), entries.end(),
                        [&](const Entry* entry) { return entry->id() == id; });
}

} // namespace

EntryService::EntryService(store::ModelContext& context, ReminderReconciling& reminders,
                           WidgetReloading& widgets, base::LogSink& log)
    : m_modelContext(&context),
      m_reminders(&reminders),
      m_widgets(&widgets),
      m_log(log, "EntryService") {}

std::vector<Entry*> EntryService::createTodos(const NewTodos& todos) {
    validate(todos.schedule, std::nullopt, todos.now);
    if (todos.contents.empty()) {
        refuse(EntryServiceErrorCase::emptyContent);
    }
    std::vector<std::string> contents;
    contents.reserve(todos.contents.size());
    for (const std::string& content : todos.contents) {
        contents.push_back(normalized(content));
    }

    const store::LockedStep step(*m_modelContext);
    validateBoard(todos.board);
    const auto appending =
        todos.after || todos.before ? std::nullopt : appendingUnloaded(todos.board);
    auto active = appending ? std::vector<Entry*>() : activeEntries(todos.board);
    const auto index = appending ? 0 : insertionIndex(todos.after, todos.before, active);

    std::vector<Entry*> created;
    created.reserve(contents.size());
    try {
        for (std::string& content : contents) {
            auto entry = std::make_unique<Entry>(model::EntryFields{
                .id = base::Uuid::random(),
                .typeRawValue = std::string(rawValue(model::EntryType::todo)),
                .content = std::move(content),
                .createdAt = todos.now,
                .updatedAt = todos.now,
            });
            entry->setSchedule(todos.schedule);
            entry->setBoard(&todos.board);
            created.push_back(&m_modelContext->insert(std::move(entry)));
        }
        if (appending) {
            numberFrom(appending->activeCount, created, appending->completed);
        } else {
            active.insert(active.begin() + static_cast<std::ptrdiff_t>(index), created.begin(),
                          created.end());
            assignSortOrder(active, todos.board);
        }
        save();
    } catch (...) {
        discardFailedCreation();
        throw;
    }
    if (m_log.accepts(base::LogLevel::info)) {
        for (const Entry* entry : created) {
            m_log.info("Created todo with identifier " + base::maskHash(entry->id().text()));
        }
    }
    todosChanged();
    return created;
}

void EntryService::completeTodo(Entry& given, base::Instant now,
                                std::optional<base::Instant> completedAt,
                                CompactOrder compactOrder) {
    const store::LockedStep step(*m_modelContext);
    Entry& entry = persistedTodo(given);
    if (entry.isCompleted()) {
        return;
    }
    entry.setIsCompleted(true);
    entry.setCompletedAt(completedAt.value_or(now));
    entry.setUpdatedAt(now);
    if (compactOrder == CompactOrder::yes && entry.board()) {
        assignSortOrder(activeEntries(*entry.board()), *entry.board());
    }
    save();
    m_reminders->removePending({&entry.id(), 1});
    todosChanged();
    m_log.info("Completed todo with identifier " + base::maskHash(entry.id().text()));
}

void EntryService::restoreTodo(Entry& given, base::Instant now,
                               std::optional<std::int64_t> position) {
    const store::LockedStep step(*m_modelContext);
    Entry& entry = persistedTodo(given);
    if (!entry.isCompleted()) {
        return;
    }
    if (const model::Board* board = entry.board()) {
        auto active = activeEntries(*board);
        const auto end = static_cast<std::int64_t>(active.size());
        const auto at = std::clamp(position.value_or(end), std::int64_t{0}, end);
        active.insert(active.begin() + at, &entry);
        entry.setIsCompleted(false);
        assignSortOrder(active, *board);
    }
    entry.setIsCompleted(false);
    entry.setCompletedAt(std::nullopt);
    entry.setUpdatedAt(now);
    save();
    todosChanged();
    m_log.info("Restored todo with identifier " + base::maskHash(entry.id().text()));
}

void EntryService::updateTodo(Entry& given, std::string_view content, base::Instant now) {
    const store::LockedStep step(*m_modelContext);
    Entry& entry = persistedTodo(given);
    entry.setContent(normalized(content));
    entry.setUpdatedAt(now);
    save();
    todosChanged();
    m_log.info("Updated todo with identifier " + base::maskHash(entry.id().text()));
}

void EntryService::updateSchedule(Entry& given, const model::TodoSchedule& schedule,
                                  base::Instant now) {
    validateWritableStore();
    const store::LockedStep step(*m_modelContext);
    Entry& entry = persistedTodo(given);
    validate(schedule, entry.reminderDate(), now);
    entry.setSchedule(schedule);
    entry.setUpdatedAt(now);
    save();
    m_reminders->removePending({&entry.id(), 1});
    todosChanged();
}

void EntryService::moveEntry(const base::Uuid& id, const base::Uuid& relativeTo,
                             model::EntryPlacement placement, model::Board& board) {
    const store::LockedStep step(*m_modelContext);
    validateBoard(board);
    auto active = activeEntries(board);
    const auto moved = positionOf(active, id);
    const auto target = positionOf(active, relativeTo);
    if (moved == active.end() || target == active.end() || moved == target) {
        m_log.warning(
            "Rejected reorder with missing, identical, completed, or cross-board entries");
        refuse(EntryServiceErrorCase::invalidReorder);
    }
    Entry* entry = *moved;
    active.erase(moved);
    auto place = positionOf(active, relativeTo);
    if (placement == model::EntryPlacement::after) {
        ++place;
    }
    active.insert(place, entry);
    persistOrder(active, board);
}

void EntryService::moveEntry(const base::Uuid& id, std::int64_t offset, model::Board& board) {
    const store::LockedStep step(*m_modelContext);
    validateBoard(board);
    auto active = activeEntries(board);
    const auto moved = positionOf(active, id);
    if (moved == active.end()) {
        refuse(EntryServiceErrorCase::invalidReorder);
    }
    const auto index = moved - active.begin();
    const auto count = static_cast<std::int64_t>(active.size());
    // Compared without adding, which could overflow.
    if (offset == 0 || offset < -index || offset >= count - index) {
        return;
    }
    moveEntry(id, active[static_cast<std::size_t>(index + offset)]->id(),
              offset > 0 ? model::EntryPlacement::after : model::EntryPlacement::before, board);
}

void EntryService::normalizeSortOrder(model::Board& board, SaveChanges saveChanges) {
    if (saveChanges == SaveChanges::no) {
        assignSortOrder(activeEntries(board), board);
        return;
    }
    const store::LockedStep step(*m_modelContext);
    validateBoard(board);
    persistOrder(activeEntries(board), board);
}

std::string EntryService::normalized(std::string_view content) {
    if (!model::EntryContentLimit::allows(content)) {
        refuse(EntryServiceErrorCase::contentTooLong);
    }
    const auto trimmed = base::trimmed(content);
    if (trimmed.empty()) {
        refuse(EntryServiceErrorCase::emptyContent);
    }
    return std::string(trimmed);
}

void EntryService::validateWritableStore() const {
    if (!m_modelContext->container().allowsSave()) {
        refuse(EntryServiceErrorCase::readOnlyStore);
    }
}

void EntryService::validateBoard(const model::Board& board) const {
    validateWritableStore();
    if (!board.isLive() || !m_modelContext->isStored(board)) {
        refuse(EntryServiceErrorCase::entryUnavailable);
    }
}

void EntryService::validate(const model::TodoSchedule& schedule,
                            const std::optional<base::Instant>& previousReminder,
                            base::Instant now) {
    if (!schedule.isValid()) {
        refuse(EntryServiceErrorCase::invalidSchedule);
    }
    if (schedule.reminderDate && *schedule.reminderDate <= now &&
        schedule.reminderDate != previousReminder) {
        refuse(EntryServiceErrorCase::pastReminder);
    }
}

Entry& EntryService::persisted(Entry& entry) const {
    validateWritableStore();
    if (!entry.isLive() || !m_modelContext->isStored(entry)) {
        refuse(EntryServiceErrorCase::entryUnavailable);
    }
    return entry;
}

Entry& EntryService::persistedTodo(Entry& entry) const {
    if (!persisted(entry).isTodo()) {
        refuse(EntryServiceErrorCase::entryUnavailable);
    }
    return entry;
}

std::optional<EntryService::Appending>
EntryService::appendingUnloaded(const model::Board& board) const {
    if (board.entriesAreLoaded() || m_modelContext->hasChanges()) {
        return std::nullopt;
    }
    using store::Condition;
    using Comparison = store::Condition::Comparison;
    const auto onBoard =
        Condition::compare(Entry::boardField, Comparison::equal, store::Value(board.id()));
    const auto isCompletedTodo =
        Condition::compare(Entry::isCompletedField, Comparison::equal,
                           store::Value(std::int64_t{1})) &&
        Condition::compare(Entry::typeRawValueField, Comparison::equal,
                           store::Value(std::string(rawValue(model::EntryType::todo))));
    std::vector<std::int64_t> orders;
    m_modelContext->fetchValues<Entry>({Entry::sortOrderField}, onBoard && !isCompletedTodo,
                                       [&](std::span<const store::Value> values) {
                                           orders.push_back(std::get<std::int64_t>(values.front()));
                                       });
    // Dense means that every place is taken once. Anything else needs a renumbering of all.
    const auto count = static_cast<std::int64_t>(orders.size());
    std::vector<bool> taken(orders.size());
    for (const std::int64_t order : orders) {
        if (order < 0 || order >= count || taken[static_cast<std::size_t>(order)]) {
            return std::nullopt;
        }
        taken[static_cast<std::size_t>(order)] = true;
    }
    auto completed = m_modelContext->fetch<Entry>({.condition = onBoard && isCompletedTodo});
    std::sort(completed.begin(), completed.end(),
              [](const Entry* left, const Entry* right) { return ordered(*left, *right); });
    return Appending{.activeCount = count, .completed = std::move(completed)};
}

void EntryService::persistOrder(std::span<Entry* const> entries, const model::Board& board) {
    assignSortOrder(entries, board);
    save();
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

void EntryService::discardFailedCreation() {
    // Takes the created entries out of the context and their board and gives every other entry its
    // former place; after a failed save that has been done already.
    m_modelContext->rollback();
}

void EntryService::todosChanged() {
    m_widgets->reloadTodoWidgets();
    m_reminders->requestReconcile();
}

} // namespace korvex::services
