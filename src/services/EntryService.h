#pragma once

#include "base/Log.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "services/Collaborators.h"
#include "services/ServiceErrors.h"
#include "store/ModelContext.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace korvex::services {

/// What `createTodos` makes: one open todo per element of `contents`.
struct NewTodos {
    std::vector<std::string> contents;
    model::Board& board;
    std::optional<base::Uuid> after = std::nullopt;
    /// Decides when both are given; with neither the todos go to the end.
    std::optional<base::Uuid> before = std::nullopt;
    base::Instant now;
    model::TodoSchedule schedule = {};
};

enum class CompactOrder { no, yes };

/// The one writer of entries. A value over its context and collaborators, which must outlive it; it
/// keeps nothing between calls. Every operation is one locked step that checks everything first,
/// saves once, and on failure leaves records and store as they were. Throws EntryServiceError or
/// StoreError. Main thread.
class EntryService {
public:
    EntryService(store::ModelContext& context, ReminderReconciling& reminders,
                 WidgetReloading& widgets, base::LogSink& log);

    /// The created todos, in order. One blank or too long content rejects the whole batch.
    std::vector<model::Entry*> createTodos(const NewTodos& todos);

    /// Already completed: nothing happens. `completedAt` defaults to `now`.
    void completeTodo(model::Entry& entry, base::Instant now,
                      std::optional<base::Instant> completedAt = std::nullopt,
                      CompactOrder compactOrder = CompactOrder::yes);
    /// To `position` among the active entries, clamped; without one to the end.
    void restoreTodo(model::Entry& entry, base::Instant now,
                     std::optional<std::int64_t> position = std::nullopt);
    void updateTodo(model::Entry& entry, std::string_view content, base::Instant now);
    void updateSchedule(model::Entry& entry, const model::TodoSchedule& schedule,
                        base::Instant now);

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
    /// What appending to a board needs to know of it.
    struct Appending {
        std::int64_t activeCount = 0;
        std::vector<model::Entry*> completed;
    };

    /// Answers that from the store without making records of all active entries: a capture into a
    /// long board reads no more than it must. Absent when the board is loaded anyway, or when its
    /// order is not dense and all entries must be numbered anew.
    std::optional<Appending> appendingUnloaded(const model::Board& board) const;
    model::Entry& persisted(model::Entry& entry) const;
    model::Entry& persistedTodo(model::Entry& entry) const;
    void persistOrder(std::span<model::Entry* const> entries, const model::Board& board);
    void save();
    void discardFailedCreation();
    void todosChanged();

    store::ModelContext* m_modelContext;
    ReminderReconciling* m_reminders;
    WidgetReloading* m_widgets;
    base::Logger m_log;
};

} // namespace korvex::services
