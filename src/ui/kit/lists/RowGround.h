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

/// How wide the ring is around what has the keyboard, in pixels.
inline constexpr double kRowRing = 2;

/// Draws an edge of this width within the rounded box of a row.
inline void paintRowEdge(QPainter& painter, const QRect& box, const QColor& color, double width,
                         const Theme& theme) {
    const auto inside = width / 2;
    const auto radius = theme.radius(Radius::medium) - inside;
    painter.setPen(QPen(color, width));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(box).adjusted(inside, inside, -inside, -inside), radius, radius);
}

/// The ring of the row that has the keyboard, within its box.
inline void paintRowRing(QPainter& painter, const QRect& box, QStyle::State state,
                         const Theme& theme) {
    if (state.testFlag(QStyle::State_HasFocus)) {
        paintRowEdge(painter, box, theme.colors().accent, kRowRing, theme);
    }
}

/// The rounded box of a row of plain text that is chosen or under the pointer, and the ring of the
/// one that has the keyboard. `ground` is what the list stands on.
inline void paintRowGround(QPainter& painter, const QRect& box, QStyle::State state,
                           const QColor& ground, const Theme& theme) {
    constexpr double kHover = 0.06;
    const auto isChosen = state.testFlag(QStyle::State_Selected);
    const auto radius = theme.radius(Radius::medium);
    painter.save();
    if (isChosen || state.testFlag(QStyle::State_MouseOver)) {
        const auto& colors = theme.colors();
        painter.setPen(Qt::NoPen);
        painter.setBrush(isChosen ? colors.selection : blended(colors.text, ground, kHover));
        painter.drawRoundedRect(box, radius, radius);
    }
    paintRowRing(painter, box, state, theme);
    painter.restore();
}

/// The same of a row that may be large and has colours of its own: an edge and no ground.
inline void paintRowOutline(QPainter& painter, const QRect& box, QStyle::State state,
                            const Theme& theme) {
    painter.save();
    if (state.testAnyFlags(QStyle::State_Selected | QStyle::State_MouseOver)) {
        paintRowEdge(painter, box, theme.colors().hairline, 1, theme);
    }
    paintRowRing(painter, box, state, theme);
    painter.restore();
}

} // namespace korvex::ui
