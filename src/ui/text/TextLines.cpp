#include "ui/text/TextLines.h"

#include <QAbstractTextDocumentLayout>

#include <algorithm>
#include <cmath>
#include <limits>

namespace korvex::ui {

namespace {

/// The same rectangle with half of what the line's height has beyond its letters on both sides.
QRectF withLeading(QRectF letters, const QTextBlock& block, const QTextLine& line) {
    const auto leading = block.blockFormat().lineHeight(line.height(), 1) - line.height();
    return letters.adjusted(0, -leading / 2, 0, leading / 2);
}

bool runsOneWay(const QTextBlock& block, const QTextLine& line) {
    const auto isRightToLeft = block.textDirection() == Qt::RightToLeft;
    const auto text = block.text();
    const auto part = QStringView(text).mid(line.textStart(), line.textLength());
    return std::none_of(part.begin(), part.end(), [&](QChar unit) {
        switch (unit.direction()) {
        case QChar::DirL:
        case QChar::DirEN:
        case QChar::DirAN:
            return isRightToLeft;
        case QChar::DirR:
        case QChar::DirAL:
            return !isRightToLeft;
        default:
            return unit.isSurrogate() && isRightToLeft;
        }
    });
}

} // namespace

QPointF originOf(const QTextBlock& block) {
    return block.document()->documentLayout()->blockBoundingRect(block).topLeft();
}

QRectF bandOf(const QTextBlock& block, const QTextLine& line) {
    return withLeading(line.naturalTextRect(), block, line).translated(originOf(block));
}

QRectF bandsOf(const QTextBlock& block) {
    const auto& layout = *block.layout();
    if (layout.lineCount() == 0) {
        return {};
    }
    const auto last = layout.lineCount() - 1;
    auto result = layout.boundingRect();
    result.setTop(withLeading(layout.lineAt(0).rect(), block, layout.lineAt(0)).top());
    result.setBottom(withLeading(layout.lineAt(last).rect(), block, layout.lineAt(last)).bottom());
    return result.translated(originOf(block));
}

std::optional<QRectF> stretchOf(const QTextBlock& block, const QTextLine& line, int from, int to) {
    const auto start = line.textStart();
    const auto end = start + line.textLength();
    from = std::max(from, start);
    to = std::min(to, end);
    if (from > to || (from == to && line.textLength() > 0)) {
        return std::nullopt;
    }
    auto band = bandOf(block, line);
    if (from == start && to == end) {
        return band;
    }
    if (!runsOneWay(block, line)) {
        return std::nullopt;
    }
    const auto left = originOf(block).x();
    const auto one = left + line.cursorToX(from);
    const auto other = left + line.cursorToX(to);
    // Blanks at the end of a line that goes on below are not seen.
    const auto natural = band;
    band.setLeft(std::clamp(std::min(one, other), natural.left(), natural.right()));
    band.setRight(std::clamp(std::max(one, other), natural.left(), natural.right()));
    return band;
}

bool isParagraphBelow(const QTextBlock& block) {
    return block.isValid() && block.position() > 0 &&
           block.document()->characterAt(block.position() - 1) == QChar(QChar::ParagraphSeparator);
}

QPointF onLine(const QTextDocument& document, const QPointF& point) {
    const auto position = document.documentLayout()->hitTest(point, Qt::FuzzyHit);
    const auto hit = document.findBlock(std::max(position, 0));
    if ((hit == document.begin() && point.y() < bandsOf(hit).top()) ||
        (hit == document.lastBlock() && point.y() > bandsOf(hit).bottom())) {
        return point;
    }
    auto nearest = std::numeric_limits<double>::max();
    auto result = point;
    const auto look = [&](const QTextBlock& block) {
        const auto& layout = *block.layout();
        const auto top = originOf(block).y();
        for (int i = 0; i < layout.lineCount(); ++i) {
            const auto letters = layout.lineAt(i).naturalTextRect().translated(0, top);
            constexpr double kInside = 0.5;
            const auto y =
                std::clamp(point.y(), letters.top() + kInside,
                           std::max(letters.bottom() - kInside, letters.top() + kInside));
            if (const auto distance = std::abs(y - point.y()); distance < nearest) {
                nearest = distance;
                result.setY(y);
            }
        }
    };
    look(hit);
    if (nearest > 0 && isParagraphBelow(hit)) {
        look(hit.previous());
    }
    if (nearest > 0 && isParagraphBelow(hit.next())) {
        look(hit.next());
    }
    return result;
}

} // namespace korvex::ui
