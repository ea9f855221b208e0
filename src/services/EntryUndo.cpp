#include "services/EntryUndo.h"

#include "base/Digest.h"
#include "services/EntryService.h"

#include <algorithm>
#include <array>
#include <limits>
#include <unordered_set>

namespace korvex::services {

using backup::BackupDocument;
using model::Entry;
using model::EntryServiceError;
using model::EntryServiceErrorCase;

namespace {

/// What a person wrote or attached: never to be written over unseen.
constexpr std::array<std::size_t, 3> kWords{Entry::contentField, Entry::richTextDataField,
                                            Entry::attachmentDataField};
/// Given back with the entry's place.
constexpr std::array<std::size_t, 2> kPlace{Entry::sortOrderField, Entry::boardField};
constexpr std::size_t kFieldCount = Entry::boardField + 1;

bool isOneOf(std::span<const std::size_t> fields, std::size_t field) {
    return std::find(fields.begin(), fields.end(), field) != fields.end();
}

/// By which a value is known again without keeping it.
store::Value witness(const store::Value& value) {
    std::span<const std::uint8_t> bytes;
    if (const auto* const text = std::get_if<std::string>(&value)) {
        bytes = {reinterpret_cast<const std::uint8_t*>(text->data()), text->size()};
    } else if (const auto* const data = std::get_if<base::Bytes>(&value)) {
        bytes = *data;
    } else {
        return value;
    }
    return static_cast<std::int64_t>(base::checksum(bytes));
}

std::size_t sizeOf(const store::Value& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) {
        return text->size();
    }
    if (const auto* const data = std::get_if<base::Bytes>(&value)) {
        return data->size();
    }
    return 0;
}

bool isStillOurs(const Entry& entry, const EntryChange::Field& field) {
    return witness(entry.value(field.index)) == field.after;
}

} // namespace

std::size_t EntryChange::cost() const {
    std::size_t bytes = sizeof(EntryChange);
    for (const auto& field : fields) {
        bytes += sizeof(Field) + sizeOf(field.before);
    }
    return bytes;
}

void EntryService::change(const Undoable& undoable, const std::function<void()>& makeChange) {
    std::vector<EntryChange> changes;
    change([&] {
        makeChange();
        if (m_undoManager) {
            for (const Entry* const entry : undoable.entries) {
                if (auto made = changeOf(*entry); !made.isEmpty()) {
                    changes.push_back(std::move(made));
                }
            }
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
                 [changes = std::move(changes), name = undoable.name](EntryService& service) {
                     service.takeBack(name, changes);
                 });
}

EntryChange EntryService::changeOf(const Entry& entry) {
    EntryChange change{
        .id = entry.id(), .boardAfter = entry.boardID(), .isActiveAfter = entry.isActive()};
    for (std::size_t field = 0; field < kFieldCount; ++field) {
        if (entry.isChanged(field) && !isOneOf(kPlace, field)) {
            change.fields.push_back({.index = field,
                                     .before = entry.originalValue(field),
                                     .after = witness(entry.value(field))});
        }
    }
    if (entry.isChanged(Entry::sortOrderField) || entry.isChanged(Entry::boardField)) {
        const auto board = entry.originalValue(Entry::boardField);
        if (const auto* const id = std::get_if<base::Uuid>(&board)) {
            change.place = {.board = *id,
                            .sortOrder =
                                std::get<std::int64_t>(entry.originalValue(Entry::sortOrderField))};
        }
    }
    return change;
}

void EntryService::registerUndo(std::string_view name, std::size_t cost,
                                std::function<void(EntryService&)> inverse) const {
    if (!m_undoManager) {
        return;
    }
    m_undoManager->registerUndo(
        std::string(name), cost,
        [service = *this, inverse = std::move(inverse), name = std::string(name)]() mutable {
            try {
                inverse(service);
            } catch (const base::Error& error) {
                service.m_log.error(name + " undo failed: " + error.errorDescription() + " (" +
                                    std::to_string(error.code()) + ")");
                throw;
            }
        });
}

void EntryService::takeBack(std::string_view name, std::span<const EntryChange> changes) {
    const store::LockedStep step(*m_modelContext);
    std::vector<Entry*> entries;
    for (const auto& each : changes) {
        auto* const entry = m_modelContext->find<Entry>(each.id);
        if (!entry) {
            throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
        }
        entries.push_back(&persisted(*entry));
        for (const auto& field : each.fields) {
            if (isOneOf(kWords, field.index) && !isStillOurs(*entry, field)) {
                throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
            }
        }
        if (each.place) {
            validateBoard(boardOf(each.place->board));
        }
    }
    std::vector<base::Uuid> withoutReminder;
    change({.name = name, .entries = entries}, [&] {
        std::vector<std::pair<Entry*, EntryPlace>> places;
        for (std::size_t i = 0; i < changes.size(); ++i) {
            Entry& entry = *entries[i];
            // What others have set since stays theirs.
            if (changes[i].place && entry.boardID() == changes[i].boardAfter &&
                entry.isActive() == changes[i].isActiveAfter) {
                places.emplace_back(&entry, *changes[i].place);
            }
            for (const auto& field : changes[i].fields) {
                if (isStillOurs(entry, field)) {
                    entry.setValue(field.index, field.before);
                }
            }
        }
        putInPlace(places);
    });
    for (std::size_t i = 0; i < changes.size(); ++i) {
        withoutReminder.push_back(entries[i]->id());
        logTakenBack(*entries[i], changes[i]);
    }
    // Whoever still needs one gets it again from the reconciliation.
    m_reminders->removePending(withoutReminder);
    todosChanged();
}

void EntryService::logTakenBack(const Entry& entry, const EntryChange& change) const {
    const bool isCompletion =
        std::any_of(change.fields.begin(), change.fields.end(),
                    [](const auto& field) { return field.index == Entry::isCompletedField; });
    if (isCompletion) {
        logDone(entry.isCompleted() ? "Completed todo" : "Restored todo", entry.id());
    } else {
        logDone(entry.isTodo() ? "Updated todo" : "Updated text entry", entry.id());
    }
}

model::Board& EntryService::boardOf(const base::Uuid& id) const {
    auto* const board = m_modelContext->find<model::Board>(id);
    if (!board) {
        throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
    }
    return *board;
}

void EntryService::putInPlace(std::span<const std::pair<Entry*, EntryPlace>> places) {
    std::unordered_set<const model::Board*> left;
    std::unordered_set<base::Uuid> moved;
    std::vector<std::pair<Entry*, EntryPlace>> ordered(places.begin(), places.end());
    std::stable_sort(ordered.begin(), ordered.end(), [](const auto& a, const auto& b) {
        return a.second.sortOrder < b.second.sortOrder;
    });
    for (const auto& [entry, place] : ordered) {
        moved.insert(entry->id());
        if (entry->board() && entry->boardID() != place.board) {
            left.insert(entry->board());
        }
    }
    std::vector<model::Board*> targets;
    for (const auto& [entry, place] : ordered) {
        model::Board& board = boardOf(place.board);
        entry->setBoard(&board);
        if (std::find(targets.begin(), targets.end(), &board) == targets.end()) {
            targets.push_back(&board);
        }
        left.erase(&board);
    }
    for (const model::Board* const board : targets) {
        auto active = activeEntries(*board);
        auto completed = completedInOrder(*board);
        const auto isMoved = [&](const Entry* entry) { return moved.contains(entry->id()); };
        std::erase_if(active, isMoved);
        std::erase_if(completed, isMoved);
        const auto put = [&](std::vector<Entry*>& list, std::int64_t position, Entry* entry) {
            const auto end = static_cast<std::int64_t>(list.size());
            list.insert(list.begin() + std::clamp(position, std::int64_t{0}, end), entry);
        };
        // The active ones first: only then is it known where the completed ones begin.
        for (const auto& [entry, place] : ordered) {
            if (entry->board() == board && entry->isActive()) {
                put(active, place.sortOrder, entry);
            }
        }
        const auto begin = static_cast<std::int64_t>(active.size());
        for (const auto& [entry, place] : ordered) {
            if (entry->board() == board && !entry->isActive()) {
                put(completed, std::max(place.sortOrder, begin) - begin, entry);
            }
        }
        numberFrom(0, active, completed);
    }
    for (const model::Board* const board : left) {
        assignSortOrder(activeEntries(*board), *board);
    }
}

Entry& EntryService::restoreDeletedEntry(const BackupDocument::EntryRecord& record) {
    return *restoreDeleted("Delete Entry", {&record, 1}).front();
}

std::vector<Entry*>
EntryService::restoreDeleted(std::string_view name,
                             std::span<const BackupDocument::EntryRecord> records) {
    validateWritableStore();
    const store::LockedStep step(*m_modelContext);
    for (const auto& record : records) {
        validateBoard(boardOf(record.boardID));
        if (m_modelContext->find<Entry>(record.id)) {
            throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
        }
    }
    std::vector<Entry*> restored;
    change([&] {
        std::vector<std::pair<Entry*, EntryPlace>> places;
        for (const auto& record : records) {
            auto entry = std::make_unique<Entry>(fieldsOf(record));
            entry->setBoard(&boardOf(record.boardID));
            restored.push_back(&m_modelContext->insert(std::move(entry)));
            places.emplace_back(restored.back(), EntryPlace{record.boardID, record.sortOrder});
        }
        putInPlace(places);
    });
    std::vector<base::Uuid> ids;
    for (const Entry* const entry : restored) {
        ids.push_back(entry->id());
        logDone("Restored deleted entry", entry->id());
    }
    todosChanged();
    const auto cost = sizeof(base::Uuid) * ids.size();
    registerUndo(name, cost,
                 [ids = std::move(ids)](EntryService& service) { service.deleteAgain(ids); });
    return restored;
}

void EntryService::deleteAgain(std::span<const base::Uuid> ids) {
    const store::LockedStep step(*m_modelContext);
    std::vector<Entry*> entries;
    for (const base::Uuid& id : ids) {
        entries.push_back(m_modelContext->find<Entry>(id));
        if (!entries.back()) {
            throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
        }
    }
    deleteEntries(entries);
}

model::EntryFields EntryService::fieldsOf(const BackupDocument::EntryRecord& record) {
    auto attachments = record.attachmentData;
    try {
        attachments = model::EntryAttachment::encode(model::EntryAttachment::decode(attachments));
    } catch (const model::AttachmentError&) {
        // They could not be read before the deletion either: they come back as they were.
    }
    return {.id = record.id,
            .typeRawValue = std::string(rawValue(model::entryType(record.type))),
            .content = record.content,
            .richTextData = record.richTextData,
            .attachmentData = {.isRead = true, .bytes = std::move(attachments)},
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

} // namespace korvex::services
