#include "ui/kit/style/PopupPlace.h"

#include <QCursor>
#include <QEvent>
#include <QMenu>
#include <QStyle>
#include <QStyleOption>

#include <algorithm>

namespace korvex::ui {

namespace {

/// The menu that this one opens beside; null for the first one.
const QMenu* menuAbove(const QMenu& menu) {
    const auto* const action = menu.menuAction();
    const auto menus = action->associatedObjects();
    for (const auto* const each : menus) {
        const auto* const above = qobject_cast<const QMenu*>(each);
        if (above && above->isVisible()) {
            return above;
        }
    }
    return nullptr;
}

/// The window whose content a menu stands for.
const QWidget* windowOf(const QMenu& menu) {
    const QWidget* widget = menu.parentWidget();
    while (widget && qobject_cast<const QMenu*>(widget)) {
        widget = widget->parentWidget();
    }
    return widget ? widget->window() : nullptr;
}

void place(QMenu& menu) {
    const auto* const window = windowOf(menu);
    if (!window || !window->isVisible()) {
        return;
    }
    const QRect room(window->mapToGlobal(QPoint()), window->size());
    auto wanted = menu.geometry();
    if (const auto* const above = menuAbove(menu)) {
        const auto beside = above->geometry();
        if (wanted.right() > room.right() && beside.left() - wanted.width() >= room.left()) {
            wanted.moveRight(beside.left());
        } else if (wanted.left() < room.left() && beside.right() + wanted.width() <= room.right()) {
            wanted.moveLeft(beside.right());
        }
        if (wanted.bottom() > room.bottom() && wanted.height() <= room.height()) {
            wanted.moveBottom(room.bottom());
        }
    } else {
        wanted = PopupPlace::inside(room, wanted, QRect(QCursor::pos(), QSize(1, 1)));
    }
    if (wanted.topLeft() != menu.pos()) {
        menu.move(wanted.topLeft());
    }
}

/// A list opens below its button or above it; in a window that has no room for all of it there it
/// scrolls.
void place(QWidget& list, const QWidget& button) {
    const auto& window = *button.window();
    const QRect room(window.mapToGlobal(QPoint()), window.size());
    const QRect opener(button.mapToGlobal(QPoint()), button.size());
    auto wanted = list.geometry();
    const auto most = std::max(room.bottom() - opener.bottom(), opener.top() - room.top());
    wanted.setSize(wanted.size().boundedTo({room.width(), most}));
    wanted.moveTop(std::max(wanted.top(), opener.bottom() + 1));
    list.setGeometry(PopupPlace::inside(room, wanted, opener));
}

/// Qt cuts menus and tips to their shape itself, but not lists of choices.
void cut(QWidget& list) {
    QStyleOption option;
    option.initFrom(&list);
    QStyleHintReturnMask mask;
    if (list.style()->styleHint(QStyle::SH_Menu_Mask, &option, &list, &mask)) {
        list.setMask(mask.region);
    }
}

} // namespace

void PopupPlace::watch(QWidget& popup) {
    popup.installEventFilter(this);
}

QRect PopupPlace::inside(const QRect& window, const QRect& wanted, const QRect& opener) {
    auto placed = wanted;
    if (placed.width() <= window.width()) {
        placed.moveRight(std::min(placed.right(), window.right()));
        placed.moveLeft(std::max(placed.left(), window.left()));
    }
    if (placed.bottom() > window.bottom() && placed.height() <= window.height()) {
        placed.moveBottom(window.bottom());
        if (placed.intersects(opener) && opener.top() - placed.height() >= window.top()) {
            placed.moveBottom(opener.top() - 1);
        }
    }
    return placed;
}

bool PopupPlace::eventFilter(QObject* watched, QEvent* event) {
    // The popup is laid out by now and not on the screen yet.
    if (event->type() == QEvent::Show) {
        auto* const menu = qobject_cast<QMenu*>(watched);
        if (menu && menu->isWindow()) {
            place(*menu);
        } else if (!menu) {
            auto& list = static_cast<QWidget&>(*watched);
            if (const auto* const button = list.parentWidget(); button && list.isWindow()) {
                place(list, *button);
            }
            cut(list);
        }
    }
    return false;
}

} // namespace korvex::ui
