#include "ui/text/TextPainting.h"

#include "ui/text/ListMarkers.h"
#include "ui/text/TextFormats.h"
#include "ui/text/TextLines.h"
#include "ui/text/TextSelection.h"

#include <QLinearGradient>
#include <QTextBlock>
#include <QTextLayout>

#include <algorithm>

namespace korvex::ui {

namespace {

/// The grounds of code blocks: paragraphs of one stand on one.
class BlockGrounds {
public:
    BlockGrounds(QPainter& painter, const TextLook& look, const QRectF& exposed)
        : m_painter(painter), m_look(look), m_exposed(exposed) {}

    void add(const QTextBlock& block) {
        const auto beside = m_look.codePaddingBeside();
        const auto above = m_look.codePaddingAbove();
        const auto own = bandsOf(block).adjusted(-beside, -above, beside, above);
        // Lines of one block of code stand on one ground, those of two cells on two.
        if (!m_ground.isEmpty() &&
            (own.left() != m_ground.left() || own.top() > m_ground.bottom() ||
             own.bottom() < m_ground.top())) {
            finish();
        }
        m_ground = m_ground.isEmpty() ? own : m_ground.united(own);
    }
    void finish() {
        if (!m_ground.isEmpty() && m_ground.intersects(m_exposed)) {
            m_painter.setPen(Qt::NoPen);
            m_painter.setBrush(m_look.codeGround);
            const auto radius = m_look.radius(Radius::medium);
            m_painter.drawRoundedRect(m_ground, radius, radius);
        }
        m_ground = {};
    }

private:
    QPainter& m_painter;
    const TextLook& m_look;
    QRectF m_exposed;
    QRectF m_ground;
};

/// From where to where the characters go, other text that stands between them included.
QRectF boundsOf(const QTextBlock& block, const QTextLine& line, int from, int to) {
    const auto left = originOf(block).x();
    auto result = bandOf(block, line);
    const auto last = std::min(to, line.textStart() + line.textLength());
    auto least = result.right();
    auto most = result.left();
    for (int at = std::max(from, line.textStart()); at < last; ++at) {
        for (const auto edge : {QTextLine::Leading, QTextLine::Trailing}) {
            const auto x = left + line.cursorToX(at, edge);
            least = std::min(least, x);
            most = std::max(most, x);
        }
    }
    result.setLeft(least);
    result.setRight(std::max(least, most));
    return result;
}

/// Whether some of what is painted anew is beside the band.
bool isBeside(const QRectF& band, const QRectF& exposed) {
    return band.top() <= exposed.bottom() && band.bottom() >= exposed.top();
}

/// The little ground of the code between two characters of a block.
void paintInlineGround(QPainter& painter, const QTextBlock& block, int from, int to,
                       const TextLook& look, const QRectF& exposed) {
    const auto& layout = *block.layout();
    for (int i = 0; i < layout.lineCount(); ++i) {
        const auto line = layout.lineAt(i);
        if (line.textStart() >= to || line.textStart() + line.textLength() <= from ||
            !isBeside(bandOf(block, line), exposed)) {
            continue;
        }
        const auto stretch = stretchOf(block, line, from, to);
        auto ground = stretch ? *stretch : boundsOf(block, line, from, to);
        const auto top = originOf(block).y() + line.y();
        ground.setTop(top);
        ground.setBottom(top + line.height());
        const auto beside = look.space(Space::hair);
        painter.setPen(Qt::NoPen);
        painter.setBrush(look.codeGround);
        const auto radius = look.radius(Radius::small);
        painter.drawRoundedRect(ground.adjusted(-beside, 0, beside, 0), radius, radius);
    }
}

/// `formats` are all of the document: a look at them costs far less than where a paragraph stands,
/// above all in a table, and hardly any has code.
void paintInlineGrounds(QPainter& painter, const QTextBlock& block,
                        const QList<QTextFormat>& formats, const TextLook& look,
                        const QRectF& exposed) {
    int from = -1;
    int to = -1;
    const auto finish = [&] {
        if (from >= 0) {
            paintInlineGround(painter, block, from, to, look, exposed);
        }
        from = -1;
    };
    for (auto it = block.begin(); !it.atEnd(); ++it) {
        const auto fragment = it.fragment();
        if (!formats.at(fragment.charFormatIndex()).hasProperty(kCodeLanguageProperty)) {
            finish();
            continue;
        }
        const auto start = fragment.position() - block.position();
        from = from < 0 ? start : from;
        to = start + fragment.length();
    }
    finish();
}

/// Bands of a selection that touch become one shape, of which the outer corners are round.
class SelectionShape {
public:
    SelectionShape(QPainter& painter, double radius) : m_painter(painter), m_radius(radius) {}

    void add(const QRectF& band) {
        m_painter.drawRoundedRect(band, m_radius, m_radius);
        const auto left = std::max(band.left(), m_last.left());
        const auto right = std::min(band.right(), m_last.right());
        if (band.top() <= m_last.bottom() + 1 && band.top() >= m_last.top() && left < right) {
            const auto between = QRectF(QPointF(left, m_last.bottom() - m_radius),
                                        QPointF(right, band.top() + m_radius));
            m_painter.drawRect(between.intersected(m_last.united(band)));
        }
        m_last = band;
    }

private:
    QPainter& m_painter;
    double m_radius;
    QRectF m_last;
};

} // namespace

void paintUnderText(QPainter& painter, const QTextDocument& document, const TextLook& look,
                    const QRectF& exposed) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    BlockGrounds grounds(painter, look, exposed);
    ListMarkers markers(look);
    const auto formats = document.allFormats();
    for (auto block = document.begin(); block.isValid(); block = block.next()) {
        const auto hasMarker = markers.count(block);
        if (isCodeBlock(block)) {
            grounds.add(block);
        } else {
            grounds.finish();
            paintInlineGrounds(painter, block, formats, look, exposed);
        }
        if (hasMarker && isBeside(bandsOf(block), exposed)) {
            markers.paint(painter, block);
        }
    }
    grounds.finish();
    painter.restore();
}

void paintSelection(QPainter& painter, const QTextCursor& selection, const TextLook& look,
                    const QRectF& exposed) {
    if (!selection.hasSelection() || selection.hasComplexSelection()) {
        return; // of cells that are selected Qt draws all
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(look.selection);
    const auto radius = look.radius(Radius::small);
    SelectionShape shape(painter, radius);
    // What is round in a band reaches into the next one.
    const auto around = exposed.adjusted(0, -radius, 0, radius);
    const auto start = startOf(selection);
    const auto end = selection.selectionEnd();
    const auto lineEnd = look.space(Space::small);
    for (auto block = selection.document()->findBlock(start);
         block.isValid() && block.position() < end; block = block.next()) {
        auto bands = bandsOf(block);
        // What is between two paragraphs that are both selected is selected, too.
        if (block.position() > start && isParagraphBelow(block)) {
            bands.setTop(std::min(bands.top(), bandsOf(block.previous()).bottom()));
        }
        if (!isBeside(bands, around)) {
            continue;
        }
        const auto& layout = *block.layout();
        const auto goesOn = end >= block.position() + block.length();
        for (int i = 0; i < layout.lineCount(); ++i) {
            auto band = stretchOf(block, layout.lineAt(i), start - block.position(),
                                  end - block.position());
            if (!band) {
                continue;
            }
            if (goesOn && i == layout.lineCount() - 1) {
                const auto isTurned = block.textDirection() == Qt::RightToLeft;
                band->adjust(isTurned ? -lineEnd : 0, 0, isTurned ? 0 : lineEnd, 0);
            }
            if (i == 0) {
                band->setTop(bands.top());
            }
            if (isBeside(*band, around)) {
                shape.add(*band);
            }
        }
    }
    painter.restore();
}

void paintWhereItGoesOn(QPainter& painter, const QRectF& whole, const QRectF& seen,
                        const TextLook& look) {
    // The lower line of a table lies in what Qt gives the paragraph below.
    const auto part = QRectF(whole.toAlignedRect().adjusted(0, -1, 0, look.space(Space::small)));
    const auto fading = look.space(Space::wide);
    auto clear = look.ground;
    clear.setAlpha(0);
    const auto fade = [&](double from, double to) {
        QLinearGradient shade(from, 0, to, 0);
        shade.setColorAt(0, look.ground);
        shade.setColorAt(1, clear);
        painter.fillRect(QRectF(std::min(from, to), part.top(), fading, part.height()), shade);
    };
    if (whole.left() < seen.left() - 1) {
        fade(seen.left(), seen.left() + fading);
    }
    if (whole.right() > seen.right() + 1) {
        fade(seen.right(), seen.right() - fading);
    }
}

} // namespace korvex::ui
