#pragma once

#include "ui/text/TextLook.h"

#include <QPainter>
#include <QTextDocument>

namespace korvex::ui {

/// What Qt does not draw of formatted text: the grounds of code blocks and the markers of some
/// lists. To be called before the document itself is drawn, with the painter in the document's
/// coordinates; `exposed` in the same.
void paintUnderText(QPainter& painter, const QTextDocument& document, const TextLook& look,
                    const QRectF& exposed);

} // namespace korvex::ui
