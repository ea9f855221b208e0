#include "services/UndoableChanges.h"

#include "model/EntryAttachment.h"
#include "model/ServiceErrors.h"
#include "services/EntryContent.h"
#include "services/EntryNumbering.h"
#include "services/EntryPlaces.h"

#include <optional>
#include <utility>

namespace korvex::services {

using backup::BackupDocument;
using model::Entry;
using model::EntryServiceError;
using model::EntryServiceErrorCase;

namespace {

/// About how many bytes a record keeps.
std::size_t sizeOf(const BackupDocument::EntryRecord& record) {
    return sizeof(record) + record.content.size() +
           (record.richTextData ? record.richTextData->size() : 0) +
           (record.attachmentData ? record.attachmentData->size() : 0);
}

/// The attachments of a record in the form that is written today.
std::optional<base::Bytes> encodedAnew(const std::optional<base::Bytes>& attachments) {
    try {
        return model::EntryAttachment::encode(model::EntryAttachment::decode(attachments));
    } catch (const model::AttachmentError&) {
        // They could not be read before the deletion either: they come back as they were.
        return attachments;
    }
}

model::EntryFields fieldsOf(const BackupDocument::EntryRecord& record) {
    return {.id = record.id,
            .typeRawValue = std::string(rawValue(model::entryType(record.type))),
            .content = record.content,
            .richTextData = record.richTextData,
            .attachmentData = {.isRead = true, .bytes = encodedAnew(record.attachmentData)},
            .createdAt = record.createdAt,
            .updatedAt = record.updatedAt,
            .sortOrder = record.sortOrder,
            .isCompleted = record.isCompleted,
            .completedAt = record.completedAt,
            .dueDay = record.dueDay,
            .dueDate = record.dueDate,
            .dueStartDate = record.dueStartDate,
            .reminderDate = record.reminderDate};
}

[[noreturn]] void refuse() {
    throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
}

/// The reminder that is pending for the entry, if there is one.
std::optional<base::Instant> pendingReminder(const Entry& entry) {
    return entry.isOpenTodo() ? entry.reminderDate() : std::nullopt;
}

std::string_view takenBackLine(const Entry& entry, const EntryChange& change) {
    if (change.isCompletion()) {
        return entry.isCompleted() ? "Completed todo" : "Restored todo";
    }
    return entry.isTodo() ? "Updated todo" : "Updated text entry";
}

} // namespace

void UndoableChanges::make(const Undoable& undoable,
                           const std::function<void()>& makeChange) const {
    std::vector<EntryChange> changes;
    m_writer.change([&] {
        makeChange();
        if (m_undoManager) {
            changes = EntryChange::pendingOf(m_writer.context(), undoable.entries);
        }
    });
    if (changes.empty()) {
        return;
    }
    std::size_t cost = 0;
    for (const auto& each : changes) {
        cost += each.cost();
    }
    registerUndo(undoable.name, cost,
                 [changes = std::move(changes), name = undoable.name](const auto& self) {
                     self.takeBack(name, changes);
                 });
}

void UndoableChanges::registerUndo(std::string_view name, std::size_t cost, Inverse inverse) const {
    if (!m_undoManager) {
        return;
    }
    m_undoManager->registerUndo(
        std::string(name), cost,
        [self = *this, inverse = std::move(inverse), name = std::string(name)] {
            try {
                inverse(self);
            } catch (const base::Error& error) {
                self.m_writer.log().error(name + " undo failed: " + error.errorDescription() +
                                          " (" + std::to_string(error.code()) + ")");
                throw;
            }
        });
}

void UndoableChanges::takeBack(std::string_view name, std::span<const EntryChange> changes) const {
    const store::LockedStep step(m_writer.context());
    std::vector<Entry*> entries;
    for (const auto& each : changes) {
        entries.push_back(&m_writer.persisted<Entry>(each.id()));
        if (each.isWrittenOver(*entries.back())) {
            refuse();
        }
    }
    std::vector<base::Uuid> withoutReminder;
    auto areTodos = false;
    std::vector<std::string_view> lines(entries.size());
    make({.name = name, .entries = entries}, [&] {
        std::vector<PlacedEntry> places;
        std::vector<Entry*> unplaced;
        for (std::size_t i = 0; i < changes.size(); ++i) {
            auto& entry = *entries[i];
            const auto place = changes[i].placeToGiveBack(entry);
            const auto reminder = pendingReminder(entry);
            const auto wasActive = entry.isActive();
            areTodos = areTodos || entry.isTodo();
            changes[i].takeBackFields(entry);
            validateChanged(entry);
            areTodos = areTodos || entry.isTodo();
            if (reminder && pendingReminder(entry) != reminder) {
                withoutReminder.push_back(entry.id());
            }
            if (place) {
                places.push_back({.entry = &entry,
                                  .board = &m_writer.persisted<model::Board>(place->board),
                                  .index = place->index});
            } else if (entry.isActive() != wasActive) {
                unplaced.push_back(&entry);
            }
            if (place || entry.hasChanges()) {
                lines[i] = takenBackLine(entry, changes[i]);
            }
        }
        putInPlace(places);
        for (const auto* const board : boardsOf(unplaced)) {
            normalizeSortOrder(*board);
        }
    });
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (!lines[i].empty()) {
            m_writer.logDone(lines[i], entries[i]->id());
        }
    }
    if (areTodos) {
        m_listeners.todosChanged(withoutReminder);
    }
}

void UndoableChanges::remove(std::span<Entry* const> entries) const {
    std::size_t cost = 0;
    std::vector<Deleted> deleted;
    if (m_undoManager) {
        const auto places = formerPlaces(m_writer.context(), entries);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (places[i]) {
                deleted.push_back({.record = backup::recordOf(*entries[i], places[i]->board),
                                   .index = places[i]->index});
                cost += sizeOf(deleted.back().record);
                // What is deleted lives on as a shell: not with megabytes in it.
                entries[i]->forgetAttachmentData();
            }
        }
    }
    removeForGood(entries);
    for (const auto* const entry : entries) {
        m_writer.logDone("Deleted entry", entry->id());
    }
    if (!deleted.empty()) {
        const auto* const name = entries.size() == 1 ? "Delete Entry" : "Delete Entries";
        registerUndo(name, cost, [deleted = std::move(deleted), name](const auto& self) {
            self.restore(name, deleted);
        });
    }
}

void UndoableChanges::removeForGood(std::span<Entry* const> entries) const {
    std::vector<base::Uuid> todos;
    for (const auto* const entry : entries) {
        if (entry->isTodo()) {
            todos.push_back(entry->id());
        }
    }
    const auto boards = boardsOf(entries);
    m_writer.change([&] {
        for (auto* const entry : entries) {
            m_writer.context().remove(*entry);
        }
        for (const auto* const board : boards) {
            normalizeSortOrder(*board);
        }
    });
    m_listeners.todosChanged(todos);
}

std::vector<Entry*> UndoableChanges::restore(std::string_view name,
                                             std::span<const Deleted> deleted) const {
    m_writer.validateWritableStore();
    const store::LockedStep step(m_writer.context());
    std::vector<model::Board*> boards;
    for (const auto& each : deleted) {
        boards.push_back(&m_writer.persisted<model::Board>(each.record.boardID));
        if (m_writer.context().find<Entry>(each.record.id)) {
            refuse();
        }
    }
    std::vector<Entry*> restored;
    m_writer.change([&] {
        std::vector<PlacedEntry> places;
        for (std::size_t i = 0; i < deleted.size(); ++i) {
            const auto& [record, index] = deleted[i];
            auto entry = std::make_unique<Entry>(fieldsOf(record));
            entry->setBoard(boards[i]);
            restored.push_back(&m_writer.context().insert(std::move(entry)));
            places.push_back(index ? PlacedEntry{restored.back(), boards[i], *index}
                                   : placed(*restored.back(), *boards[i], record.sortOrder));
        }
        putInPlace(places);
    });
    std::vector<base::Uuid> ids;
    for (const auto* const entry : restored) {
        ids.push_back(entry->id());
        m_writer.logDone("Restored deleted entry", entry->id());
    }
    m_listeners.todosChanged();
    const auto cost = sizeof(base::Uuid) * ids.size();
    registerUndo(name, cost, [ids = std::move(ids)](const auto& self) { self.removeAgain(ids); });
    return restored;
}

void UndoableChanges::removeAgain(std::span<const base::Uuid> ids) const {
    const store::LockedStep step(m_writer.context());
    std::vector<Entry*> entries;
    for (const auto& id : ids) {
        entries.push_back(&m_writer.persisted<Entry>(id));
    }
    remove(entries);
}

} // namespace korvex::services
