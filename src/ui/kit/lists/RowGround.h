#pragma once

#include "ui/kit/theme/Shapes.h"

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

/// The ring of the row that has the keyboard, within its box.
inline void paintRowRing(QPainter& painter, const QRect& box, QStyle::State state,
                         const Theme& theme) {
    if (state.testFlag(QStyle::State_HasFocus)) {
        Shapes::paintRing(painter, box, theme.radius(Radius::medium), theme.colors().accent);
    }
}

/// The rounded box of a row of plain text that is chosen or under the pointer, and the ring of the
/// one that has the keyboard.
inline void paintRowGround(QPainter& painter, const QRect& box, QStyle::State state,
                           const Theme& theme) {
    const auto& colors = theme.colors();
    const auto radius = theme.radius(Radius::medium);
    if (state.testFlag(QStyle::State_Selected)) {
        Shapes::paintChosen(painter, box, radius, colors);
    } else if (state.testFlag(QStyle::State_MouseOver)) {
        Shapes::paintBox(painter, box, radius, colors.tint(Tint::rest), {});
    }
    paintRowRing(painter, box, state, theme);
}

/// The same of a row that may be large and has colours of its own: an edge and no ground.
inline void paintRowOutline(QPainter& painter, const QRect& box, QStyle::State state,
                            const Theme& theme) {
    const auto isMarked = state.testAnyFlags(QStyle::State_Selected | QStyle::State_MouseOver);
    Shapes::paintBox(painter, box, theme.radius(Radius::medium), {},
                     isMarked ? theme.colors().hairline : QColor());
    paintRowRing(painter, box, state, theme);
}

} // namespace korvex::ui
