#include "ui/todos/TodoPainting.h"

#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/todos/RowFrame.h"

#include <QPainter>

namespace korvex::ui {

Shapes::CheckCircle TodoPainting::circleOf(const model::Entry& entry, QStyle::State row) {
    return entry.isCompleted()                     ? Shapes::CheckCircle::completed
           : row.testFlag(QStyle::State_MouseOver) ? Shapes::CheckCircle::openHovered
                                                   : Shapes::CheckCircle::open;
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
        const auto icon =
            label.isReminderPast ? QStringLiteral("bell") : QStringLiteral("bell-fill");
        IconSet::draw(painter, icon, color, mirrored(bell, rect));
    }
}

} // namespace korvex::ui
