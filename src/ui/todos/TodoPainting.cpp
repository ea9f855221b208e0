#include "ui/todos/TodoPainting.h"

#include "ui/kit/IconSet.h"

#include <QPainter>

namespace korvex::ui {

void TodoPainting::drawIcon(QPainter& painter, const QString& name, const QColor& color,
                            const QRect& rect) {
    painter.drawPixmap(rect.topLeft(), IconSet::pixmap(name, color, rect.width(),
                                                       painter.device()->devicePixelRatio()));
}

void TodoPainting::drawCircle(QPainter& painter, const QRect& rect, bool isCompleted,
                              bool isHovered, const ThemeColors& colors) {
    if (isCompleted) {
        drawIcon(painter, QStringLiteral("check-circle-fill"), colors.accent, rect);
    } else {
        drawIcon(painter, QStringLiteral("circle"),
                 isHovered ? colors.accent : colors.secondaryText, rect);
    }
}

void TodoPainting::drawDueLabel(QPainter& painter, const QRect& rect, const DueLabel& label,
                                const QColor& color, const Theme& theme) {
    painter.setFont(theme.smallFont());
    painter.setPen(color);
    // A label that fits is not to be wrapped for a part of a pixel.
    const auto wraps = label.width(theme) > rect.width();
    painter.drawText(wraps ? rect.adjusted(0, 0, -label.bellWidth(theme), 0) : rect,
                     Qt::AlignLeft | Qt::AlignVCenter | (wraps ? Qt::TextWordWrap : 0), label.text);
    if (label.hasReminder) {
        const auto size = theme.scaled(13);
        drawIcon(painter, QStringLiteral("bell-fill"), color,
                 QRect(rect.right() + 1 - size, rect.center().y() - size / 2, size, size));
    }
}

} // namespace korvex::ui
