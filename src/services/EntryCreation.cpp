#include "services/EntryService.h"

#include "base/Text.h"
#include "base/Utf16.h"

#include <algorithm>
#include <utility>

namespace korvex::services {

using model::Entry;
using model::EntryServiceError;
using model::EntryServiceErrorCase;

std::vector<Entry*> EntryService::createTodos(const NewTodos& todos) {
    validate(todos.schedule, std::nullopt, todos.now);
    if (todos.contents.empty()) {
        throw EntryServiceError(EntryServiceErrorCase::emptyContent);
    }
    std::vector<std::string> contents;
    contents.reserve(todos.contents.size());
    for (const std::string& content : todos.contents) {
        contents.push_back(normalized(content));
    }
    if (contents.size() > 1 && !todos.attachments.empty()) {
        throw model::AttachmentError(model::AttachmentErrorCase::multipleTodos);
    }
    auto attachmentData = model::EntryAttachment::encode(todos.attachments);

    const store::LockedStep step(*m_modelContext);
    validateBoard(todos.board);
    auto found = place(todos.after, todos.before, todos.board);
    std::vector<Entry*> created;
    created.reserve(contents.size());
    change([&] {
        for (std::string& content : contents) {
            Entry& entry = insert({.typeRawValue = std::string(rawValue(model::EntryType::todo)),
                                   .content = std::move(content),
                                   .createdAt = todos.now},
                                  todos.board);
            entry.setSchedule(todos.schedule);
            entry.setAttachmentData(std::exchange(attachmentData, std::nullopt));
            created.push_back(&entry);
        }
        number(created, std::move(found), todos.board);
    });
    for (const Entry* entry : created) {
        entry->forgetAttachmentData();
        logDone("Created todo", entry->id());
    }
    todosChanged();
    return created;
}

Entry& EntryService::createText(const NewText& text) {
    const auto rich = accepted(text.rich);
    if (!rich) {
        throw EntryServiceError(EntryServiceErrorCase::emptyContent);
    }
    if (!text.attachments.empty() && richtext::RichTextSerializer::headingLevel(*rich)) {
        throw EntryServiceError(EntryServiceErrorCase::headingAttachments);
    }
    auto content = encoded(*rich);
    auto attachmentData = model::EntryAttachment::encode(text.attachments);
    const store::LockedStep step(*m_modelContext);
    validateBoard(text.board);
    auto found = place(text.after, text.before, text.board);
    Entry* created = nullptr;
    change([&] {
        created = &insertText(std::move(content), text.board, text.now);
        created->setAttachmentData(std::move(attachmentData));
        number({&created, 1}, std::move(found), text.board);
    });
    created->forgetAttachmentData();
    logDone("Created text entry", created->id());
    return *created;
}

Entry& EntryService::splitText(Entry& given, const richtext::AttributedString& before,
                               const richtext::AttributedString& after, base::Instant now) {
    const store::LockedStep step(*m_modelContext);
    Entry& entry = persisted(given, model::EntryType::text);
    auto kept = stored(before);
    auto moved = stored(after);
    if (!kept || !moved) {
        throw EntryServiceError(EntryServiceErrorCase::emptyContent);
    }
    model::Board* board = entry.board();
    if (!board) {
        throw EntryServiceError(EntryServiceErrorCase::entryUnavailable);
    }
    auto found = place(entry.id(), std::nullopt, *board);
    Entry* created = nullptr;
    change([&] {
        setText(entry, std::move(*kept), now);
        created = &insertText(std::move(*moved), *board, now);
        number({&created, 1}, std::move(found), *board);
    });
    logDone("Updated text entry", entry.id());
    logDone("Created text entry", created->id());
    return *created;
}

std::optional<richtext::AttributedString>
EntryService::accepted(const richtext::AttributedString& rich) {
    auto text = richtext::RichTextSerializer::normalized(rich);
    if (!richtext::RichTextSerializer::isWithinLimits(text.text())) {
        throw EntryServiceError(EntryServiceErrorCase::contentTooLong);
    }
    if (base::trimmed(base::utf8(text.text())).empty()) {
        return std::nullopt;
    }
    return text;
}

EntryService::StoredText EntryService::encoded(const richtext::AttributedString& text) const {
    return {.content = base::utf8(text.text()), .richTextData = m_serializer.encode(text)};
}

std::optional<EntryService::StoredText>
EntryService::stored(const richtext::AttributedString& rich) const {
    const auto text = accepted(rich);
    return text ? std::optional(encoded(*text)) : std::nullopt;
}

void EntryService::setText(Entry& entry, StoredText text, base::Instant now) {
    entry.setContent(std::move(text.content));
    entry.setRichTextData(std::move(text.richTextData));
    entry.setUpdatedAt(now);
}

EntryService::Place EntryService::place(const std::optional<base::Uuid>& after,
                                        const std::optional<base::Uuid>& before,
                                        const model::Board& board) const {
    Place found;
    if (!after && !before) {
        found.appending = appendingUnloaded(board);
    }
    if (!found.appending) {
        found.active = activeEntries(board);
        found.index = insertionIndex(after, before, found.active);
    }
    return found;
}

Entry& EntryService::insert(model::EntryFields fields, model::Board& board) {
    fields.id = base::Uuid::random();
    fields.updatedAt = fields.createdAt;
    auto entry = std::make_unique<Entry>(std::move(fields));
    entry->setBoard(&board);
    return m_modelContext->insert(std::move(entry));
}

Entry& EntryService::insertText(StoredText text, model::Board& board, base::Instant now) {
    return insert({.typeRawValue = std::string(rawValue(model::EntryType::text)),
                   .content = std::move(text.content),
                   .richTextData = std::move(text.richTextData),
                   .createdAt = now},
                  board);
}

void EntryService::number(std::span<Entry* const> created, Place found, const model::Board& board) {
    if (found.appending) {
        numberFrom(found.appending->activeCount, created, found.appending->completed);
        return;
    }
    found.active.insert(found.active.begin() + static_cast<std::ptrdiff_t>(found.index),
                        created.begin(), created.end());
    assignSortOrder(found.active, board);
}

std::optional<EntryService::Appending>
EntryService::appendingUnloaded(const model::Board& board) const {
    if (board.entriesAreLoaded() || m_modelContext->hasChanges()) {
        return std::nullopt;
    }
    const auto onBoard = Entry::onBoard(board.id());
    const auto isCompletedTodo = Entry::completedTodos();
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

} // namespace korvex::services
