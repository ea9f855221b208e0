#include "services/EntryService.h"

#include "base/Text.h"
#include "base/Utf16.h"
#include "richtext/stored/EntryText.h"

#include <algorithm>
#include <unordered_set>

namespace korvex::services {

using model::Entry;
using model::EntryServiceError;
using model::EntryServiceErrorCase;
using model::EntryType;

namespace {

/// The lines of a text behind each other, without what stands blank around them: a todo has one.
std::string onOneLine(std::u16string_view text) {
    // Line feed and its like, next line, line separator, paragraph separator.
    constexpr std::u16string_view kBreaks = u"\n\v\f\r\u0085\u2028\u2029";
    std::string joined;
    while (!text.empty()) {
        const auto end = std::min(text.find_first_of(kBreaks), text.size());
        const auto line = base::utf8(text.substr(0, end));
        if (const auto trimmed = base::trimmed(line); !trimmed.empty()) {
            joined.append(joined.empty() ? "" : " ").append(trimmed);
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return joined;
}

/// About how many bytes a record keeps.
std::size_t sizeOf(const backup::BackupDocument::EntryRecord& record) {
    return sizeof(record) + record.content.size() +
           (record.richTextData ? record.richTextData->size() : 0) +
           (record.attachmentData ? record.attachmentData->size() : 0);
}

} // namespace

void EntryService::completeTodo(Entry& given, base::Instant now,
                                std::optional<base::Instant> completedAt,
                                CompactOrder compactOrder) {
    const store::LockedStep step(*m_modelContext);
    Entry& entry = persisted(given, EntryType::todo);
    if (entry.isCompleted()) {
        return;
    }
    change({.name = "Complete Todo", .entries = {&entry}}, [&] {
        entry.setIsCompleted(true);
        entry.setCompletedAt(completedAt.value_or(now));
        entry.setUpdatedAt(now);
        if (compactOrder == CompactOrder::yes && entry.board()) {
            assignSortOrder(activeEntries(*entry.board()), *entry.board());
        }
    });
    m_reminders->removePending({&entry.id(), 1});
    todosChanged();
    logDone("Completed todo", entry.id());
}

void EntryService::restoreTodo(Entry& given, base::Instant now,
                               std::optional<std::int64_t> position) {
    const store::LockedStep step(*m_modelContext);
    Entry& entry = persisted(given, EntryType::todo);
    if (!entry.isCompleted()) {
        return;
    }
    change({.name = "Restore Todo", .entries = {&entry}}, [&] {
        std::vector<Entry*> active;
        if (const model::Board* board = entry.board()) {
            active = activeEntries(*board);
            const auto end = static_cast<std::int64_t>(active.size());
            const auto at = std::clamp(position.value_or(end), std::int64_t{0}, end);
            active.insert(active.begin() + at, &entry);
        }
        entry.setIsCompleted(false);
        entry.setCompletedAt(std::nullopt);
        entry.setUpdatedAt(now);
        if (const model::Board* board = entry.board()) {
            assignSortOrder(active, *board);
        }
    });
    todosChanged();
    logDone("Restored todo", entry.id());
}

void EntryService::updateTodo(Entry& given, std::string_view content, base::Instant now) {
    const store::LockedStep step(*m_modelContext);
    Entry& entry = persisted(given, EntryType::todo);
    auto text = normalized(content);
    change({.name = "Edit Todo", .entries = {&entry}}, [&] {
        entry.setContent(std::move(text));
        entry.setUpdatedAt(now);
    });
    todosChanged();
    logDone("Updated todo", entry.id());
}

void EntryService::updateSchedule(Entry& given, const model::TodoSchedule& schedule,
                                  base::Instant now) {
    validateWritableStore();
    const store::LockedStep step(*m_modelContext);
    Entry& entry = persisted(given, EntryType::todo);
    validate(schedule, entry.reminderDate(), now);
    change({.name = "Change Schedule", .entries = {&entry}}, [&] {
        entry.setSchedule(schedule);
        entry.setUpdatedAt(now);
    });
    m_reminders->removePending({&entry.id(), 1});
    todosChanged();
}

void EntryService::updateText(Entry& given, const richtext::AttributedString& rich,
                              base::Instant now) {
    const store::LockedStep step(*m_modelContext);
    Entry& entry = persisted(given, EntryType::text);
    auto text = stored(rich);
    if (!text) {
        deleteEntry(entry);
        return;
    }
    change({.name = "Edit Text", .entries = {&entry}},
           [&] { setText(entry, std::move(*text), now); });
    logDone("Updated text entry", entry.id());
}

void EntryService::changeType(Entry& given, EntryType type, base::Instant now) {
    const store::LockedStep step(*m_modelContext);
    Entry& entry = persisted(given);
    if (entry.type() == type) {
        return;
    }
    if (type == EntryType::todo) {
        becomeTodo(entry, now);
    } else {
        becomeText(entry, now);
        m_reminders->removePending({&entry.id(), 1});
    }
    todosChanged();
}

void EntryService::becomeTodo(Entry& entry, base::Instant now) {
    const auto text = richtext::wholeRichText(entry, m_serializer);
    if (!text) {
        throw EntryServiceError(EntryServiceErrorCase::contentTooLong);
    }
    auto content = normalized(onOneLine(text->text()));
    change({.name = "Change to Todo", .entries = {&entry}}, [&] {
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
    auto text = stored(richtext::RichTextSerializer::plainRichText(entry.content()));
    if (!text) {
        throw EntryServiceError(EntryServiceErrorCase::emptyContent);
    }
    const bool wasCompleted = entry.isCompleted();
    change({.name = "Change to Text", .entries = {&entry}}, [&] {
        setText(entry, std::move(*text), now);
        entry.setType(EntryType::text);
        entry.setIsCompleted(false);
        entry.setCompletedAt(std::nullopt);
        // It leaves the completed todos for the end of the active entries.
        if (const model::Board* board = entry.board(); board && wasCompleted) {
            assignSortOrder(activeEntries(*board), *board);
        }
    });
}

void EntryService::completeTodos(model::Board& board, base::Instant now) {
    const store::LockedStep step(*m_modelContext);
    validateBoard(board);
    const auto todos = activeTodos(board);
    if (todos.empty()) {
        return;
    }
    change({.name = "Complete Todos", .entries = todos}, [&] {
        for (Entry* const todo : todos) {
            todo->setIsCompleted(true);
            todo->setCompletedAt(now);
            todo->setUpdatedAt(now);
        }
        assignSortOrder(activeEntries(board), board);
    });
    std::vector<base::Uuid> ids;
    for (const Entry* const todo : todos) {
        ids.push_back(todo->id());
        logDone("Completed todo", todo->id());
    }
    m_reminders->removePending(ids);
    todosChanged();
}

void EntryService::deleteEntry(Entry& entry) {
    Entry* const entries[] = {&entry};
    deleteEntries(entries);
}

void EntryService::deleteEntries(std::span<Entry* const> given) {
    const store::LockedStep step(*m_modelContext);
    std::size_t cost = 0;
    std::vector<backup::BackupDocument::EntryRecord> records;
    for (Entry* const entry : given) {
        persisted(*entry);
        if (m_undoManager && entry->boardID()) {
            records.push_back(backup::recordOf(*entry, *entry->boardID()));
            cost += sizeOf(records.back());
            // What is deleted lives on as a shell: not with megabytes in it.
            entry->forgetAttachmentData();
        }
    }
    remove(given);
    for (const Entry* const entry : given) {
        logDone("Deleted entry", entry->id());
    }
    if (!records.empty()) {
        const auto name = given.size() == 1 ? "Delete Entry" : "Delete Entries";
        registerUndo(name, cost, [records = std::move(records), name](EntryService& service) {
            service.restoreDeleted(name, records);
        });
    }
}

void EntryService::deleteEntries(model::Board& board) {
    const store::LockedStep step(*m_modelContext);
    validateBoard(board);
    remove(board.entries());
}

void EntryService::remove(std::span<Entry* const> entries) {
    std::vector<base::Uuid> todos;
    std::unordered_set<model::Board*> boards;
    for (const Entry* entry : entries) {
        if (entry->isTodo()) {
            todos.push_back(entry->id());
        }
        if (entry->board()) {
            boards.insert(entry->board());
        }
    }
    change([&] {
        for (Entry* entry : entries) {
            m_modelContext->remove(*entry);
        }
        for (const model::Board* board : boards) {
            assignSortOrder(activeEntries(*board), *board);
        }
    });
    m_reminders->removePending(todos);
    todosChanged();
}

} // namespace korvex::services
