#pragma once

#include "model/Board.h"
#include "model/BoardIcon.h"
#include "ui/kit/theme/Theme.h"

#include <QColor>

#include <optional>
#include <vector>

namespace korvex::ui {

/// What a board's colour looks like; the accent for none.
QColor colorOf(std::optional<model::BoardIconColor> color, const ThemeColors& theme);
/// The one that was chosen for a board; none where the accent is to be used.
std::optional<model::BoardIconColor> ownColorOf(const model::Board& board);
/// The colour of a board's icon.
QColor iconColorOf(const model::Board& board, const ThemeColors& theme);
/// What a new board behind these is offered: of the colours that the fewest have, the one that is
/// told best from those of the boards next to it, from the accent, which the Inbox has, and from
/// what warns.
model::BoardIconColor nextColor(const std::vector<model::Board*>& boards, const ThemeColors& theme);

} // namespace korvex::ui
