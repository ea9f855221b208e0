#pragma once

#include "ui/todos/DueLabel.h"

#include <QRect>

class QPainter;

namespace korvex::ui {

/// What the rows of todos have in common, wherever they stand.
namespace TodoPainting {

void drawIcon(QPainter& painter, const QString& name, const QColor& color, const QRect& rect);
void drawCircle(QPainter& painter, const QRect& rect, bool isCompleted, bool isHovered,
                const ThemeColors& colors);
/// Text and bell.
void drawDueLabel(QPainter& painter, const QRect& rect, const DueLabel& label, const QColor& color,
                  const Theme& theme);

} // namespace TodoPainting

} // namespace korvex::ui
