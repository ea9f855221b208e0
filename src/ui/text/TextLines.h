#pragma once

#include <QPointF>
#include <QRectF>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

#include <optional>

namespace korvex::ui {

/// Where the lines of a laid-out document stand, in the document's coordinates. Main thread.

/// The lines of the block count from here.
QPointF originOf(const QTextBlock& block);
/// The line as far as its text goes, with half of what its height has beyond the letters above them
/// and half below: the bands of a paragraph touch.
QRectF bandOf(const QTextBlock& block, const QTextLine& line);
/// All lines of the block, as wide as they might be.
QRectF bandsOf(const QTextBlock& block);
/// From where to where characters of the block, counted from its start, go in the line. Absent
/// where none of them does, and where they may stand apart since some text of the line runs the
/// other way.
std::optional<QRectF> stretchOf(const QTextBlock& block, const QTextLine& line, int from, int to);

/// Whether the paragraph stands right below another one, and neither below a table nor in another
/// cell.
bool isParagraphBelow(const QTextBlock& block);

/// The nearest point that is on a line at the same distance from the side: Qt takes a point between
/// two lines for the end of the one or the start of the other. Above the first line and below the
/// last one, where the start and the end of the text are meant, the same point.
QPointF onLine(const QTextDocument& document, const QPointF& point);

} // namespace korvex::ui
