#pragma once

#include "base/Collation.h"
#include "base/Log.h"
#include "model/Board.h"
#include "model/EntryPlacement.h"
#include "model/ServiceErrors.h"
#include "services/RecordWriter.h"
#include "services/TodoListeners.h"
#include "store/ModelContext.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace korvex::services {

/// The one writer of boards. A value over its context and collaborators, which must outlive it.
/// Every operation is one locked step that checks everything first, saves once, and on failure
/// leaves records and store as they were. Throws BoardServiceError, EntryServiceError
/// (`entryUnavailable`, `readOnlyStore`) or StoreError. Main thread.
class BoardService {
public:
    BoardService(store::ModelContext& context, ReminderReconciling& reminders,
                 WidgetReloading& widgets, base::LogSink& log);

    enum class SaveChanges { no, yes };
    /// Makes sure that there is one Inbox; turns a legacy Today board into it. A caller that
    /// changes more at once passes `no` and saves the boards together with the rest.
    void initializeDefaultBoards(base::Instant now, SaveChanges saveChanges = SaveChanges::yes);

    /// False for a store that can only be read: then every change throws `readOnlyStore`.
    bool allowsChanges() const;

    model::Board* inboxBoard() const;
    /// That among `boards`, which stand in sidebar order; null where they have none.
    static model::Board* inboxBoard(std::span<model::Board* const> boards);
    /// Every visible board, archived ones too, in sidebar order.
    std::vector<model::Board*> boards() const;
    /// Those of them that are visible and not archived, in order.
    static std::vector<model::Board*> activeBoards(std::vector<model::Board*> boards);
    model::Board* board(const base::Uuid& id) const;
    /// What a window begins with: the board that is wanted while it is an active one, else the
    /// Inbox.
    model::Board* launchBoard(const std::optional<base::Uuid>& wanted) const;

    /// Raw values of `BoardIcon` and `BoardIconColor`, or none for the defaults.
    struct Look {
        std::optional<std::string_view> icon;
        std::optional<std::string_view> color;
    };
    model::Board& createBoard(std::string_view name, base::Instant now, const Look& look = {});
    void renameBoard(model::Board& given, std::string_view name, base::Instant now);
    void setArchived(bool archived, model::Board& given, base::Instant now);
    /// Deletes the board with all its entries; there is no undo.
    void deleteBoard(model::Board& given);
    /// As in a `Look`.
    void setIcon(std::optional<std::string_view> icon, model::Board& given, base::Instant now);
    void setIconColor(std::optional<std::string_view> color, model::Board& given,
                      base::Instant now);

    /// `given` must be all that `boards()` returns, in the new order.
    void reorderBoards(std::span<model::Board* const> given, base::Instant now);
    /// Moves the board among the active ones; archived boards keep their places between them.
    void moveBoard(const base::Uuid& id, const base::Uuid& relativeTo,
                   model::EntryPlacement placement, base::Instant now);
    enum class Direction { ascending, descending };
    /// All boards by name in the user's locale; the Inbox stays first.
    void sortBoardsByName(Direction direction, const base::NameOrder& order, base::Instant now);

private:
    /// Without duplicates of a system board and without boards merged into others, in order.
    static std::vector<model::Board*> visibleBoards(std::vector<model::Board*> all);
    /// Throws `protectedBoard` too.
    model::Board& persistedUserBoard(const model::Board& given) const;
    /// Numbers the visible boards in this order, and the hidden ones behind them: a hidden
    /// duplicate of the Inbox that came before the Inbox would take its place.
    void number(std::vector<model::Board*> visible, base::Instant now) const;
    /// For a new board, behind all others.
    std::int64_t nextSortOrder(base::Instant now) const;

    RecordWriter m_writer;
    TodoListeners m_listeners;
};

} // namespace korvex::services
