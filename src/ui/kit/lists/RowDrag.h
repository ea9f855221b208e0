#pragma once

#include "base/Uuid.h"
#include "ui/kit/theme/Theme.h"

#include <QMimeData>
#include <QRect>

#include <optional>

class QDropEvent;
class QPainter;

namespace korvex::ui {

/// What is dragged when a row is: a type for what the row shows, and its identifier. The caller
/// owns the payload.
QMimeData* rowDrag(const char* type, const base::Uuid& id);
bool isRowDrag(const QMimeData& data, const char* type);
/// The identifier of the dragged row; absent when something else is dragged.
std::optional<base::Uuid> draggedRow(const QMimeData& data, const char* type);

/// Takes what is dragged without taking it away from where it comes from, whatever that proposes.
/// False where it can only be moved; then it is not taken.
bool acceptAsCopy(QDropEvent& event);

/// Draws the line where a dragged row would go: along the top or the bottom edge of another row,
/// shorter than that by `margin` pixels at each end.
void paintDropLine(QPainter& painter, const QRect& row, Qt::Edge edge, int margin,
                   const Theme& theme);

} // namespace korvex::ui
