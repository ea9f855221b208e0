#include "services/EntryService.h"

#include "base/Text.h"
#include "base/Utf16.h"
#include "richtext/stored/EntryText.h"
#include "services/EntryContent.h"
#include "services/EntryNumbering.h"
#include "services/EntryOrder.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace korvex::services {

using model::Entry;
using model::EntryServiceError;
using model::EntryServiceErrorCase;
using model::EntryType;

namespace {

std::string notSaved(const base::Error& error) {
    return "Entry persistence failed; rolled back: " + error.errorDescription() + " (" +
           std::to_string(error.code()) + ")";
}

/// The lines of a text behind each other, without what stands blank around them: a todo has one.
std::string joinedLines(std::u16string_view text) {
    const auto bytes = base::utf8(text);
    std::string joined;
    for (const auto line : base::filledLines(bytes)) {
        joined.append(joined.empty() ? "" : " ").append(line);
    }
    return joined;
}

std::vector<Entry*>::iterator positionOf(std::vector<Entry*>& entries, const base::Uuid& id) {
    return std::find_if(entries.begin(), entries.end(),
                        [&](const Entry* entry) { return entry->id() == id; });
}

} // namespace

EntryService::EntryService(store::ModelContext& context, ReminderReconciling& reminders,
                           WidgetReloading& widgets, base::LogSink& log, UndoManager* undoManager)
    : m_writer(context, base::Logger(log, "EntryService"), notSaved),
      m_listeners(context, reminders, widgets),
      m_changes(m_writer, m_listeners, undoManager),
      m_serializer(log) {}

Entry& EntryService::persisted(Entry& given, EntryType type) const {
    auto& entry = m_writer.persisted(given);
    if (entry.type() != type) {
        RecordWriter::refuseUnavailable();
    }
    return entry;
}

void EntryService::completeTodo(Entry& given, base::Instant now,
                                std::optional<base::Instant> completedAt) {
    const store::LockedStep step(m_writer.context());
    auto& entry = persisted(given, EntryType::todo);
    if (entry.isOpenTodo()) {
        complete("Complete Todo", {&entry}, completedAt.value_or(now), now);
    }
}

void EntryService::completeTodos(std::span<Entry* const> todos, base::Instant now) {
    const store::LockedStep step(m_writer.context());
    std::vector<Entry*> open;
    for (auto* const todo : todos) {
        if (auto& entry = persisted(*todo, EntryType::todo); entry.isOpenTodo()) {
            open.push_back(&entry);
        }
    }
    complete("Complete Todos", open, now, now);
}

void EntryService::completeTodos(model::Board& board, base::Instant now) {
    const store::LockedStep step(m_writer.context());
    complete("Complete Todos", activeTodos(m_writer.persisted(board)), now, now);
}

void EntryService::complete(std::string_view name, const std::vector<Entry*>& todos,
                            base::Instant completedAt, base::Instant now) {
    if (todos.empty()) {
        return;
    }
    m_changes.make({.name = name, .entries = todos}, [&] {
        for (auto* const todo : todos) {
            todo->setIsCompleted(true);
            todo->setCompletedAt(completedAt);
            todo->setUpdatedAt(now);
        }
        for (const auto* const board : boardsOf(todos)) {
            normalizeSortOrder(*board);
        }
    });
    std::vector<base::Uuid> ids;
    ids.reserve(todos.size());
    for (const auto* const todo : todos) {
        ids.push_back(todo->id());
    }
    m_listeners.todosChanged(ids);
    for (const auto& id : ids) {
        m_writer.logDone("Completed todo", id);
    }
}

void EntryService::restoreTodo(Entry& given, base::Instant now,
                               std::optional<std::int64_t> position) {
    const store::LockedStep step(m_writer.context());
    auto& entry = persisted(given, EntryType::todo);
    if (!entry.isCompleted()) {
        return;
    }
    m_changes.make({.name = "Restore Todo", .entries = {&entry}}, [&] {
        entry.setIsCompleted(false);
        entry.setCompletedAt(std::nullopt);
        entry.setUpdatedAt(now);
        if (auto* const board = entry.board()) {
            putInPlace({&entry, board, position.value_or(PlacedEntry::kAtEnd)});
        }
    });
    m_listeners.todosChanged();
    m_writer.logDone("Restored todo", entry.id());
}

void EntryService::updateTodo(Entry& given, std::string_view content, base::Instant now,
                              EditingSession* session) {
    const store::LockedStep step(m_writer.context());
    auto& entry = persisted(given, EntryType::todo);
    auto text = normalized(content);
    m_changes.make({.name = "Edit Todo", .entries = {&entry}, .session = session}, [&] {
        entry.setContent(std::move(text));
        entry.setUpdatedAt(now);
    });
    m_listeners.todosChanged();
    m_writer.logDone("Updated todo", entry.id());
}

void EntryService::updateSchedule(Entry& given, const model::TodoSchedule& schedule,
                                  base::Instant now) {
    m_writer.validateWritableStore();
    const store::LockedStep step(m_writer.context());
    auto& entry = persisted(given, EntryType::todo);
    const auto reminder = entry.reminderDate();
    validate(schedule, reminder, now);
    m_changes.make({.name = "Change Schedule", .entries = {&entry}}, [&] {
        entry.setSchedule(schedule);
        entry.setUpdatedAt(now);
    });
    // One that has come and still stands may be shown, or be about to be: nothing would plan it
    // again.
    const std::size_t withdrawn = reminder == schedule.reminderDate ? 0 : 1;
    m_listeners.todosChanged({&entry.id(), withdrawn});
}

void EntryService::updateText(Entry& given, const richtext::AttributedString& rich,
                              base::Instant now, EditingSession* session) {
    const store::LockedStep step(m_writer.context());
    auto& entry = persisted(given, EntryType::text);
    auto text = stored(rich, m_serializer);
    if (!text) {
        deleteEntry(entry);
        return;
    }
    m_changes.make({.name = "Edit Text", .entries = {&entry}, .session = session},
                   [&] { setText(entry, std::move(*text), now); });
    m_writer.logDone("Updated text entry", entry.id());
}

void EntryService::changeType(Entry& given, EntryType type, base::Instant now) {
    const store::LockedStep step(m_writer.context());
    auto& entry = m_writer.persisted(given);
    if (entry.type() == type) {
        return;
    }
    if (type == EntryType::todo) {
        becomeTodo(entry, now);
        m_listeners.todosChanged();
    } else {
        becomeText(entry, now);
        m_listeners.todosChanged({&entry.id(), 1});
    }
}

void EntryService::becomeTodo(Entry& entry, base::Instant now) {
    const auto text = richtext::wholeRichText(entry, m_serializer);
    if (!text) {
        throw EntryServiceError(EntryServiceErrorCase::contentTooLong);
    }
    auto content = normalized(joinedLines(text->text()));
    m_changes.make({.name = "Change to Todo", .entries = {&entry}}, [&] {
        entry.setType(EntryType::todo);
        entry.setContent(std::move(content));
        entry.setRichTextData(std::nullopt);
        entry.setIsCompleted(false);
        entry.setCompletedAt(std::nullopt);
        entry.setUpdatedAt(now);
        // Only a store from elsewhere holds a schedule that no todo may have.
        if (!entry.schedule().isValid()) {
            entry.setSchedule({});
        }
    });
}

void EntryService::becomeText(Entry& entry, base::Instant now) {
    auto text = stored(richtext::RichTextSerializer::plainRichText(entry.content()), m_serializer);
    if (!text) {
        throw EntryServiceError(EntryServiceErrorCase::emptyContent);
    }
    const auto wasCompleted = entry.isCompleted();
    m_changes.make({.name = "Change to Text", .entries = {&entry}}, [&] {
        setText(entry, std::move(*text), now);
        entry.setType(EntryType::text);
        entry.setIsCompleted(false);
        entry.setCompletedAt(std::nullopt);
        // It leaves the completed todos for the end of the active entries.
        if (const auto* const board = entry.board(); board && wasCompleted) {
            normalizeSortOrder(*board);
        }
    });
}

void EntryService::deleteEntry(Entry& entry) {
    Entry* const entries[] = {&entry};
    deleteEntries(entries);
}

void EntryService::deleteEntries(std::span<Entry* const> given) {
    const store::LockedStep step(m_writer.context());
    std::vector<Entry*> entries;
    for (const auto* const entry : given) {
        entries.push_back(&m_writer.persisted(*entry));
    }
    m_changes.remove(entries);
}

void EntryService::deleteEntries(model::Board& board) {
    const store::LockedStep step(m_writer.context());
    m_changes.removeForGood(m_writer.persisted(board).entries());
}

Entry& EntryService::restoreDeletedEntry(const backup::BackupDocument::EntryRecord& record) {
    const UndoableChanges::Deleted deleted{.record = record};
    return *m_changes.restore("Delete Entry", {&deleted, 1}).front();
}

void EntryService::moveEntry(Entry& given, model::Board& givenTo, base::Instant now,
                             std::optional<std::int64_t> position) {
    const store::LockedStep step(m_writer.context());
    auto& entry = m_writer.persisted(given);
    auto& to = m_writer.persisted(givenTo);
    m_changes.make({.name = "Move to Board", .entries = {&entry}}, [&] {
        entry.setUpdatedAt(now);
        putInPlace(position ? placed(entry, to, *position) : PlacedEntry{&entry, &to});
    });
    m_listeners.todosChanged();
}

void EntryService::moveEntry(const base::Uuid& id, const base::Uuid& relativeTo,
                             model::EntryPlacement placement, model::Board& given) {
    const store::LockedStep step(m_writer.context());
    const auto& board = m_writer.persisted(given);
    auto active = activeEntries(board);
    const auto moved = positionOf(active, id);
    const auto target = positionOf(active, relativeTo);
    if (moved == active.end() || target == active.end() || moved == target) {
        m_writer.log().warning(
            "Rejected reorder with missing, identical, completed, or cross-board entries");
        throw EntryServiceError(EntryServiceErrorCase::invalidReorder);
    }
    auto* const entry = *moved;
    active.erase(moved);
    auto place = positionOf(active, relativeTo);
    if (placement == model::EntryPlacement::after) {
        ++place;
    }
    active.insert(place, entry);
    m_changes.make({.name = "Move Entry", .entries = {entry}},
                   [&] { assignSortOrder(active, board); });
}

void EntryService::moveEntry(const base::Uuid& id, std::int64_t offset, model::Board& given) {
    const store::LockedStep step(m_writer.context());
    auto& board = m_writer.persisted(given);
    auto active = activeEntries(board);
    const auto moved = positionOf(active, id);
    if (moved == active.end()) {
        throw EntryServiceError(EntryServiceErrorCase::invalidReorder);
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

} // namespace korvex::services
