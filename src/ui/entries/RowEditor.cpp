#include "ui/entries/RowEditor.h"

#include "ui/todos/RowFrame.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPushButton>
#include <QTextEdit>

namespace korvex::ui {

namespace {

constexpr int kCornerRadius = 6;

} // namespace

RowEditor::RowEditor(const Theme& theme, QWidget* parent)
    : QFrame(parent),
      m_theme(theme),
      m_error(new QLabel(this)),
      m_discard(new QPushButton(tr("Discard"), this)) {
    // It fills all of itself: the row under it need not be drawn with every key.
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_error->setWordWrap(true);
    m_error->setTextFormat(Qt::PlainText);
    m_error->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_error->hide();
    m_discard->setFlat(true);
    m_discard->setCursor(Qt::PointingHandCursor);
    m_discard->setToolTip(tr("Give up what was typed here"));
    m_discard->hide();
    connect(m_discard, &QPushButton::clicked, this, &RowEditor::discarded);
    connect(&theme, &Theme::changed, this, &RowEditor::applyErrorTheme);
    applyErrorTheme();
}

bool RowEditor::isBlank() {
    return input().toPlainText().trimmed().isEmpty();
}

void RowEditor::showError(const QString& message) {
    m_error->setText(message);
    m_error->setAccessibleName(message);
    m_error->show();
    m_discard->show();
    Q_EMIT neededHeightChanged();
}

void RowEditor::clearError() {
    if (hasError()) {
        m_error->hide();
        m_discard->hide();
        Q_EMIT neededHeightChanged();
    }
}

bool RowEditor::hasError() const {
    return !m_error->isHidden();
}

int RowEditor::errorHeight(int width) const {
    return hasError()
               ? m_error->heightForWidth(width - m_discard->sizeHint().width()) + RowFrame::kPadding
               : 0;
}

void RowEditor::placeError(const QPoint& topLeft, int width) {
    if (hasError()) {
        const auto room = width - m_discard->sizeHint().width();
        m_error->setGeometry({topLeft, QSize(room, m_error->heightForWidth(room))});
        m_discard->setGeometry(topLeft.x() + room, topLeft.y() - 2, width - room,
                               QFontMetrics(m_theme.smallFont()).lineSpacing() + 4);
    }
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
    painter.setPen(QPen(hasError() ? colors.danger : colors.accent, 1.5));
    painter.setBrush(colors.content);
    painter.drawRoundedRect(box, kCornerRadius, kCornerRadius);
}

void RowEditor::applyErrorTheme() {
    const auto& colors = m_theme.colors();
    m_error->setFont(m_theme.smallFont());
    m_discard->setFont(m_theme.smallFont());
    auto palette = m_error->palette();
    palette.setColor(QPalette::WindowText, colors.danger);
    palette.setColor(QPalette::Text, colors.danger); // of a label whose text can be selected
    m_error->setPalette(palette);
}

} // namespace korvex::ui
