#pragma once

#include "model/Board.h"
#include "model/Entry.h"
#include "store/ModelContext.h"

#include <cstddef>
#include <vector>

namespace korvex::services {

/// How many open todos a board has, counted without making records of them. Throws StoreError.
std::size_t openTodoCount(store::ModelContext& context, const model::Board& board);
/// The open todos of a board in its order. Its texts and completed todos are not read. Throws
/// StoreError.
std::vector<model::Entry*> openTodos(store::ModelContext& context, const model::Board& board);

} // namespace korvex::services
