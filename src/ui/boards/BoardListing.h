#pragma once

#include <QRect>
#include <QString>

#include <optional>

namespace korvex::model {
class Board;
}

namespace korvex::ui {

/// Where boards stand for the user, in a list or over their page: what is done with a board happens
/// there.
class BoardListing {
public:
    virtual ~BoardListing() = default;

    /// Lets the board's name be typed in its place; with `typed` in the field rather than the name.
    virtual void rename(model::Board& board, const QString& typed = {}) = 0;
    /// The board's place on the screen; absent where it is not in sight.
    virtual std::optional<QRect> placeOf(const model::Board& board) const = 0;
};

} // namespace korvex::ui
