#pragma once

#include "ui/kit/Theme.h"

#include <QPainter>
#include <QRect>
#include <QStyle>

namespace korvex::ui {

/// The rounded ground of a row that is chosen or under the pointer, and the ring of the one that
/// has the keyboard. `ground` is what the list stands on.
inline void paintRowGround(QPainter& painter, const QRect& box, QStyle::State state,
                           const QColor& ground, const Theme& theme) {
    constexpr double kCornerRadius = 6;
    const auto& colors = theme.colors();
    const bool isChosen = state.testFlag(QStyle::State_Selected);
    if (isChosen || state.testFlag(QStyle::State_MouseOver)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(isChosen ? colors.selection : blended(colors.text, ground, 0.06));
        painter.drawRoundedRect(box, kCornerRadius, kCornerRadius);
    }
    if (state.testFlag(QStyle::State_HasFocus)) {
        painter.setPen(QPen(colors.accent, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(box).adjusted(0.75, 0.75, -0.75, -0.75), kCornerRadius,
                                kCornerRadius);
    }
}

} // namespace korvex::ui
