#pragma once

#include "model/Board.h"
#include "store/ModelContext.h"

#include <cstddef>

namespace korvex::services {

/// How many open todos a board has, counted without making records of them. Throws StoreError.
std::size_t openTodoCount(store::ModelContext& context, const model::Board& board);

} // namespace korvex::services
