#include "ui/capture/CaptureText.h"

#include "ui/text/OfferedFiles.h"
#include "ui/todos/PastedLines.h"

#include <QAbstractTextDocumentLayout>
#include <QKeyEvent>
#include <QMimeData>

#include <algorithm>
#include <cmath>
#include <utility>

namespace korvex::ui {

namespace {

/// Two show that there is room for more than one; more than twelve are no quick entry.
constexpr int kFewestLines = 2;
constexpr int kMostLines = 12;

} // namespace

CaptureText::CaptureText(const Theme& theme, QWidget* parent) : QTextEdit(parent), m_theme(theme) {
    setAcceptRichText(false);
    setTabChangesFocus(true);
    setFrameShape(NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    document()->setDocumentMargin(0);
    viewport()->setAutoFillBackground(false);
    connect(document()->documentLayout(), &QAbstractTextDocumentLayout::documentSizeChanged, this,
            [this] { updateGeometry(); });
}

void CaptureText::applyTheme() {
    setFont(m_theme.font());
    updateGeometry();
}

QString CaptureText::typed() const {
    return withLineFeeds(document()->toRawText());
}

void CaptureText::setTyped(const QString& text) {
    setPlainText(text);
    moveCursor(QTextCursor::End);
}

void CaptureText::setHint(const QString& hint) {
    if (hint != placeholderText()) {
        setPlaceholderText(hint);
        updateGeometry();
    }
}

int CaptureText::heightOf(int lines) const {
    // Lines have parts of pixels, and what stands below the last one's letters is to be seen too.
    return static_cast<int>(std::ceil(lines * QFontMetricsF(font()).lineSpacing()));
}

int CaptureText::heightOfHint() const {
    // While there is a hint no scroll bar takes room. A text that was never laid out has no width.
    const auto across = testAttribute(Qt::WA_Resized) ? width() : m_theme.scaled(kPanelMeasure);
    const QRectF room(0, 0, across, QWIDGETSIZE_MAX);
    const auto needed =
        QFontMetricsF(font()).boundingRect(room, Qt::TextWordWrap, placeholderText());
    return static_cast<int>(std::ceil(needed.height()));
}

void CaptureText::resizeEvent(QResizeEvent* event) {
    QTextEdit::resizeEvent(event);
    if (std::exchange(m_widthOfHint, width()) != width()) {
        updateGeometry(); // the hint has other lines
    }
}

QSize CaptureText::sizeHint() const {
    const auto wanted = static_cast<int>(document()->size().height());
    const auto least = std::max(heightOf(kFewestLines), heightOfHint());
    return {m_theme.scaled(kPanelMeasure), std::min(std::max(wanted, least), heightOf(kMostLines))};
}

void CaptureText::keyPressEvent(QKeyEvent* event) {
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QTextEdit::keyPressEvent(event);
    } else if ((event->modifiers() & Qt::ShiftModifier) != 0) {
        textCursor().insertBlock();
        ensureCursorVisible();
    } else if (!event->isAutoRepeat()) { // the key that opened the panel may still be down
        Q_EMIT saveRequested();
    }
}

bool CaptureText::canInsertFromMimeData(const QMimeData* source) const {
    return source->hasText() || isForAttaching(*source);
}

void CaptureText::insertFromMimeData(const QMimeData* source) {
    if (isForAttaching(*source)) {
        Q_EMIT attachmentsOffered(source);
    } else if (!m_takes || m_takes(source->text())) {
        QTextEdit::insertFromMimeData(source);
    }
}

} // namespace korvex::ui
