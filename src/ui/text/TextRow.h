#pragma once

#include "richtext/code/CodeHighlighter.h"
#include "richtext/text/AttributedString.h"
#include "ui/text/TextLook.h"

#include <QPainter>
#include <QTextDocument>

namespace korvex::ui {

/// A text entry as its row shows it: exactly as the editor does, cut off at the right where a table
/// is wider. All points count from the top left corner of the text.
class TextRow {
public:
    TextRow(const richtext::AttributedString& text, int width, const TextLook& look);

    int height() const { return m_height; }
    /// About how many times the memory of a one-line todo it takes; at least 1.
    int cost() const { return m_cost; }

    /// `ground` is what the text stands on, into which a wide table fades.
    void paint(QPainter& painter, const TextLook& look, const QColor& ground);
    /// Colours what code has no colours yet. False while some are awaited.
    bool color(richtext::CodeHighlighter& code, const TextLook& look);

    /// The offset in the entry's text under a point.
    int caretAt(const QPointF& point) const;
    /// The link under a point, if it may be opened; else empty.
    QString linkAt(const QPointF& point) const;

private:
    QTextDocument m_document;
    int m_width;
    int m_height;
    int m_cost;
    bool m_isColored;
};

} // namespace korvex::ui
