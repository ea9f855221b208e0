#include "ui/text/TextRow.h"

#include "ui/text/CodeColors.h"
#include "ui/text/Links.h"
#include "ui/text/TextDocumentConversion.h"
#include "ui/text/TextLines.h"
#include "ui/text/TextPainting.h"

#include <QAbstractTextDocumentLayout>
#include <QLinearGradient>
#include <QTextBlock>
#include <QTextFrame>

#include <algorithm>
#include <cmath>

namespace korvex::ui {

namespace {

constexpr std::size_t kUnitsPerCost = 200;
constexpr int kHighestCost = 60;

} // namespace

TextRow::TextRow(const richtext::AttributedString& text, int width, const TextLook& look)
    : m_cost(static_cast<int>(
          std::min(1 + text.length() / kUnitsPerCost, std::size_t{kHighestCost}))) {
    m_document.setUndoRedoEnabled(false);
    setText(m_document, text, look);
    setWidth(width);
    m_isColored = true;
    text.forEachRun([this](const richtext::AttributedString::CharacterRun& run) {
        m_isColored = m_isColored && !run.attributes.isCode();
    });
}

void TextRow::setWidth(int width) {
    m_width = width;
    m_document.setTextWidth(width);
    m_height = static_cast<int>(std::ceil(m_document.size().height()));
    m_wideTables.clear();
    findWideTables();
    reachTo(m_most);
}

void TextRow::reachTo(int most) {
    m_most = most;
    m_reach = m_width;
    for (auto& table : m_wideTables) {
        m_reach = std::max(m_reach, endOf(table));
        move(table, table.offset);
    }
}

int TextRow::wholeWidth() const {
    int whole = m_width;
    for (const auto& table : m_wideTables) {
        whole = std::max(whole, static_cast<int>(std::ceil(table.place.right())));
    }
    return whole;
}

int TextRow::endOf(const WideTable& table) const {
    const auto whole = static_cast<int>(std::ceil(table.place.right()));
    return std::clamp(whole, m_width, std::max(m_width, m_most));
}

void TextRow::findWideTables() {
    for (auto* const frame : m_document.rootFrame()->childFrames()) {
        auto place = m_document.documentLayout()->frameBoundingRect(frame);
        // Of the distances around the table Qt reckons one to it and the other not.
        const auto before = m_document.findBlock(frame->firstPosition() - 1);
        if (before.isValid()) {
            // Not of a paragraph that Qt hides behind the table's upper line.
            const auto letters = originOf(before).y() + before.layout()->boundingRect().bottom();
            place.setTop(std::min(place.top(), letters));
        }
        const auto next = m_document.findBlock(frame->lastPosition() + 1);
        if (next.isValid()) {
            const auto following = m_document.documentLayout()->blockBoundingRect(next);
            place.setBottom(std::min(place.bottom(), following.top()));
        }
        if (place.right() > m_width + 1 || place.left() < -1) {
            m_wideTables.push_back({place});
        }
    }
}

QRectF TextRow::bandOf(const WideTable& table) const {
    // Whole pixels, of which the lines above and below lose none.
    const auto top = std::ceil(table.place.top());
    return {0, top, static_cast<double>(endOf(table)), std::floor(table.place.bottom()) - top};
}

void TextRow::move(WideTable& table, int offset) const {
    const int least = static_cast<int>(std::floor(std::min(0.0, table.place.left())));
    const int most = static_cast<int>(std::ceil(std::max(0.0, table.place.right() - endOf(table))));
    table.offset = std::clamp(offset, least, most);
}

bool TextRow::scrollTables(int by, std::optional<QPointF> under) {
    bool hasMoved = false;
    for (auto& table : m_wideTables) {
        if (!under || bandOf(table).contains(*under)) {
            const auto before = table.offset;
            move(table, before + by);
            hasMoved = hasMoved || table.offset != before;
        }
    }
    return hasMoved;
}

std::vector<int> TextRow::tableOffsets() const {
    std::vector<int> offsets;
    for (const auto& table : m_wideTables) {
        offsets.push_back(table.offset);
    }
    return offsets;
}

void TextRow::setTableOffsets(const std::vector<int>& offsets) {
    for (std::size_t i = 0; i < std::min(offsets.size(), m_wideTables.size()); ++i) {
        move(m_wideTables[i], offsets[i]);
    }
}

void TextRow::paint(QPainter& painter, const TextLook& look, const QColor& ground) {
    const QRectF exposed(0, 0, m_width, m_height);
    QRegion text(exposed.toAlignedRect());
    for (const auto& table : m_wideTables) {
        text -= bandOf(table).toAlignedRect();
    }
    painter.save();
    painter.setClipRegion(text, Qt::IntersectClip);
    paintDocument(painter, look, exposed);
    painter.restore();
    for (const auto& table : m_wideTables) {
        paintTable(painter, table, look, ground);
    }
}

void TextRow::paintDocument(QPainter& painter, const TextLook& look, const QRectF& clip) const {
    paintUnderText(painter, m_document, look, clip);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setColor(QPalette::Text, look.text);
    context.clip = clip;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false); // as the editor draws its lines
    m_document.documentLayout()->draw(&painter, context);
    painter.restore();
}

void TextRow::paintTable(QPainter& painter, const WideTable& table, const TextLook& look,
                         const QColor& ground) const {
    const auto band = bandOf(table);
    painter.save();
    painter.setClipRect(band.toAlignedRect(), Qt::IntersectClip);
    painter.translate(-table.offset, 0);
    paintDocument(painter, look, band.translated(table.offset, 0));
    painter.translate(table.offset, 0);
    auto clear = ground;
    clear.setAlpha(0);
    const auto fading = look.space(Space::wide);
    const auto fade = [&](double from, double to) {
        QLinearGradient shade(from, 0, to, 0);
        shade.setColorAt(0, ground);
        shade.setColorAt(1, clear);
        painter.fillRect(QRectF(std::min(from, to), band.top(), fading, band.height()), shade);
    };
    if (table.place.left() < table.offset - 1) {
        fade(0, fading);
    }
    if (table.place.right() > table.offset + band.width() + 1) {
        fade(band.width(), band.width() - fading);
    }
    const auto part = band.width() / table.place.width();
    if (part < 1) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(look.scrollHandle);
        const auto handle = look.extent(Extent::scrollHandle);
        painter.drawRoundedRect(QRectF((table.offset - table.place.left()) * part,
                                       band.bottom() - handle, band.width() * part, handle),
                                handle / 2.0, handle / 2.0);
    }
    painter.restore();
}

QPointF TextRow::inDocument(const QPointF& point) const {
    const auto table =
        std::find_if(m_wideTables.begin(), m_wideTables.end(),
                     [&](const WideTable& each) { return bandOf(each).contains(point); });
    return table == m_wideTables.end() ? point : point + QPointF(table->offset, 0);
}

bool TextRow::color(richtext::CodeHighlighter& code, const TextLook& look) {
    m_isColored = m_isColored || colorCode(m_document, code, look);
    return m_isColored;
}

int TextRow::caretAt(const QPointF& point) const {
    const auto position =
        m_document.documentLayout()->hitTest(onLine(m_document, inDocument(point)), Qt::FuzzyHit);
    return static_cast<int>(offsetOf(m_document, std::max(position, 0)));
}

QString TextRow::linkAt(const QPointF& point) const {
    return openableLinkAt(m_document, inDocument(point));
}

} // namespace korvex::ui
