#pragma once

#include "richtext/code/CodeHighlighter.h"
#include "richtext/text/AttributedString.h"
#include "ui/text/TextDocument.h"
#include "ui/text/TextLook.h"

#include <QPainter>

#include <optional>
#include <vector>

namespace korvex::ui {

/// A text entry as its row shows it: exactly as the editor does. A table that is wider than the
/// text may reach beyond it; where that is not enough a part of it is seen, which can be moved. All
/// points count from the top left corner of the text.
class TextRow {
public:
    TextRow(const richtext::AttributedString& text, int width, const TextLook& look);

    /// Lays the text out for another width.
    void setWidth(int width);
    /// Lets wide tables reach up to this width, where it is more than that of the text.
    void reachTo(int most);
    /// How far the widest of them reaches: the width of the text at least.
    int reach() const { return m_reach; }
    /// How far it would reach to be seen whole.
    int wholeWidth() const;
    int height() const { return m_height; }
    /// About how many times the memory of a one-line todo it takes; at least 1.
    int cost() const { return m_cost; }

    void paint(QPainter& painter, const TextLook& look);
    /// Colours what code has no colours yet. False while some are awaited.
    bool color(richtext::CodeHighlighter& code, const TextLook& look);

    /// Moves what is seen of the wide tables, or only of the one under a point, by so many pixels
    /// to the right. False where there is nothing more to see.
    bool scrollTables(int by, std::optional<QPointF> under = std::nullopt);
    /// How far each wide table was moved, to be set again for the same text.
    std::vector<int> tableOffsets() const;
    void setTableOffsets(const std::vector<int>& offsets);

    /// The offset in the entry's text under a point.
    int caretAt(const QPointF& point) const;
    /// The link under a point, if it may be opened; else empty.
    QString linkAt(const QPointF& point) const;

private:
    struct WideTable {
        /// Where it lies in the document, beyond the row's width at one side or both.
        QRectF place;
        int offset = 0;
    };

    void findWideTables();
    void paintDocument(QPainter& painter, const TextLook& look, const QRectF& clip) const;
    void paintTable(QPainter& painter, const WideTable& table, const TextLook& look) const;
    void move(WideTable& table, int offset) const;
    /// The part of the row that a table takes.
    QRectF bandOf(const WideTable& table) const;
    /// As far as a table reaches.
    int endOf(const WideTable& table) const;
    /// The point of the document that is seen at a point.
    QPointF inDocument(const QPointF& point) const;

    TextDocument m_document;
    std::vector<WideTable> m_wideTables;
    int m_width = 0;
    int m_most = 0;
    int m_reach = 0;
    int m_height = 0;
    int m_cost;
    bool m_isColored;
};

} // namespace korvex::ui
