#pragma once

#include "ui/kit/theme/Shapes.h"
#include "ui/todos/DueLabel.h"

#include <QRect>
#include <QStyle>

class QPainter;

namespace korvex::ui {

/// What the rows of todos have in common, wherever they stand.
namespace TodoPainting {

/// The circle of a todo whose row is under the pointer, or is not.
Shapes::CheckCircle circleOf(const model::Entry& entry, QStyle::State row);
/// Draws the label's text from the top of its place, and its bell beside it.
void drawDueLabel(QPainter& painter, const QRect& rect, const DueLabel& label, const QColor& color,
                  const Theme& theme);

} // namespace TodoPainting

} // namespace korvex::ui
