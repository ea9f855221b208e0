#pragma once

#include "ui/kit/theme/Theme.h"

#include <QRegion>
#include <QStyleOption>

class QPainter;

namespace korvex::ui {

/// Menus, the lists of choices and tips: what lies over the content as a window of its own.
namespace MenuDrawing {

/// A panel that fills its window. The few pixels outside its round corners have the colour of the
/// content that it most likely lies over: without a compositor nothing could be seen through them.
void paintPanel(QPainter& painter, const QRect& window, double radius, const Theme& theme);
/// What of such a window is to be seen.
QRegion shapeOf(const QRect& window, double radius);

void paintItem(QPainter& painter, const QStyleOptionMenuItem& option, const Theme& theme);
/// `words` is the size of the item's words without its keys, for which Qt makes room itself.
QSize sizeOf(const QStyleOptionMenuItem& option, const QSize& words, const Theme& theme);

} // namespace MenuDrawing

} // namespace korvex::ui
