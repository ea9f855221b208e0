#include "ui/todos/TodoPainting.h"

#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/todos/RowFrame.h"

#include <QPainter>

namespace korvex::ui {

TodoPainting::Circle TodoPainting::circleOf(const model::Entry& entry, QStyle::State row) {
    return entry.isCompleted()                     ? Circle::completed
           : row.testFlag(QStyle::State_MouseOver) ? Circle::openHovered
                                                   : Circle::open;
}

void TodoPainting::drawCircle(QPainter& painter, const QRect& rect, Circle circle,
                              const ThemeColors& colors) {
    const auto isCompleted = circle == Circle::completed;
    IconSet::draw(painter,
                  isCompleted ? QStringLiteral("check-circle-fill") : QStringLiteral("circle"),
                  circle == Circle::open ? colors.secondaryText : colors.accent, rect);
}

void TodoPainting::drawDueLabel(QPainter& painter, const QRect& rect, const DueLabel& label,
                                const QColor& color, const Theme& theme) {
    painter.setFont(theme.smallFont());
    painter.setPen(color);
    // A label that fits is not to be wrapped for a part of a pixel.
    const auto wraps = label.width(theme) > rect.width();
    const auto words = rect.adjusted(0, 0, wraps ? -label.bellWidth(theme) : 0, 0);
    painter.drawText(mirrored(words, rect),
                     Qt::AlignLeft | Qt::AlignTop | (wraps ? Qt::TextWordWrap : 0),
                     isolated(label.text));
    if (label.hasReminder) {
        const auto size = theme.extent(Extent::smallIcon);
        const auto top = topOfSign(QFontMetrics(theme.smallFont()), size);
        const QRect bell(rect.right() + 1 - size, rect.top() + top, size, size);
        IconSet::draw(painter, QStringLiteral("bell-fill"), color, mirrored(bell, rect));
    }
}

} // namespace korvex::ui
