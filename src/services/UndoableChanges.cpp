#include "services/UndoableChanges.h"

#include "model/EntryAttachment.h"
#include "model/ServiceErrors.h"
#include "services/EntryNumbering.h"

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
            for (const auto* const entry : undoable.entries) {
                if (auto made = EntryChange::pendingOf(*entry); !made.isEmpty()) {
                    changes.push_back(std::move(made));
                }
            }
        }
    });
    if (changes.empty()) {
        return;
    }
    std::size_t cost = 0;
    std::vector<base::Uuid> ids;
    for (const auto& each : changes) {
        cost += each.cost();
        ids.push_back(each.id());
    }
    registerUndo(undoable.name, cost, std::move(ids),
                 [changes = std::move(changes), name = undoable.name](const auto& self) {
                     self.takeBack(name, changes);
                 });
}

void UndoableChanges::registerUndo(std::string_view name, std::size_t cost,
                                   std::vector<base::Uuid> entries, Inverse inverse) const {
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
        },
        std::move(entries));
}

void UndoableChanges::takeBack(std::string_view name, std::span<const EntryChange> changes) const {
    const store::LockedStep step(m_writer.context());
    std::vector<Entry*> entries;
    for (const auto& each : changes) {
        entries.push_back(&m_writer.persisted(m_writer.entry(each.id())));
        if (each.isWrittenOver(*entries.back())) {
            throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
        }
        if (each.place()) {
            m_writer.validateBoard(m_writer.board(each.place()->board));
        }
    }
    make({.name = name, .entries = entries}, [&] {
        std::vector<PlacedEntry> places;
        for (std::size_t i = 0; i < changes.size(); ++i) {
            auto& entry = *entries[i];
            if (const auto& place = changes[i].place();
                place && changes[i].isWhereItWasPut(entry)) {
                places.push_back({.entry = &entry,
                                  .board = &m_writer.board(place->board),
                                  .sortOrder = place->sortOrder});
            }
            changes[i].takeBackFields(entry);
        }
        putInPlace(places);
    });
    std::vector<base::Uuid> ids;
    for (std::size_t i = 0; i < changes.size(); ++i) {
        ids.push_back(entries[i]->id());
        m_writer.logDone(takenBackLine(*entries[i], changes[i]), entries[i]->id());
    }
    // Whoever still needs one gets it again from the reconciliation.
    m_listeners.todosChanged(ids);
}

void UndoableChanges::remove(std::span<Entry* const> entries) const {
    std::size_t cost = 0;
    std::vector<base::Uuid> ids;
    std::vector<BackupDocument::EntryRecord> records;
    if (m_undoManager) {
        for (const auto* const entry : entries) {
            if (const auto board = entry->boardID()) {
                records.push_back(backup::recordOf(*entry, *board));
                cost += sizeOf(records.back());
                ids.push_back(entry->id());
                // What is deleted lives on as a shell: not with megabytes in it.
                entry->forgetAttachmentData();
            }
        }
    }
    removeForGood(entries);
    for (const auto* const entry : entries) {
        m_writer.logDone("Deleted entry", entry->id());
    }
    if (!records.empty()) {
        const auto* const name = entries.size() == 1 ? "Delete Entry" : "Delete Entries";
        registerUndo(name, cost, std::move(ids),
                     [records = std::move(records), name](const auto& self) {
                         self.restore(name, records);
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

std::vector<Entry*>
UndoableChanges::restore(std::string_view name,
                         std::span<const BackupDocument::EntryRecord> records) const {
    m_writer.validateWritableStore();
    const store::LockedStep step(m_writer.context());
    for (const auto& record : records) {
        m_writer.validateBoard(m_writer.board(record.boardID));
        if (m_writer.context().find<Entry>(record.id)) {
            throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
        }
    }
    std::vector<Entry*> restored;
    m_writer.change([&] {
        std::vector<PlacedEntry> places;
        for (const auto& record : records) {
            auto& board = m_writer.board(record.boardID);
            auto entry = std::make_unique<Entry>(fieldsOf(record));
            entry->setBoard(&board);
            restored.push_back(&m_writer.context().insert(std::move(entry)));
            places.push_back(
                {.entry = restored.back(), .board = &board, .sortOrder = record.sortOrder});
        }
        putInPlace(places);
    });
    for (const auto* const entry : restored) {
        m_writer.logDone("Restored deleted entry", entry->id());
    }
    m_listeners.todosChanged();
    registerCreation(name, restored);
    return restored;
}

} // namespace korvex::services
