#pragma once

namespace korvex::ui {

/// What a dragged row shows: the sidebar takes both.
inline constexpr const char* kEntryDragType = "dev.korvex.entry-reorder";
inline constexpr const char* kBoardDragType = "dev.korvex.board-reorder";

} // namespace korvex::ui
