#pragma once

#include "ui/text/TextLook.h"

#include <QPainter>
#include <QTextCursor>
#include <QTextDocument>

namespace korvex::ui {

/// What Qt does not draw of formatted text: the grounds of code, the markers of lists. To be called
/// before the document itself is drawn, with the painter in the document's coordinates; `exposed`
/// in the same.
void paintUnderText(QPainter& painter, const QTextDocument& document, const TextLook& look,
                    const QRectF& exposed);

/// The ground of what is selected, from band to band with round corners; Qt draws the same colour
/// behind the letters only. To be called between the two.
void paintSelection(QPainter& painter, const QTextCursor& selection, const TextLook& look,
                    const QRectF& exposed);

/// Lets what is wider than the part of it that is seen fade into the ground where it goes on. To be
/// called when it is drawn.
void paintWhereItGoesOn(QPainter& painter, const QRectF& whole, const QRectF& seen,
                        const TextLook& look);

} // namespace korvex::ui
