#pragma once

#include "richtext/text/ListMarker.h"
#include "richtext/text/ParagraphStyle.h"
#include "ui/text/TextLook.h"

#include <QPainter>
#include <QString>
#include <QTextBlock>

#include <cstdint>
#include <unordered_map>

class QTextList;

namespace korvex::ui {

/// The markers of a document's lists, which Qt neither counts nor draws. For one painting: it is
/// told of all blocks in order. Main thread.
class ListMarkers {
public:
    explicit ListMarkers(const TextLook& look) : m_look(look) {}

    /// Counts the block. Returns whether it has a marker.
    bool count(const QTextBlock& block);
    /// What the marker of the block that was counted last says, with its number; there must be one.
    QString text() const;
    /// Draws the marker of the block that was counted last, before its first line.
    void paint(QPainter& painter, const QTextBlock& block) const;

private:
    struct List {
        richtext::TextListRef list;
        std::int64_t items = 0;
    };

    void paintShape(QPainter& painter, richtext::MarkerFormat format, const QRectF& room,
                    double middle) const;

    const TextLook& m_look;
    std::unordered_map<const QTextList*, List> m_lists;
    const List* m_last = nullptr;
};

} // namespace korvex::ui
