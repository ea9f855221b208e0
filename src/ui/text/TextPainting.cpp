#include "ui/text/TextPainting.h"

#include "ui/text/TextFormats.h"

#include <QAbstractTextDocumentLayout>
#include <QFontMetricsF>
#include <QTextBlock>
#include <QTextLayout>

#include <unordered_map>

namespace korvex::ui {

namespace {

/// The rectangle of the block's lines. Qt's own forgets how far they are moved in.
QRectF rectOf(const QTextBlock& block) {
    return block.document()->documentLayout()->blockBoundingRect(block).translated(
        block.layout()->boundingRect().left(), 0);
}

void paintMarker(QPainter& painter, const QString& marker, const QTextBlock& block,
                 const QRectF& rect, const TextLook& look) {
    const auto* const layout = block.layout();
    if (marker.isEmpty() || !layout || layout->lineCount() == 0) {
        return;
    }
    const auto first = block.begin();
    const auto attributes =
        attributesOf(first.atEnd() ? block.charFormat() : first.fragment().charFormat());
    const auto font = look.fontOf({.isBold = attributes.font.isBold, .size = attributes.font.size});
    const QFontMetricsF metrics(font);
    const auto line = layout->lineAt(0);
    const auto isRightToLeft = block.textDirection() == Qt::RightToLeft;
    const auto gap = metrics.horizontalAdvance(QLatin1Char(' '));
    const double x =
        isRightToLeft ? rect.right() + gap : rect.left() - gap - metrics.horizontalAdvance(marker);
    painter.setFont(font);
    painter.setPen(look.text);
    painter.drawText(QPointF(x, rect.top() + line.y() + line.ascent()), marker);
}

} // namespace

void paintUnderText(QPainter& painter, const QTextDocument& document, const TextLook& look,
                    const QRectF& exposed) {
    const auto padding = look.codePadding();
    const auto above = padding / 2;
    QRectF ground;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const auto paintGround = [&] {
        if (!ground.isEmpty() && ground.intersects(exposed)) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(look.codeGround);
            painter.drawRoundedRect(ground, above, above);
        }
        ground = {};
    };
    struct Markers {
        bool areOwn = false;
        int items = 0;
    };
    std::unordered_map<const QTextList*, Markers> lists;
    for (auto block = document.begin(); block.isValid(); block = block.next()) {
        const auto* const list = block.textList();
        auto hasOwnMarker = false;
        auto item = 0;
        if (list) {
            const auto [place, isNew] = lists.try_emplace(list);
            if (isNew) {
                place->second.areOwn = list->format().boolProperty(kOwnMarkerProperty);
            }
            hasOwnMarker = place->second.areOwn;
            item = place->second.items++;
        }
        const auto isCode = isCodeBlock(block);
        if (!isCode) {
            paintGround();
        }
        if (!isCode && !hasOwnMarker) {
            continue;
        }
        const auto rect = rectOf(block);
        if (isCode) {
            const auto own = rect.adjusted(-padding, -above, padding, above);
            // Lines of one block of code stand on one ground, those of two cells on two.
            if (!ground.isEmpty() && (own.left() != ground.left() || own.top() > ground.bottom() ||
                                      own.bottom() < ground.top())) {
                paintGround();
            }
            ground = ground.isEmpty() ? own : ground.united(own);
        }
        if (hasOwnMarker && rect.intersects(exposed.adjusted(-rect.left(), 0, rect.left(), 0))) {
            paintMarker(painter, markerTextOf(*list, item), block, rect, look);
        }
    }
    paintGround();
    painter.restore();
}

} // namespace korvex::ui
