#pragma once

#include <QRect>
#include <QSize>

namespace korvex::ui {

/// What a bar that floats over a list is placed by; all rectangles count from one corner.
struct BarSurroundings {
    /// What is seen of the list.
    QRect sight;
    /// The row that is edited.
    QRect row;
    /// The line that is typed in.
    QRect caret;
    /// From the bar to the row and to the edges of what is seen.
    int distance = 0;
};

/// Where a bar of this size goes: over the row, where there is room, else under it, else to the
/// edge of what is seen that the caret is not at. So no text moves for it, and it never lies on
/// what is typed. It begins where the row does, in the direction of the window.
QRect placeOfBar(const QSize& wanted, const BarSurroundings& around);

} // namespace korvex::ui
