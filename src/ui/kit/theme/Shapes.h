#pragma once

#include "ui/kit/theme/Theme.h"

#include <QRectF>

class QPainter;
class QWidget;

namespace korvex::ui {

/// The few shapes that every control and panel is made of.
namespace Shapes {

/// A rounded box with an edge as thick as a line is; a colour that is not valid draws nothing.
void paintBox(QPainter& painter, const QRectF& box, double radius, const QColor& ground,
              const QColor& edge);
/// The ground of what is chosen; in high contrast with an edge, as the tint alone does not tell it.
void paintChosen(QPainter& painter, const QRectF& box, double radius, const ThemeColors& colors);
/// The edge of a control that is known by its tint: none but in high contrast.
QColor controlEdge(const ThemeColors& colors);
/// The ring of what has the keyboard, inside `box`.
void paintRing(QPainter& painter, const QRectF& box, double radius, const QColor& color);
/// The same around a control that draws itself, while it has the keyboard: as the style draws it
/// around those of Qt.
void paintFocusRing(QPainter& painter, const QWidget& control);
/// What lies over the content: a menu, a list of choices, a tip.
void paintPanel(QPainter& painter, const QRectF& box, double radius, const ThemeColors& colors);

/// The circle of what can be ticked; the row under the pointer shows what a press would do.
enum class CheckCircle { open, openHovered, completed };
void paintCheckCircle(QPainter& painter, const QRect& place, CheckCircle circle,
                      const ThemeColors& colors);

enum class Caret { up, down, left, right };
/// In the middle of `room`.
void paintCaret(QPainter& painter, const QRect& room, Caret caret, const QColor& color,
                const Theme& theme);

} // namespace Shapes

} // namespace korvex::ui
