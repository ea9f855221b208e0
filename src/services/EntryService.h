#pragma once

#include "backup/BackupDocument.h"
#include "base/Log.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "model/EntryPlacement.h"
#include "model/ServiceErrors.h"
#include "richtext/stored/RichTextSerializer.h"
#include "services/AttachmentFiles.h"
#include "services/Collaborators.h"
#include "services/EntryUndo.h"
#include "services/NewEntries.h"
#include "services/UndoManager.h"
#include "store/ModelContext.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace korvex::services {

enum class CompactOrder { no, yes };

/// The one writer of entries. A value over its context and collaborators, which must outlive it; it
/// keeps nothing between calls. Every operation is one locked step that checks everything first,
/// saves once, and on failure leaves records and store as they were. Throws EntryServiceError,
/// RichTextSerializationError, AttachmentError or StoreError. Main thread.
///
/// With an undo manager every change but the creations and the emptying of a board can be undone:
/// its inverse gives the entries of the change their former fields and places among whatever others
/// have done meanwhile, and throws `entryUnavailable` where that would write over another's words.
class EntryService {
public:
    EntryService(store::ModelContext& context, ReminderReconciling& reminders,
                 WidgetReloading& widgets, base::LogSink& log, UndoManager* undoManager = nullptr);

    /// The created todos, in order. One blank or too long content rejects the whole batch.
    std::vector<model::Entry*> createTodos(const NewTodos& todos);
    model::Entry& createText(const NewText& text);
    /// The entry keeps `before`; the new one, which is returned, holds `after` and stands directly
    /// behind it. Neither may be empty.
    model::Entry& splitText(model::Entry& entry, const richtext::AttributedString& before,
                            const richtext::AttributedString& after, base::Instant now);

    /// Already completed: nothing happens. `completedAt` defaults to `now`.
    void completeTodo(model::Entry& entry, base::Instant now,
                      std::optional<base::Instant> completedAt = std::nullopt,
                      CompactOrder compactOrder = CompactOrder::yes);
    /// Every open todo of the board, in one change.
    void completeTodos(model::Board& board, base::Instant now);
    /// To `position` among the active entries, clamped; without one to the end.
    void restoreTodo(model::Entry& entry, base::Instant now,
                     std::optional<std::int64_t> position = std::nullopt);
    void updateTodo(model::Entry& entry, std::string_view content, base::Instant now);
    void updateSchedule(model::Entry& entry, const model::TodoSchedule& schedule,
                        base::Instant now);
    /// A text of which nothing but white space is left is deleted.
    void updateText(model::Entry& entry, const richtext::AttributedString& rich, base::Instant now);
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

    /// To `position` among the active entries of the other board, clamped; without one to the end.
    /// A completed todo stays one, behind them.
    void moveEntry(model::Entry& entry, model::Board& to, base::Instant now,
                   std::optional<std::int64_t> position = std::nullopt);
    /// Drag within a board: directly before or after the target.
    void moveEntry(const base::Uuid& id, const base::Uuid& relativeTo,
                   model::EntryPlacement placement, model::Board& board);
    /// Keyboard: by `offset` places; nothing happens where that leads off the list.
    void moveEntry(const base::Uuid& id, std::int64_t offset, model::Board& board);

    /// The one order of a board's entries: sortOrder, then createdAt, then identifier.
    static bool ordered(const model::Entry& left, const model::Entry& right);
    /// Text entries and open todos of that board among `entries`, in order.
    static std::vector<model::Entry*> activeEntries(std::span<model::Entry* const> entries,
                                                    const base::Uuid& boardID);
    static std::vector<model::Entry*> activeEntries(const model::Board& board);
    static std::vector<model::Entry*> activeTodos(const model::Board& board);
    /// Most recently completed first; equal instants in the board's order.
    static std::vector<model::Entry*> completedTodos(const model::Board& board);
    /// The same as they are numbered.
    static std::vector<model::Entry*> completedInOrder(const model::Board& board);

    /// Where a new entry goes among `active`; throws `invalidReorder` for an identifier not in it.
    static std::size_t insertionIndex(const std::optional<base::Uuid>& after,
                                      const std::optional<base::Uuid>& before,
                                      std::span<model::Entry* const> active);
    /// Numbers `entries` from 0 in their order, then the board's completed todos that are not in
    /// `excluding`. Writes only what differs.
    static void assignSortOrder(std::span<model::Entry* const> entries, const model::Board& board,
                                const std::unordered_set<base::Uuid>& excluding = {});
    /// Numbers `entries` and then `completed` from `first` on. Writes only what differs.
    static void numberFrom(std::int64_t first, std::span<model::Entry* const> entries,
                           std::span<model::Entry* const> completed);
    enum class SaveChanges { no, yes };
    void normalizeSortOrder(model::Board& board, SaveChanges saveChanges);
    /// Trimmed; throws `contentTooLong` (judged before trimming) or `emptyContent`. Text that is
    /// not UTF-8 is refused before by whoever read it.
    static std::string normalized(std::string_view content);

    void validateWritableStore() const;
    void validateBoard(const model::Board& board) const;
    /// Throws `invalidSchedule` or `pastReminder`; a reminder equal to `previousReminder` may have
    /// passed.
    static void validate(const model::TodoSchedule& schedule,
                         const std::optional<base::Instant>& previousReminder, base::Instant now);

private:
    /// A text as an entry keeps it.
    struct StoredText {
        std::string content;
        base::Bytes richTextData;
    };
    /// What appending to a board needs to know of it.
    struct Appending {
        std::int64_t activeCount = 0;
        std::vector<model::Entry*> completed;
    };
    /// Where new entries go on a board: among its active entries, or behind all of them.
    struct Place {
        std::vector<model::Entry*> active;
        std::size_t index = 0;
        std::optional<Appending> appending;
    };

    /// Absent when nothing but white space is left of it; throws `contentTooLong`.
    std::optional<StoredText> stored(const richtext::AttributedString& rich) const;
    /// The two halves of that: what is checked first, and how it is stored.
    static std::optional<richtext::AttributedString>
    accepted(const richtext::AttributedString& rich);
    StoredText encoded(const richtext::AttributedString& text) const;
    static void setText(model::Entry& entry, StoredText text, base::Instant now);

    /// Answers that from the store without making records of all active entries: a capture into a
    /// long board reads no more than it must. Absent when the board is loaded anyway, or when its
    /// order is not dense and all entries must be numbered anew.
    std::optional<Appending> appendingUnloaded(const model::Board& board) const;
    Place place(const std::optional<base::Uuid>& after, const std::optional<base::Uuid>& before,
                const model::Board& board) const;
    /// With a new identifier, and no number yet.
    model::Entry& insert(model::EntryFields fields, model::Board& board);
    model::Entry& insertText(StoredText text, model::Board& board, base::Instant now);
    static void number(std::span<model::Entry* const> created, Place place,
                       const model::Board& board);

    model::Entry& persisted(model::Entry& entry) const;
    model::Entry& persisted(model::Entry& entry, model::EntryType type) const;
    /// Throws `headingAttachments` too.
    model::Entry& persistedForAttaching(model::Entry& entry) const;
    static void updateAttachments(model::Entry& entry, std::optional<base::Bytes> data,
                                  base::Instant now);
    void becomeTodo(model::Entry& entry, base::Instant now);
    void becomeText(model::Entry& entry, base::Instant now);
    /// Deletes them, closes the gaps on their boards and saves.
    void remove(std::span<model::Entry* const> entries);
    /// A change that can be taken back: what the user calls it, and the entries that it means to
    /// change or move. Others only make room for them.
    struct Undoable {
        std::string_view name;
        std::vector<model::Entry*> entries;
    };
    /// Makes the change, saves it and registers its inverse.
    void change(const Undoable& undoable, const std::function<void()>& makeChange);
    /// Makes the change and saves it. Whatever fails, all of it is taken back: created entries
    /// leave the context and their board, every other entry gets its former fields and place.
    void change(const std::function<void()>& makeChange);
    void save();
    void todosChanged();

    /// What is pending of this entry.
    static EntryChange changeOf(const model::Entry& entry);
    void registerUndo(std::string_view name, std::size_t cost,
                      std::function<void(EntryService&)> inverse) const;
    /// Undoes what is still as these changes have left it; refuses where it would write over words
    /// that another has written since.
    void takeBack(std::string_view name, std::span<const EntryChange> changes);
    void logTakenBack(const model::Entry& entry, const EntryChange& change) const;
    /// Moves the entries to their places and closes the gaps that they leave.
    void putInPlace(std::span<const std::pair<model::Entry*, EntryPlace>> places);
    std::vector<model::Entry*>
    restoreDeleted(std::string_view name,
                   std::span<const backup::BackupDocument::EntryRecord> records);
    void deleteAgain(std::span<const base::Uuid> ids);
    static model::EntryFields fieldsOf(const backup::BackupDocument::EntryRecord& record);
    model::Board& boardOf(const base::Uuid& id) const;

    /// One line about one entry, whose identifier is masked.
    void logDone(std::string_view what, const base::Uuid& id) const;

    store::ModelContext* m_modelContext;
    ReminderReconciling* m_reminders;
    WidgetReloading* m_widgets;
    UndoManager* m_undoManager;
    base::Logger m_log;
    richtext::RichTextSerializer m_serializer;
};

} // namespace korvex::services
