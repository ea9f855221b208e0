#include "ui/entries/RowRefusal.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/todos/RowFrame.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

namespace korvex::ui {

namespace {

constexpr int kCornerRadius = 6;
constexpr int kPadding = 6;

} // namespace

RowRefusal::RowRefusal(const Theme& theme, QWidget* viewport)
    : QFrame(viewport),
      m_theme(theme),
      m_text(new QLabel(this)),
      m_discard(new QPushButton(tr("Discard"), this)) {
    Accessibility::setRole(*this, QAccessible::AlertMessage);
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_discard->setFlat(true);
    m_discard->setCursor(Qt::PointingHandCursor);
    m_discard->setToolTip(tr("Give up what was typed here"));
    auto* const line = new QHBoxLayout(this);
    line->setContentsMargins(RowFrame::kGap, kPadding, kPadding, kPadding);
    line->addWidget(m_text, 1);
    line->addWidget(m_discard, 0, Qt::AlignTop);
    hide();
    connect(m_discard, &QPushButton::clicked, this, &RowRefusal::discarded);
    connect(&theme, &Theme::changed, this, &RowRefusal::applyTheme);
    applyTheme();
}

void RowRefusal::setMessage(const QString& message) {
    m_text->setText(message);
    show();
    raise();
    Accessibility::say(*this, message);
}

void RowRefusal::placeAt(const QRect& row) {
    const int width = row.width() - 2 * RowFrame::kBoxMargin;
    const int height = heightForWidth(width);
    const int room = parentWidget()->height();
    const int gap = m_theme.rowDistance() / 2;
    int top = row.bottom() + 1 - gap;
    if (top + height > room) {
        top = row.top() + gap - height < 0 ? room - height : row.top() + gap - height;
    }
    setGeometry(row.left() + RowFrame::kBoxMargin, top, width, height);
}

void RowRefusal::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colors.danger, 1));
    painter.setBrush(messageGround(colors, colors.danger));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kCornerRadius,
                            kCornerRadius);
}

void RowRefusal::applyTheme() {
    const auto& colors = m_theme.colors();
    const auto ground = messageGround(colors, colors.danger);
    m_text->setFont(m_theme.smallFont());
    m_discard->setFont(m_theme.smallFont());
    auto own = m_text->palette();
    // A text that can be selected is drawn in the second.
    for (const auto role : {QPalette::WindowText, QPalette::Text}) {
        own.setColor(role, readable(colors.danger, ground));
    }
    m_text->setPalette(own);
}

} // namespace korvex::ui
