#include "services/SurvivingBoard.h"

namespace korvex::services {

namespace {

/// Boards are merged into one another in no circle; a damaged store may say so all the same.
constexpr int kMostMerges = 16;

} // namespace

model::Board* survivingBoard(const BoardService& boards, const base::Uuid& id) {
    auto* board = boards.board(id);
    for (int i = 0; i < kMostMerges && board && board->mergedIntoBoardID(); ++i) {
        board = boards.board(*board->mergedIntoBoardID());
    }
    return board;
}

} // namespace korvex::services
