#pragma once

#include "ui/kit/theme/Theme.h"

#include <QFontMetrics>
#include <QRect>

namespace korvex::ui {

/// The distances and sizes in pixels that all rows have in common, and the editors that take a
/// row's place. What stands in a row begins and ends where the page's header does.
struct RowFrame {
    /// From a side of the row to its box, which shows hover and selection.
    int boxMargin;
    /// From a side of the box to what stands in it, and between what stands there side by side.
    int gap;
    /// From the top and the foot of the box to what stands in it.
    int padding;
    /// From the top of the row to its box; what is left of the distance between two rows is under
    /// the box.
    int boxTop;
    int rowDistance;
    int signSize;
    /// From a side of the row to its sign, and as much at its end.
    int side;
    int textLeft;
    int scheduleSize;
    int leastRoom;

    static RowFrame of(const Theme& theme);
    /// Of a text, which has no sign, may be long, and has more air around it than a line has.
    static RowFrame ofText(const Theme& theme);
    /// The height of a row in which something ends there.
    int heightFor(int bottom) const { return bottom + padding + below(); }
    int top() const { return boxTop + padding; }
    /// From the foot of the box to that of the row.
    int below() const { return rowDistance - boxTop; }
    /// The box of a row of this size.
    QRect box(const QSize& row) const {
        return {boxMargin, boxTop, row.width() - 2 * boxMargin, row.height() - rowDistance};
    }
    /// What a panel about this part of the row keeps its distance from: as wide as the part, as
    /// high as the row's box. Both are in the same coordinates.
    QRect anchorOf(const QRect& part, const QRect& row) const {
        const auto whole = box(row.size()).translated(row.topLeft());
        return {part.left(), whole.top(), part.width(), whole.height()};
    }
    /// The width that a text has in a row of this width; some even in a window that is hardly wider
    /// than its signs.
    int room(int rowWidth) const;
};

/// From the top of a line of such words to a sign of this size in the middle of their capital
/// letters.
int topOfSign(const QFontMetrics& words, int size);

/// The first line of a row: its words stand on one baseline whatever their sizes, and its signs in
/// the middle of its capital letters.
class RowLine {
public:
    /// `ascent` is that of the text in the line, which may hold letters of a higher font.
    RowLine(const RowFrame& frame, int ascent, const Theme& theme);

    int textTop() const { return m_textTop; }
    /// Where words in this font begin.
    int topOf(const QFont& font) const;
    int topOfSign(int size) const;

private:
    QFontMetrics m_words;
    int m_textTop;
    int m_baseline;
};

} // namespace korvex::ui
