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
    /// What of the list there is over the row, in sight or not.
    int above = 0;
    /// From the bar to the row and to the edges of what is seen.
    int distance = 0;
};

struct BarPlace {
    QRect bar;
    /// The edge of what is seen that the bar keeps to while the row reaches beyond it: there it
    /// lies on the row, which is to begin or end at the bar.
    enum class Edge { none, top, foot } edge = Edge::none;
    bool operator==(const BarPlace&) const = default;
};

/// Where a bar of this size goes: over the row, and with a row that begins out of sight to the top
/// of what is seen. Where the list does not begin with enough room for that, it goes under the row
/// and keeps to the foot. It never depends on where one types, so it does not jump about with the
/// caret: what is typed is to be kept `roomForBar` away from that edge. The bar begins where the
/// row does, in the direction of the window.
BarPlace placeOfBar(const QSize& wanted, const BarSurroundings& around);

/// What a bar of this height takes of the list where it keeps to the edge: at the top, or at the
/// foot.
struct BarRoom {
    int top = 0;
    int foot = 0;
};
BarRoom roomForBar(int height, const BarSurroundings& around);

} // namespace korvex::ui
