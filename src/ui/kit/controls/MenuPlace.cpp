#include "ui/kit/controls/MenuPlace.h"

#include <QGuiApplication>
#include <QMenu>

#include <algorithm>

namespace korvex::ui {

namespace {

/// From `wanted`, as near as `size` allows within the room from `low` on; where that is too small,
/// the screen's edge is all that counts.
int within(int wanted, int size, int low, int room) {
    return size > room ? wanted : std::clamp(wanted, low, low + room - size);
}

} // namespace

void openMenu(QMenu& menu, const QRect& anchor, const QWidget& window) {
    const QRect bounds(window.mapToGlobal(QPoint()), window.size());
    menu.ensurePolished();
    const auto size = menu.sizeHint();
    const auto endsAtAnchor = anchor.isEmpty() ? QGuiApplication::isRightToLeft()
                                               : anchor.center().x() > bounds.center().x();
    const auto left = endsAtAnchor ? anchor.left() + anchor.width() - size.width() : anchor.left();
    const auto below = anchor.top() + anchor.height();
    const auto isAbove = below + size.height() > bounds.bottom() + 1 &&
                         anchor.top() - size.height() >= bounds.top();
    const auto top = isAbove ? anchor.top() - size.height() : below;
    menu.popup({within(left, size.width(), bounds.left(), bounds.width()),
                within(top, size.height(), bounds.top(), bounds.height())});
}

} // namespace korvex::ui
