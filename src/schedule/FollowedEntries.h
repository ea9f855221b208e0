#pragma once

#include "model/Board.h"
#include "model/Entry.h"
#include "store/ModelContext.h"

#include <unordered_map>
#include <vector>

namespace korvex::schedule {

/// What a store's change means to a list of entries from all boards. Knows the boards, and which
/// of their fields place their entries. Main thread; the context must outlive it.
class FollowedEntries {
public:
    /// `condition` takes every entry that the list may hold.
    FollowedEntries(store::ModelContext& context, store::Condition condition);

    /// All that the list may hold, from the store. Throws StoreError.
    std::vector<model::Entry*> readAll();

    struct Changes {
        /// The entries that were inserted or changed, of whatever kind.
        std::vector<model::Entry*> entries;
        /// What was deleted, be it entries or boards.
        std::vector<base::Uuid> deleted;
        /// A board is archived or is not any more, or stands elsewhere among the boards.
        bool movedBoards = false;
        /// A board has changed otherwise, its name perhaps.
        bool touchedBoards = false;
    };
    /// Throws StoreError.
    Changes of(const store::ChangeSet& changes);

private:
    struct Standing {
        bool isArchived;
        std::int64_t sortOrder;
        bool operator==(const Standing&) const = default;
    };

    void learn(const model::Board& board, Changes& changes);

    store::ModelContext& m_context;
    store::Condition m_condition;
    std::unordered_map<base::Uuid, Standing> m_boards;
};

} // namespace korvex::schedule
