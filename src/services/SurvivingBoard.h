#pragma once

#include "base/Uuid.h"
#include "services/BoardService.h"

namespace korvex::services {

/// What is shown to whoever asks for this board: the one that it was merged into, where it was,
/// else the board itself; null where that is not there. Throws StoreError.
model::Board* survivingBoard(const BoardService& boards, const base::Uuid& id);

} // namespace korvex::services
