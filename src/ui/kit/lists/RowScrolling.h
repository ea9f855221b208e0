#pragma once

#include <QAbstractItemView>

namespace korvex::ui {

/// How far a list scrolls for the sake of one of its rows. All numbers are pixels; a row's top is
/// counted from that of the view, in which `view` pixels can be seen.
namespace RowScrolling {

/// Where the top of the row should be for what is asked; where it is now, if all is well already.
int wantedTop(QAbstractItemView::ScrollHint hint, int top, int height, int view);

/// How far the key leads on inside a row that is higher than the view, by a line or nearly a whole
/// view: downwards when positive. Zero where the row ends in that direction, and for a row that
/// has room or is out of sight.
int stepInside(int key, int top, int height, int view, int line);

} // namespace RowScrolling

} // namespace korvex::ui
