#pragma once

#include "backup/BackupDocument.h"
#include "model/Entry.h"
#include "services/EditingSession.h"
#include "services/RecordWriter.h"
#include "services/TodoListeners.h"
#include "services/UndoManager.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace korvex::services {

/// Changes entries so that it can be taken back: each change is saved whole or not at all, and its
/// inverse registered with the undo manager, if there is one. An inverse is such a change itself,
/// so its own inverse is the redo. Whoever makes or removes holds a `store::LockedStep` and has
/// checked the entries. A value over its collaborators, which must outlive it and the undo
/// manager's actions. Main thread.
class UndoableChanges {
public:
    UndoableChanges(const RecordWriter& writer, const TodoListeners& listeners,
                    UndoManager* undoManager)
        : m_writer(writer), m_listeners(listeners), m_undoManager(undoManager) {}

    /// What the user calls a change, a literal, and the entries that it means to change or move.
    /// Others only make room for them.
    struct Undoable {
        std::string_view name;
        std::vector<model::Entry*> entries;
        /// Given where the change is a part of the editing of the one entry.
        EditingSession* session = nullptr;
    };
    /// Makes the change, saves it and registers its inverse.
    void make(const Undoable& undoable, const std::function<void()>& makeChange) const;

    /// Deletes them, closes the gaps on their boards and saves.
    void remove(std::span<model::Entry* const> entries) const {
        remove(entries.size() == 1 ? "Delete Entry" : "Delete Entries", entries);
    }
    /// The same without a way back.
    void removeForGood(std::span<model::Entry* const> entries) const;
    /// A deleted entry, and its index in its board's list: without one, its number says where it
    /// was.
    struct Deleted {
        backup::BackupDocument::EntryRecord record;
        std::optional<std::int64_t> index = std::nullopt;
    };
    /// Brings deleted entries back, under their former identifiers and where they were; `name` is
    /// what their deletion was called. Throws `entryUnavailable` when a board is gone, or an entry
    /// there already.
    std::vector<model::Entry*> restore(std::string_view name,
                                       std::span<const Deleted> deleted) const;

    /// Registers the inverse of a creation that was saved just now: it deletes the entries, and
    /// throws `entryUnavailable` where another has written words into one of them since. `name` is
    /// a literal.
    void registerCreation(std::string_view name, std::span<model::Entry* const> created,
                          EditingSession* session = nullptr) const;
    /// What `work` registers is one step.
    void asOneStep(std::string_view name, const std::function<void()>& work) const;

private:
    using Inverse = std::function<void(const UndoableChanges&, base::Instant now)>;

    /// What an entry had been given when it was made, or by the end of that editing: of its text,
    /// and of its attachments, a checksum.
    struct Created {
        base::Uuid id;
        std::shared_ptr<std::uint64_t> text;
        std::uint64_t attachments = 0;
    };

    void remove(std::string_view name, std::span<model::Entry* const> entries) const;
    /// The entry with this identifier that the store still holds; null where it was deleted.
    model::Entry* remaining(const base::Uuid& id) const;
    /// The step, or 0 where none is kept.
    UndoManager::StepId registerUndo(std::string_view name, std::size_t cost,
                                     std::vector<base::Uuid> entries, Inverse inverse) const;
    /// A checksum of what a person writes into an entry.
    static std::uint64_t textOf(const model::Entry& entry);
    /// Registers a step for the session, or lets its step take this back too. `textBefore` is what
    /// told the entry's text before the change: the session's own, or another's.
    void registerEdit(const Undoable& edit, EntryChange change, std::uint64_t textBefore) const;
    /// Undoes what is still as these changes have left it, of the entries that are still there;
    /// refuses where it would write over words that another has written since, or leave what no
    /// operation may.
    void takeBack(std::string_view name, std::span<const EntryChange> changes,
                  base::Instant now) const;
    void takeBackCreation(std::string_view name, std::span<const Created> created) const;

    RecordWriter m_writer;
    TodoListeners m_listeners;
    UndoManager* m_undoManager;
};

} // namespace korvex::services
