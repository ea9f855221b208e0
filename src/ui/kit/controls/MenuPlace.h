#pragma once

class QMenu;
class QRect;
class QWidget;

namespace korvex::ui {

/// Opens a menu below what it belongs to, or above it where there is no room below, at that end of
/// it which is nearer to the window's edge: so it stays within the window wherever it fits there.
/// `anchor` is in global coordinates; at a place without size the menu opens as from the pointer.
void openMenu(QMenu& menu, const QRect& anchor, const QWidget& window);

} // namespace korvex::ui
