#include "ui/text/ListMarkers.h"

#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"
#include "ui/text/TextFormats.h"
#include "ui/text/TextLines.h"

#include <QFontMetricsF>
#include <QTextLayout>
#include <QTextList>

#include <algorithm>
#include <optional>

namespace korvex::ui {

using richtext::MarkerFormat;

namespace {

/// Bullets, dashes and ticks are drawn, so that they are the same in every font.
std::optional<MarkerFormat> shapeOf(const richtext::MarkerParts& parts) {
    const auto isShape = parts.before.empty() && parts.after.empty() &&
                         parts.format != MarkerFormat::none && !isCounting(parts.format);
    return isShape ? std::optional(parts.format) : std::nullopt;
}

} // namespace

bool ListMarkers::count(const QTextBlock& block) {
    const auto* const drawn = block.textList();
    if (!drawn) {
        m_last = nullptr;
        return false;
    }
    const auto [place, isNew] = m_lists.try_emplace(drawn);
    auto& list = place->second;
    if (isNew) {
        list.list = listsOf(*drawn).back();
    }
    ++list.items;
    m_last = &list;
    return true;
}

QString ListMarkers::text() const {
    const auto& list = *m_last->list;
    return toQString(richtext::markerText(list, list.start + m_last->items - 1));
}

void ListMarkers::paint(QPainter& painter, const QTextBlock& block) const {
    const auto* const layout = block.layout();
    if (!m_last || layout->lineCount() == 0) {
        return;
    }
    const auto first = block.begin();
    const auto letters =
        attributesOf(first.atEnd() ? block.charFormat() : first.fragment().charFormat()).font;
    const auto font = m_look.fontOf({.isBold = letters.isBold, .size = letters.size});
    const QFontMetricsF metrics(font);
    const auto line = layout->lineAt(0);
    const auto origin = originOf(block);
    const auto base = origin.y() + line.y() + line.ascent();
    const auto isRightToLeft = block.textDirection() == Qt::RightToLeft;
    const auto distance = m_look.space(Space::medium);
    const auto start = origin.x() + (isRightToLeft ? line.x() + line.width() : line.x());

    const auto parts = richtext::partsOf(m_last->list->marker);
    painter.setPen(m_look.quiet);
    if (const auto shape = shapeOf(parts)) {
        const auto width = metrics.xHeight();
        const auto left = isRightToLeft ? start + distance : start - distance - width;
        paintShape(painter, *shape, QRectF(left, base - width, width, width),
                   base - metrics.xHeight() / 2);
        return;
    }
    const auto written = text();
    auto fitting = font;
    auto width = metrics.horizontalAdvance(written);
    // Long numbers come closer to the text, and are set smaller before they leave the list's room.
    const double room = m_look.listIndent() - m_look.space(Space::hair);
    if (width > room) {
        fitting.setPointSizeF(font.pointSizeF() * room / width);
        width = room;
    }
    const auto gap = std::min<double>(distance, m_look.listIndent() - width);
    painter.setFont(fitting);
    painter.setLayoutDirection(block.textDirection());
    painter.drawText(QPointF(isRightToLeft ? start + gap : start - gap - width, base), written);
}

void ListMarkers::paintShape(QPainter& painter, MarkerFormat format, const QRectF& room,
                             double middle) const {
    const auto center = QPointF(room.center().x(), middle);
    const auto line = room.width() / 6;
    // A square around the middle, `part` of the room wide.
    const auto bullet = [&](double part) {
        const auto size = room.width() * part;
        return QRectF(center.x() - size / 2, center.y() - size / 2, size, size);
    };
    painter.save();
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_look.quiet);
    switch (format) {
    case MarkerFormat::circle:
        painter.setPen(QPen(m_look.quiet, line));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(bullet(0.75 - 1.0 / 6));
        break;
    case MarkerFormat::square:
        painter.drawRect(bullet(0.65));
        break;
    case MarkerFormat::hyphen:
        painter.drawRoundedRect(QRectF(room.left(), middle - line / 2, room.width(), line),
                                line / 2, line / 2);
        break;
    case MarkerFormat::check: {
        const auto size = m_look.extent(Extent::smallIcon);
        IconSet::draw(
            painter, QStringLiteral("check"), m_look.quiet,
            QRectF(center.x() - size / 2.0, center.y() - size / 2.0, size, size).toRect());
        break;
    }
    default:
        painter.drawEllipse(bullet(0.75));
        break;
    }
    painter.restore();
}

} // namespace korvex::ui
