#pragma once

namespace korvex::ui {

/// What the window can show beside the sidebar.
enum class PageKind { board, search, upcoming, completed, archived };

} // namespace korvex::ui
