#pragma once

#include "ui/kit/theme/Theme.h"

#include <QStyleOption>

class QPainter;

namespace korvex::ui {

/// The rows of Qt's own lists and the parts between things.
namespace ListDrawing {

/// The tint of a row that is chosen or under the pointer.
void paintRow(QPainter& painter, const QStyleOptionViewItem& option, const Theme& theme);
/// The option for what stands in the row: its words and icon stay as they are where it is chosen.
QStyleOptionViewItem contentOf(const QStyleOptionViewItem& option);
/// What can be dragged between two parts of a window, while it is pointed at or dragged: at rest
/// the parts themselves have an edge where one is wanted.
void paintSplitter(QPainter& painter, const QStyleOption& option, const Theme& theme);
void paintToolBarSeparator(QPainter& painter, const QStyleOption& option, const Theme& theme);

} // namespace ListDrawing

} // namespace korvex::ui
