#include "services/UndoableChanges.h"

#include "model/EntryAttachment.h"
#include "services/EntryContent.h"
#include "services/EntryNumbering.h"
#include "services/EntryPlaces.h"

#include <optional>
#include <utility>

namespace korvex::services {

using backup::BackupDocument;
using model::Entry;

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

/// As it is written today.
model::EntryFields restoredFields(const BackupDocument::EntryRecord& record) {
    auto fields = backup::fieldsOf(record);
    fields.typeRawValue = rawValue(model::entryType(record.type));
    fields.attachmentData.bytes = encodedAnew(record.attachmentData);
    return fields;
}

/// They are in the store, and may be megabytes.
void forgetAttachments(std::span<Entry* const> entries) {
    for (const auto* const entry : entries) {
        entry->forgetAttachmentData();
    }
}

/// The reminder that is pending for the entry, if there is one.
std::optional<base::Instant> pendingReminder(const Entry& entry) {
    return entry.isOpenTodo() ? entry.reminderDate() : std::nullopt;
}

/// Takes the changes of several entries back, and knows what is then to be told of them.
class TakingBack {
public:
    TakingBack(const RecordWriter& writer, base::Instant now) : m_writer(writer), m_now(now) {}

    /// All but the place, which waits until every entry is in the list that it belongs to.
    void takeBack(const EntryChange& change, Entry& entry) {
        const auto place = change.placeToGiveBack(entry);
        const auto reminder = pendingReminder(entry);
        const auto wasActive = entry.isActive();
        const auto wasTodo = entry.isTodo();
        if (change.takeBackFields(entry) == EntryChange::TakenBack::amongOthers) {
            validateChanged(entry);
        }
        if (place) {
            m_places.push_back({.entry = &entry,
                                .board = &m_writer.persisted<model::Board>(place->board),
                                .index = place->index});
        } else if (entry.isActive() != wasActive) {
            m_unplaced.push_back(&entry);
        }
        m_hasTodos = m_hasTodos || wasTodo || entry.isTodo();
        if (reminder && pendingReminder(entry) != reminder) {
            m_withoutReminder.push_back(entry.id());
        }
        if (place || entry.hasChanges()) {
            m_lines.emplace_back(lineFor(change, entry), entry.id());
            if (change.setsUpdatedAt()) {
                entry.setUpdatedAt(m_now);
            }
        }
    }

    void settlePlaces() {
        putInPlace(m_places);
        // Another has put them on another board: there they join the list that is now theirs.
        for (const auto* const board : boardsOf(m_unplaced)) {
            normalizeSortOrder(*board);
        }
    }

    void log() const {
        for (const auto& [line, id] : m_lines) {
            m_writer.logDone(line, id);
        }
    }
    bool hasTodos() const { return m_hasTodos; }
    const std::vector<base::Uuid>& withoutReminder() const { return m_withoutReminder; }

private:
    static std::string_view lineFor(const EntryChange& change, const Entry& entry) {
        if (change.isCompletion()) {
            return entry.isCompleted() ? "Completed todo" : "Restored todo";
        }
        return entry.isTodo() ? "Updated todo" : "Updated text entry";
    }

    const RecordWriter& m_writer;
    base::Instant m_now;
    std::vector<PlacedEntry> m_places;
    std::vector<Entry*> m_unplaced;
    std::vector<base::Uuid> m_withoutReminder;
    std::vector<std::pair<std::string_view, base::Uuid>> m_lines;
    bool m_hasTodos = false;
};

} // namespace

void UndoableChanges::make(const Undoable& undoable,
                           const std::function<void()>& makeChange) const {
    std::vector<EntryChange> changes;
    const auto textBefore = undoable.session ? textOf(*undoable.entries.front()) : 0;
    m_writer.change([&] {
        makeChange();
        if (m_undoManager) {
            changes = EntryChange::pendingOf(m_writer.context(), undoable.entries);
        }
    });
    if (changes.empty()) {
        return;
    }
    if (undoable.session) {
        registerEdit(undoable, std::move(changes.front()), textBefore);
        return;
    }
    std::size_t cost = 0;
    std::vector<base::Uuid> ids;
    for (const auto& each : changes) {
        cost += each.cost();
        ids.push_back(each.id());
    }
    registerUndo(undoable.name, cost, std::move(ids),
                 [changes = std::move(changes), name = undoable.name](const auto& self, auto now) {
                     self.takeBack(name, changes, now);
                 });
}

UndoManager::StepId UndoableChanges::registerUndo(std::string_view name, std::size_t cost,
                                                  std::vector<base::Uuid> entries,
                                                  Inverse inverse) const {
    if (!m_undoManager) {
        return 0;
    }
    return m_undoManager->registerUndo(
        std::string(name), cost,
        [self = *this, inverse = std::move(inverse), name = std::string(name)](base::Instant now) {
            try {
                inverse(self, now);
            } catch (const base::Error& error) {
                self.m_writer.log().error(name + " undo failed: " + error.errorDescription() +
                                          " (" + std::to_string(error.code()) + ")");
                throw;
            }
        },
        std::move(entries));
}

void UndoableChanges::takeBack(std::string_view name, std::span<const EntryChange> changes,
                               base::Instant now) const {
    const store::LockedStep step(m_writer.context());
    std::vector<const EntryChange*> remainingChanges;
    std::vector<Entry*> entries;
    for (const auto& each : changes) {
        if (auto* const entry = remaining(each.id())) {
            if (each.isWrittenOver(*entry)) {
                RecordWriter::refuseUnavailable();
            }
            remainingChanges.push_back(&each);
            entries.push_back(entry);
        }
    }
    if (entries.empty()) {
        RecordWriter::refuseUnavailable();
    }
    m_undoManager->leaveOut(changes.size() - entries.size());
    TakingBack taking(m_writer, now);
    make({.name = name, .entries = entries}, [&] {
        for (std::size_t i = 0; i < entries.size(); ++i) {
            taking.takeBack(*remainingChanges[i], *entries[i]);
        }
        taking.settlePlaces();
    });
    forgetAttachments(entries);
    taking.log();
    if (taking.hasTodos()) {
        m_listeners.todosChanged(taking.withoutReminder());
    }
}

Entry* UndoableChanges::remaining(const base::Uuid& id) const {
    m_writer.validateWritableStore();
    const auto* const known = m_writer.context().find<Entry>(id);
    return known ? m_writer.context().stored(*known) : nullptr;
}

void UndoableChanges::remove(std::string_view name, std::span<Entry* const> entries) const {
    std::size_t cost = 0;
    std::vector<base::Uuid> ids;
    std::vector<Deleted> deleted;
    if (m_undoManager) {
        const auto places = formerPlaces(m_writer.context(), entries);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            if (places[i]) {
                deleted.push_back({.record = backup::recordOf(*entries[i], places[i]->board),
                                   .index = places[i]->index});
                cost += sizeOf(deleted.back().record);
                ids.push_back(entries[i]->id());
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
        registerUndo(name, cost, std::move(ids),
                     [deleted = std::move(deleted), name](const auto& self, base::Instant) {
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
            RecordWriter::refuseUnavailable();
        }
    }
    std::vector<Entry*> restored;
    m_writer.change([&] {
        std::vector<PlacedEntry> places;
        for (std::size_t i = 0; i < deleted.size(); ++i) {
            const auto& [record, index] = deleted[i];
            auto entry = std::make_unique<Entry>(restoredFields(record));
            entry->setBoard(boards[i]);
            restored.push_back(&m_writer.context().insert(std::move(entry)));
            places.push_back(index ? PlacedEntry{restored.back(), boards[i], *index}
                                   : placed(*restored.back(), *boards[i], record.sortOrder));
        }
        putInPlace(places);
    });
    for (const auto* const entry : restored) {
        m_writer.logDone("Restored deleted entry", entry->id());
    }
    m_listeners.todosChanged();
    registerCreation(name, restored);
    forgetAttachments(restored);
    return restored;
}

} // namespace korvex::services
