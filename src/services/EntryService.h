#pragma once

#include "backup/BackupDocument.h"
#include "base/Log.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "model/EntryPlacement.h"
#include "model/ServiceErrors.h"
#include "richtext/stored/RichTextSerializer.h"
#include "services/AttachmentFiles.h"
#include "services/NewEntries.h"
#include "services/RecordWriter.h"
#include "services/TodoListeners.h"
#include "services/UndoManager.h"
#include "services/UndoableChanges.h"
#include "store/ModelContext.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace korvex::services {

/// The one writer of entries. A value over its context and collaborators, which must outlive it; it
/// keeps nothing between calls. Every operation is one locked step that checks everything first,
/// saves once, and on failure leaves records and store as they were. Throws EntryServiceError,
/// RichTextSerializationError, AttachmentError or StoreError. Main thread.
///
/// With an undo manager every change but the emptying of a board can be undone, a creation where
/// its caller gave it a name: its inverse gives the entries of the change their former fields and
/// places among whatever others have done meanwhile, or deletes what was created, and throws
/// `entryUnavailable` where that would cost another's words.
class EntryService {
public:
    EntryService(store::ModelContext& context, ReminderReconciling& reminders,
                 WidgetReloading& widgets, base::LogSink& log, UndoManager* undoManager = nullptr);

    /// The created todos, in order. One blank or too long content rejects the whole batch.
    std::vector<model::Entry*> createTodos(const NewTodos& todos);
    model::Entry& createText(const NewText& text);
    /// The entry keeps `before`; the new one, which is returned, holds `after` and stands directly
    /// behind it. Neither may be empty. `undoName` as of new todos.
    model::Entry& splitText(model::Entry& entry, const richtext::AttributedString& before,
                            const richtext::AttributedString& after, base::Instant now,
                            std::string_view undoName = {});

    /// Already completed: nothing happens. `completedAt` defaults to `now`.
    void completeTodo(model::Entry& entry, base::Instant now,
                      std::optional<base::Instant> completedAt = std::nullopt);
    /// Completes them in one change, all or none; those that are completed already stay as they
    /// are. `todos` holds each once.
    void completeTodos(std::span<model::Entry* const> todos, base::Instant now);
    /// Every open todo of the board.
    void completeTodos(model::Board& board, base::Instant now);
    /// Restores the todo to `position` among the active entries, clamped; without one to the end.
    void restoreTodo(model::Entry& entry, base::Instant now,
                     std::optional<std::int64_t> position = std::nullopt);
    /// What is stored with one `session` is one step of undo.
    void updateTodo(model::Entry& entry, std::string_view content, base::Instant now,
                    EditingSession* session = nullptr);
    void updateSchedule(model::Entry& entry, const model::TodoSchedule& schedule,
                        base::Instant now);
    /// A text of which nothing but white space is left is deleted.
    void updateText(model::Entry& entry, const richtext::AttributedString& rich, base::Instant now,
                    EditingSession* session = nullptr);
    /// A text becomes a todo of one line, without its formatting. A todo becomes a text that was
    /// never completed; its schedule and its attachments sleep until it is a todo again.
    void changeType(model::Entry& entry, model::EntryType type, base::Instant now);

    void deleteEntry(model::Entry& entry);
    /// All or none of them.
    void deleteEntries(std::span<model::Entry* const> entries);
    /// Everything on the board, completed todos too. There is no undo.
    void deleteEntries(model::Board& board);
    /// An entry that was deleted, under its former identifier and where it was.
    model::Entry& restoreDeletedEntry(const backup::BackupDocument::EntryRecord& record);

    /// Reads the files with `read` and appends them; all of them or none.
    void attachFiles(std::span<const std::filesystem::path> files, model::Entry& entry,
                     base::Instant now, const AttachmentReader& read = readAttachments);
    /// The same of what is in memory, such as a pasted picture.
    void attach(std::vector<model::EntryAttachment> attachments, model::Entry& entry,
                base::Instant now);
    /// Nothing happens when the entry has no such attachment.
    void removeAttachment(const base::Uuid& id, model::Entry& entry, base::Instant now);
    /// Directly before or after an attachment of `to`, at the end without one; `from` and `to` may
    /// be the same entry. Nothing happens when `from` has no such attachment.
    void moveAttachment(const base::Uuid& id, model::Entry& from, model::Entry& to,
                        const std::optional<base::Uuid>& relativeTo,
                        model::EntryPlacement placement, base::Instant now);

    /// Moves the entry to `position` among the active entries of the other board, clamped; without
    /// one to the end. A completed todo stays one, behind them.
    void moveEntry(model::Entry& entry, model::Board& to, base::Instant now,
                   std::optional<std::int64_t> position = std::nullopt);
    /// Drag within a board: directly before or after the target.
    void moveEntry(const base::Uuid& id, const base::Uuid& relativeTo,
                   model::EntryPlacement placement, model::Board& board);
    /// Keyboard: by `offset` places; nothing happens where that leads off the list.
    void moveEntry(const base::Uuid& id, std::int64_t offset, model::Board& board);

private:
    /// Throws `entryUnavailable` for an entry of another type too.
    model::Entry& persisted(model::Entry& entry, model::EntryType type) const;
    /// Throws `headingAttachments` too.
    model::Entry& persistedForAttaching(model::Entry& entry) const;
    /// Open todos that were checked; `name` is what the user calls it.
    void complete(std::string_view name, const std::vector<model::Entry*>& todos,
                  base::Instant completedAt, base::Instant now);
    /// Makes it undoable where it has a name; before what was created forgets its attachments.
    void registerCreation(std::string_view undoName, std::span<model::Entry* const> created,
                          EditingSession* session) const;
    void becomeTodo(model::Entry& entry, base::Instant now);
    void becomeText(model::Entry& entry, base::Instant now);

    RecordWriter m_writer;
    TodoListeners m_listeners;
    UndoableChanges m_changes;
    richtext::RichTextSerializer m_serializer;
};

} // namespace korvex::services
