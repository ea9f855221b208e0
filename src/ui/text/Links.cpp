#include "ui/text/Links.h"

#include "richtext/stored/RichTextSerializer.h"
#include "ui/kit/words/Text.h"

#include <QAbstractTextDocumentLayout>
#include <QDesktopServices>
#include <QUrl>

namespace korvex::ui {

QString openableLinkAt(const QTextDocument& document, const QPointF& point) {
    const auto link = document.documentLayout()->anchorAt(point);
    return !link.isEmpty() && richtext::canOpenLink(toUtf8(link)) ? link : QString();
}

void openLink(const QString& link) {
    if (richtext::canOpenLink(toUtf8(link))) {
        QDesktopServices::openUrl(QUrl(link));
    }
}

} // namespace korvex::ui
