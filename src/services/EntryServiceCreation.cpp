#include "services/EntryService.h"

#include "services/EntryContent.h"
#include "services/NewEntryPlace.h"

#include <memory>
#include <utility>

namespace korvex::services {

using model::Entry;
using model::EntryServiceError;
using model::EntryServiceErrorCase;

namespace {

model::EntryFields fieldsOf(StoredText text, base::Instant now) {
    return {.typeRawValue = std::string(rawValue(model::EntryType::text)),
            .content = std::move(text.content),
            .richTextData = std::move(text.richTextData),
            .createdAt = now};
}

/// Inserts an entry with a new identifier, and no number yet.
Entry& insert(store::ModelContext& context, model::EntryFields fields, model::Board& board) {
    fields.id = base::Uuid::random();
    fields.updatedAt = fields.createdAt;
    auto entry = std::make_unique<Entry>(std::move(fields));
    entry->setBoard(&board);
    return context.insert(std::move(entry));
}

} // namespace

std::vector<Entry*> EntryService::createTodos(const NewTodos& todos) {
    validate(todos.schedule, std::nullopt, todos.now);
    if (todos.contents.empty()) {
        throw EntryServiceError(EntryServiceErrorCase::emptyContent);
    }
    std::vector<std::string> contents;
    contents.reserve(todos.contents.size());
    for (const auto& content : todos.contents) {
        contents.push_back(normalized(content));
    }
    if (contents.size() > 1 && !todos.attachments.empty()) {
        throw model::AttachmentError(model::AttachmentErrorCase::multipleTodos);
    }
    auto attachmentData = model::EntryAttachment::encode(todos.attachments);

    const store::LockedStep step(m_writer.context());
    auto& board = m_writer.persisted(todos.board);
    NewEntryPlace place(m_writer.context(), board, todos.after, todos.before);
    std::vector<Entry*> created;
    created.reserve(contents.size());
    m_writer.change([&] {
        for (auto& content : contents) {
            auto& entry = insert(m_writer.context(),
                                 {.typeRawValue = std::string(rawValue(model::EntryType::todo)),
                                  .content = std::move(content),
                                  .createdAt = todos.now},
                                 board);
            entry.setSchedule(todos.schedule);
            entry.setAttachmentData(std::exchange(attachmentData, std::nullopt));
            created.push_back(&entry);
        }
        place.number(created);
    });
    registerCreation(todos.undoName, created, todos.session);
    for (const auto* const entry : created) {
        entry->forgetAttachmentData();
        m_writer.logDone("Created todo", entry->id());
    }
    m_listeners.todosChanged();
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
    auto content = encoded(*rich, m_serializer);
    auto attachmentData = model::EntryAttachment::encode(text.attachments);
    const store::LockedStep step(m_writer.context());
    auto& board = m_writer.persisted(text.board);
    NewEntryPlace place(m_writer.context(), board, text.after, text.before);
    Entry* created = nullptr;
    m_writer.change([&] {
        created = &insert(m_writer.context(), fieldsOf(std::move(content), text.now), board);
        created->setAttachmentData(std::move(attachmentData));
        place.number({&created, 1});
    });
    registerCreation(text.undoName, {&created, 1}, text.session);
    created->forgetAttachmentData();
    m_writer.logDone("Created text entry", created->id());
    return *created;
}

Entry& EntryService::splitText(Entry& given, const richtext::AttributedString& before,
                               const richtext::AttributedString& after, base::Instant now,
                               std::string_view undoName) {
    const store::LockedStep step(m_writer.context());
    auto& entry = persisted(given, model::EntryType::text);
    auto kept = stored(before, m_serializer);
    auto moved = stored(after, m_serializer);
    if (!kept || !moved) {
        throw EntryServiceError(EntryServiceErrorCase::emptyContent);
    }
    auto* const board = entry.board();
    if (!board) {
        RecordWriter::refuseUnavailable();
    }
    NewEntryPlace place(m_writer.context(), *board, entry.id(), std::nullopt);
    Entry* created = nullptr;
    std::vector<Entry*> undoable;
    if (!undoName.empty()) {
        undoable.push_back(&entry);
    }
    m_changes.asOneStep(undoName, [&] {
        m_changes.make({.name = undoName, .entries = undoable}, [&] {
            setText(entry, std::move(*kept), now);
            created = &insert(m_writer.context(), fieldsOf(std::move(*moved), now), *board);
            place.number({&created, 1});
        });
        registerCreation(undoName, {&created, 1}, nullptr);
    });
    m_writer.logDone("Updated text entry", entry.id());
    m_writer.logDone("Created text entry", created->id());
    return *created;
}

void EntryService::registerCreation(std::string_view undoName, std::span<Entry* const> created,
                                    EditingSession* session) const {
    if (!undoName.empty()) {
        m_changes.registerCreation(undoName, created, session);
    }
}

} // namespace korvex::services
