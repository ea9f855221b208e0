#include "ui/entries/RowEditor.h"

#include "ui/entries/RowRefusal.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/todos/RowFrame.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTextEdit>

namespace korvex::ui {

namespace {

constexpr int kCornerRadius = 6;

} // namespace

RowEditor::RowEditor(const Theme& theme, QWidget* parent)
    : QFrame(parent), m_theme(theme), m_refusal(new RowRefusal(theme, parent)) {
    // It fills all of itself: the row under it need not be drawn with every key.
    setAttribute(Qt::WA_OpaquePaintEvent);
    Accessibility::setRole(*this, QAccessible::Grouping);
    connect(m_refusal, &RowRefusal::discarded, this, &RowEditor::discarded);
}

void RowEditor::editAround(const std::function<void(QTextCursor&)>& edit) {
    auto caret = input().textCursor();
    const auto hadSelection = caret.hasSelection();
    caret.setKeepPositionOnInsert(true);
    QTextCursor cursor(input().document());
    cursor.beginEditBlock();
    edit(cursor);
    cursor.endEditBlock();
    caret.setKeepPositionOnInsert(false);
    if (!hadSelection) {
        caret.setPosition(caret.position());
    }
    input().setTextCursor(caret);
}

void RowEditor::forgetSteps() {
    input().document()->clearUndoRedoStacks();
}

bool RowEditor::isBlank() {
    return input().toPlainText().trimmed().isEmpty();
}

void RowEditor::showError(const QString& message) {
    m_hasError = true;
    m_refusal->setMessage(message);
    m_refusal->placeAt(geometry());
    update();
}

void RowEditor::clearError() {
    if (m_hasError) {
        m_hasError = false;
        m_refusal->hide();
        update();
    }
}

bool RowEditor::owns(const QWidget* widget) const {
    return widget == this || isAncestorOf(widget) || widget == m_refusal ||
           m_refusal->isAncestorOf(widget);
}

bool RowEditor::event(QEvent* event) {
    switch (event->type()) {
    case QEvent::Move:
    case QEvent::Resize:
        if (m_hasError) {
            m_refusal->placeAt(geometry());
        }
        break;
    case QEvent::Show:
    case QEvent::Hide:
        m_refusal->setVisible(m_hasError && event->type() == QEvent::Show);
        break;
    default:
        break;
    }
    return QFrame::event(event);
}

void RowEditor::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

void RowEditor::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
}

void RowEditor::mouseDoubleClickEvent(QMouseEvent* event) {
    event->accept();
}

void RowEditor::mouseMoveEvent(QMouseEvent* event) {
    event->accept();
}

void RowEditor::paintEvent(QPaintEvent* event) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    painter.fillRect(event->rect(), colors.content);
    const QRectF box(RowFrame::kBoxMargin + 0.75, m_theme.rowDistance() / 2.0 + 0.75,
                     width() - 2 * RowFrame::kBoxMargin - 1.5,
                     height() - m_theme.rowDistance() - 1.5);
    if (box.adjusted(kCornerRadius, kCornerRadius, -kCornerRadius, -kCornerRadius)
            .contains(event->rect())) {
        return;
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(m_hasError ? colors.danger : colors.accent, 1.5));
    painter.setBrush(colors.content);
    painter.drawRoundedRect(box, kCornerRadius, kCornerRadius);
}

} // namespace korvex::ui
