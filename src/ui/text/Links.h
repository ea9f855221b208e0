#pragma once

#include <QPointF>
#include <QString>
#include <QTextDocument>

namespace korvex::ui {

/// The link under a point of the laid out document, if it may be handed to the system; else empty.
QString openableLinkAt(const QTextDocument& document, const QPointF& point);
/// Hands a link to the system. Only the schemes that `richtext::canOpenLink` allows; others do
/// nothing.
void openLink(const QString& link);

} // namespace korvex::ui
