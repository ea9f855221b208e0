#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

class QPainter;
class QRect;

namespace korvex::ui {

/// The icons that are compiled in, drawn in one colour at any size. Drawn ones are kept in Qt's
/// pixmap cache. Main thread.
namespace IconSet {

/// `name` is the icon's file name in the set without its ending: "bell-fill". A missing one is
/// empty.
QPixmap pixmap(const QString& name, const QColor& color, int size, qreal scale);
QIcon icon(const QString& name, const QColor& color);
/// The program's own, which has its own colours.
QIcon program();
/// Draws an icon at the top left of `rect`, as large as that is wide.
void draw(QPainter& painter, const QString& name, const QColor& color, const QRect& rect);

} // namespace IconSet

} // namespace korvex::ui
