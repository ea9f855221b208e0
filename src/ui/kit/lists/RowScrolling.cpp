#include "ui/kit/lists/RowScrolling.h"

#include <algorithm>

namespace korvex::ui {

int RowScrolling::wantedTop(QAbstractItemView::ScrollHint hint, int top, int height, int view) {
    switch (hint) {
    case QAbstractItemView::PositionAtTop:
        return 0;
    case QAbstractItemView::PositionAtBottom:
        return view - height;
    case QAbstractItemView::PositionAtCenter:
        return (view - height) / 2;
    case QAbstractItemView::EnsureVisible:
        break;
    }
    if (height > view) {
        // Where most of what is seen is this row already, nothing jumps.
        const auto seen = std::min(top + height, view) - std::max(top, 0);
        return seen >= view / 2 ? top : top > 0 ? 0 : view - height;
    }
    return top < 0 ? 0 : std::min(top, view - height);
}

int RowScrolling::stepInside(int key, int top, int height, int view, int line) {
    const auto page = std::max(line, view - line);
    const auto above = std::max(0, -top);
    const auto below = std::max(0, top + height - view);
    // A row that is not in sight at all is scrolled to, not scrolled in.
    if (height <= view || above >= height || below >= height) {
        return 0;
    }
    switch (key) {
    case Qt::Key_Up:
        return -std::min(line, above);
    case Qt::Key_PageUp:
        return -std::min(page, above);
    case Qt::Key_Down:
        return std::min(line, below);
    case Qt::Key_PageDown:
        return std::min(page, below);
    default:
        return 0;
    }
}

} // namespace korvex::ui
