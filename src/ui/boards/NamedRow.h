#pragma once

#include "ui/kit/theme/Theme.h"

#include <QColor>
#include <QRect>
#include <QStyle>

class QPainter;

namespace korvex::ui {

/// A row that names a board or a page, wherever they are listed: an icon, the name, and something
/// short at its end.
struct NamedRow {
    /// Its name in the set.
    QString icon;
    QColor iconColor;
    QString name;
    QString note = {};
    /// An icon before the note that asks for a look; empty for none.
    QString mark = {};

    static int height(const Theme& theme);
    /// The ground of a row that is as wide as its list but for `margin` at both sides.
    static QRect box(const QRect& row, int margin, const Theme& theme);
    /// Where the name may stand, as if lines began at the left.
    static QRect nameRect(const QRect& box, const Theme& theme);
    /// What a field for the name keeps free before its letters: with it they stay where they are
    /// drawn.
    static int fieldMargin(const Theme& theme) {
        return theme.space(Space::small) + theme.space(Space::hair);
    }

    /// What has no room is cut at the end of the name; where the note would leave next to nothing
    /// of the name, the note goes.
    void paint(QPainter& painter, const QRect& box, QStyle::State state, const Theme& theme) const;
};

} // namespace korvex::ui
