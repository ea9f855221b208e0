#pragma once

#include "model/Board.h"
#include "ui/kit/words/Text.h"

#include <QCoreApplication>

namespace korvex::ui {

/// A board's name where boards of all kinds stand side by side: an archived one is marked.
inline QString boardLabel(const model::Board& board) {
    const auto name = toQString(board.name());
    return board.isArchived()
               ? QCoreApplication::translate("korvex::ui::BoardLabel", "%1 (archived)").arg(name)
               : name;
}

} // namespace korvex::ui
