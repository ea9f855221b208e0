#pragma once

#include "ui/kit/theme/Theme.h"

#include <QPainter>
#include <QRect>
#include <QStyle>

namespace korvex::ui {

/// What is chosen in a list without the keyboard is told quietly, as if the pointer were over it.
inline QStyle::State quietWithoutKeyboard(QStyle::State state) {
    if (!state.testFlag(QStyle::State_Active) && state.testFlag(QStyle::State_Selected)) {
        state.setFlag(QStyle::State_MouseOver);
        state.setFlag(QStyle::State_Selected, false);
    }
    return state;
}

/// The rounded box of a row that is chosen or under the pointer, and the ring of the one that has
/// the keyboard. `hovered` is the colour of the box under the pointer.
inline void paintRowBox(QPainter& painter, const QRect& box, QStyle::State state,
                        const QColor& hovered, const Theme& theme) {
    constexpr double kCornerRadius = 6;
    constexpr auto kShown =
        QStyle::State_Selected | QStyle::State_MouseOver | QStyle::State_HasFocus;
    if (!state.testAnyFlags(kShown)) {
        return;
    }
    const auto& colors = theme.colors();
    const auto isChosen = state.testFlag(QStyle::State_Selected);
    painter.save();
    if (isChosen || state.testFlag(QStyle::State_MouseOver)) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(isChosen ? colors.selection : hovered);
        painter.drawRoundedRect(box, kCornerRadius, kCornerRadius);
    }
    if (state.testFlag(QStyle::State_HasFocus)) {
        painter.setPen(QPen(colors.accent, 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(box).adjusted(0.75, 0.75, -0.75, -0.75), kCornerRadius,
                                kCornerRadius);
    }
    painter.restore();
}

/// The same where `ground` is what the list stands on and its rows hold plain text only.
inline void paintRowGround(QPainter& painter, const QRect& box, QStyle::State state,
                           const QColor& ground, const Theme& theme) {
    paintRowBox(painter, box, state, blended(theme.colors().text, ground, 0.06), theme);
}

} // namespace korvex::ui
