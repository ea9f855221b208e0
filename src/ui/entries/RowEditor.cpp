#include "ui/entries/RowEditor.h"

#include "ui/entries/RowRefusal.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Shapes.h"
#include "ui/todos/RowFrame.h"

#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QTextEdit>

#include <algorithm>

namespace korvex::ui {

namespace {

/// From the sides of the editor to the message within its frame.
int messageMargin(const RowFrame& frame) {
    return frame.boxMargin + frame.padding;
}

} // namespace

RowEditor::RowEditor(const Theme& theme, QWidget* parent)
    : QFrame(parent), m_theme(theme), m_message(new RowRefusal(theme, this)) {
    // It fills all of itself: the row under it need not be drawn with every key.
    setAttribute(Qt::WA_OpaquePaintEvent);
    Accessibility::setRole(*this, QAccessible::Grouping);
    connect(m_message, &RowRefusal::discarded, this, &RowEditor::discarded);
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

void RowEditor::showError(const QString& message, Until until) {
    say(message, ErrorBanner::Tone::error, until);
}

void RowEditor::showNotice(const QString& message) {
    say(message, ErrorBanner::Tone::notice, Until::stored);
}

void RowEditor::say(const QString& message, ErrorBanner::Tone tone, Until until) {
    const auto isSaid = m_until && tone == m_tone && message == m_message->message();
    m_until = until;
    m_tone = tone;
    const auto isOther = offerDiscard();
    if (!isSaid) {
        m_message->setMessage(message, tone);
    }
    if (isOther || !isSaid) {
        update();
        Q_EMIT neededHeightChanged();
        placeInSight();
    }
    if (!isSaid) { // what is said again and again is heard once, and takes nobody back to it
        reveal();
    }
}

void RowEditor::endMessage() {
    if (m_until) {
        m_until.reset();
        m_message->hide();
        update();
        Q_EMIT neededHeightChanged();
    }
}

void RowEditor::edited() {
    if (m_until == Until::edited) {
        endMessage();
    } else if (m_until && input().document()->isUndoAvailable() != m_couldUndo && offerDiscard()) {
        Q_EMIT neededHeightChanged();
        placeInSight();
    }
}

/// Compares the whole text, which takes too long for every key: who types is asked at the first
/// letter, when all is undone, and when the text is to be stored.
bool RowEditor::offerDiscard() {
    m_couldUndo = input().document()->isUndoAvailable();
    return m_message->setDiscardable(isTypedInto());
}

int RowEditor::messageHeight(int width) const {
    const auto frame = RowFrame::of(m_theme);
    return m_until ? m_message->neededHeight(width - 2 * messageMargin(frame)) + frame.padding : 0;
}

void RowEditor::placeInSight() {
    if (!m_until) {
        return;
    }
    const auto frame = RowFrame::of(m_theme);
    const auto side = messageMargin(frame);
    const int needed = messageHeight(width());
    const int foot = height() - frame.below();
    const int top = std::max(std::min(foot, endOfSight()) - needed, 0);
    m_message->setGeometry(side, top, width() - 2 * side, needed - frame.padding);
    m_message->raise();
}

int RowEditor::endOfSight() const {
    return parentWidget()->height() - m_coveredFoot - y();
}

bool RowEditor::isCaretInSight() {
    const auto caret = caretPlace();
    return caret.bottom() >= -y() && caret.top() < endOfSight();
}

void RowEditor::reveal() {
    Q_EMIT revealRequested(caretPlace().adjusted(0, 0, 0, messageHeight(width())));
}

bool RowEditor::event(QEvent* event) {
    if (event->type() == QEvent::Move) {
        placeInSight();
    }
    return QFrame::event(event);
}

void RowEditor::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    placeInSight();
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
    const auto box = RowFrame::of(m_theme).box(size());
    const auto corner = static_cast<int>(m_theme.radius(Radius::medium));
    if (box.adjusted(corner, corner, -corner, -corner).contains(event->rect())) {
        return;
    }
    const auto isWrong = m_until && m_tone == ErrorBanner::Tone::error;
    painter.setRenderHint(QPainter::Antialiasing);
    Shapes::paintRing(painter, box, m_theme.radius(Radius::medium),
                      isWrong ? colors.danger : colors.accent);
}

} // namespace korvex::ui
