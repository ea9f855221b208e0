#include "ui/boards/NamedRow.h"

#include "ui/kit/lists/RowGround.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"

#include <QFontMetrics>
#include <QPainter>

#include <algorithm>

namespace korvex::ui {

namespace {

/// What is left of a long name beside a note, in pixels at the standard font size: some letters.
constexpr int kShortestName = 40;

/// How far the base line lies below the middle of a line of this font.
int baseBelowMiddle(const QFontMetrics& metrics) {
    return metrics.ascent() - metrics.height() / 2;
}

} // namespace

int NamedRow::height(const Theme& theme) {
    return std::max(theme.extent(Extent::control), QFontMetrics(theme.font()).lineSpacing()) +
           theme.rowDistance() / 2;
}

QRect NamedRow::box(const QRect& row, int margin, const Theme& theme) {
    const auto apart = theme.space(Space::hair) / 2;
    return row.adjusted(margin, apart, -margin, -apart);
}

QRect NamedRow::nameRect(const QRect& box, const Theme& theme) {
    const auto padding = theme.space(Space::medium);
    return box.adjusted(padding + theme.extent(Extent::sign) + padding, 0, -padding, 0);
}

void NamedRow::paint(QPainter& painter, const QRect& box, QStyle::State state,
                     const Theme& theme) const {
    const auto& colors = theme.colors();
    const auto padding = theme.space(Space::medium);
    const QFontMetrics metrics(theme.font());
    const QFontMetrics noteMetrics(theme.smallFont());
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    paintRowGround(painter, box, state, theme);

    const auto size = theme.extent(Extent::sign);
    const QRect sign(box.left() + padding, box.top() + (box.height() - size) / 2, size, size);
    IconSet::draw(painter, icon, iconColor, mirrored(sign, box));

    auto place = nameRect(box, theme);
    const auto forNote = note.isEmpty() ? 0 : noteMetrics.horizontalAdvance(note) + padding;
    const auto needed = std::min(metrics.horizontalAdvance(name), theme.scaled(kShortestName));
    if (forNote > 0 && place.width() - forNote >= needed) {
        const auto onOneLine = baseBelowMiddle(metrics) - baseBelowMiddle(noteMetrics);
        painter.setFont(theme.smallFont());
        painter.setPen(colors.secondaryText);
        painter.drawText(mirrored(place, box).translated(0, onOneLine),
                         Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, isolated(note));
        place.setRight(place.right() - forNote);
    }
    const auto markSize = theme.extent(Extent::smallIcon);
    if (!mark.isEmpty() && place.width() - markSize >= needed) {
        const QRect at(place.right() + 1 - markSize, box.top() + (box.height() - markSize) / 2,
                       markSize, markSize);
        IconSet::draw(painter, mark, colors.accent, mirrored(at, box));
        place.setRight(at.left() - theme.space(Space::small));
    }
    painter.setFont(theme.font());
    painter.setPen(colors.text);
    // The name runs in its own direction from where the window's lines begin.
    painter.setLayoutDirection(directionOf(name));
    painter.drawText(mirrored(place, box), static_cast<int>(lineStart()) | Qt::TextSingleLine,
                     metrics.elidedText(name, Qt::ElideRight, place.width()));
    painter.restore();
}

} // namespace korvex::ui
