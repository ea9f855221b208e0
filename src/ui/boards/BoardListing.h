#pragma once

#include <QRect>

#include <optional>

namespace korvex::model {
class Board;
}

namespace korvex::ui {

/// Where boards are listed for the user: what is done with a board happens at its row.
class BoardListing {
public:
    virtual ~BoardListing() = default;

    /// Lets the board's name be typed where it is listed.
    virtual void rename(model::Board& board) = 0;
    /// The board's row on the screen; absent where it is not in sight.
    virtual std::optional<QRect> rowOf(const model::Board& board) const = 0;
};

} // namespace korvex::ui
