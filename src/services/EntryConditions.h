#pragma once

#include "model/Board.h"
#include "store/Condition.h"
#include "store/ModelContext.h"

#include <cstddef>

namespace korvex::services {

/// What an entry says of itself, as questions to the store: for whoever counts or fetches some of
/// many entries without making records of the others.
struct EntryConditions {
    static store::Condition onBoard(const base::Uuid& boardID);
    static store::Condition openTodo();
    static store::Condition completedTodo();
    /// All but the completed todos, as `Entry::isActive`.
    static store::Condition active();
};

/// Throws StoreError.
std::size_t openTodoCount(store::ModelContext& context, const model::Board& board);

} // namespace korvex::services
