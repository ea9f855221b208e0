#include "ui/text/TextRow.h"

#include "ui/text/CodeColors.h"
#include "ui/text/Links.h"
#include "ui/text/TextDocumentConversion.h"
#include "ui/text/TextPainting.h"

#include <QAbstractTextDocumentLayout>
#include <QLinearGradient>

#include <algorithm>
#include <cmath>

namespace korvex::ui {

namespace {

constexpr std::size_t kUnitsPerCost = 200;
constexpr int kHighestCost = 60;
/// The stretch over which a wide table fades out, in pixels.
constexpr int kFade = 24;

} // namespace

TextRow::TextRow(const richtext::AttributedString& text, int width, const TextLook& look)
    : m_width(width),
      m_cost(static_cast<int>(
          std::min(1 + text.length() / kUnitsPerCost, std::size_t{kHighestCost}))) {
    m_document.setUndoRedoEnabled(false);
    setText(m_document, text, look);
    m_document.setTextWidth(width);
    m_height = static_cast<int>(std::ceil(m_document.size().height()));
    m_isColored = true;
    text.forEachRun([this](const richtext::AttributedString::CharacterRun& run) {
        m_isColored = m_isColored && !run.attributes.isCode();
    });
}

void TextRow::paint(QPainter& painter, const TextLook& look, const QColor& ground) {
    const QRectF exposed(0, 0, m_width, m_height);
    // A code block's ground reaches a little beyond its text.
    const auto around = exposed.adjusted(0, -look.codePadding(), 0, look.codePadding());
    painter.save();
    painter.setClipRect(around, Qt::IntersectClip);
    paintUnderText(painter, m_document, look, around);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette.setColor(QPalette::Text, look.text);
    context.clip = exposed;
    m_document.documentLayout()->draw(&painter, context);
    if (m_document.size().width() > m_width + 1) {
        QLinearGradient fade(m_width - kFade, 0, m_width, 0);
        auto clear = ground;
        clear.setAlpha(0);
        fade.setColorAt(0, clear);
        fade.setColorAt(1, ground);
        painter.fillRect(QRectF(m_width - kFade, 0, kFade, m_height), fade);
    }
    painter.restore();
}

bool TextRow::color(richtext::CodeHighlighter& code, const TextLook& look) {
    m_isColored = m_isColored || colorCode(m_document, code, look);
    return m_isColored;
}

int TextRow::caretAt(const QPointF& point) const {
    const auto position = m_document.documentLayout()->hitTest(point, Qt::FuzzyHit);
    return static_cast<int>(offsetOf(m_document, std::max(position, 0)));
}

QString TextRow::linkAt(const QPointF& point) const {
    return openableLinkAt(m_document, point);
}

} // namespace korvex::ui
