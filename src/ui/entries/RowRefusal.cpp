#include "ui/entries/RowRefusal.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/todos/RowFrame.h"

#include <QBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

namespace korvex::ui {

namespace {

constexpr int kCornerRadius = 6;
constexpr int kPadding = 6;
/// The words are not to stand in a narrower column, at the standard font size.
constexpr int kNarrowestText = 220;

} // namespace

RowRefusal::RowRefusal(const Theme& theme, QWidget* editor)
    : QFrame(editor),
      m_theme(theme),
      m_line(new QBoxLayout(QBoxLayout::LeftToRight, this)),
      m_text(new QLabel(this)),
      m_discard(new QPushButton(tr("Discard"), this)) {
    Accessibility::setRole(*this, QAccessible::AlertMessage);
    m_text->setWordWrap(true);
    m_text->setTextFormat(Qt::PlainText);
    m_text->setAlignment(lineStart());
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_discard->setFlat(true);
    m_discard->setCursor(Qt::PointingHandCursor);
    m_discard->setToolTip(tr("Give up what was typed here"));
    m_line->setContentsMargins(RowFrame::kGap, kPadding, kPadding, kPadding);
    m_line->addWidget(m_text, 1);
    m_line->addWidget(m_discard, 0, Qt::AlignTop);
    hide();
    connect(m_discard, &QPushButton::clicked, this, &RowRefusal::discarded);
    connect(&theme, &Theme::changed, this, &RowRefusal::applyTheme);
    applyTheme();
}

void RowRefusal::setMessage(const QString& message, ErrorBanner::Tone tone) {
    m_tone = tone;
    m_text->setText(message);
    applyTheme();
    show();
    raise();
    Accessibility::say(*this, message);
}

void RowRefusal::setDiscardable(bool discardable) {
    m_discard->setVisible(discardable);
}

QString RowRefusal::message() const {
    return m_text->text();
}

int RowRefusal::neededHeight(int width) {
    arrange(width);
    return m_line->hasHeightForWidth() ? m_line->totalHeightForWidth(width)
                                       : m_line->totalSizeHint().height();
}

void RowRefusal::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(messageGround(colors, color()));
    painter.drawRoundedRect(rect(), kCornerRadius, kCornerRadius);
}

void RowRefusal::resizeEvent(QResizeEvent* event) {
    QFrame::resizeEvent(event);
    arrange(width());
}

void RowRefusal::arrange(int width) {
    const auto margins = m_line->contentsMargins();
    const int room = width - margins.left() - margins.right() - m_line->spacing() -
                     m_discard->sizeHint().width();
    const auto direction =
        room >= m_theme.scaled(kNarrowestText) ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom;
    if (m_line->direction() != direction) {
        m_line->setDirection(direction);
        m_line->setAlignment(m_discard,
                             direction == QBoxLayout::LeftToRight ? Qt::AlignTop : Qt::AlignRight);
    }
}

QColor RowRefusal::color() const {
    const auto& colors = m_theme.colors();
    return m_tone == ErrorBanner::Tone::error ? colors.danger : colors.accent;
}

void RowRefusal::applyTheme() {
    const auto& colors = m_theme.colors();
    const auto ground = messageGround(colors, color());
    m_text->setFont(m_theme.smallFont());
    m_discard->setFont(m_theme.smallFont());
    const auto words =
        readable(m_tone == ErrorBanner::Tone::error ? colors.danger : colors.text, ground);
    auto own = m_text->palette();
    // A text that can be selected is drawn in the second.
    for (const auto role : {QPalette::WindowText, QPalette::Text}) {
        own.setColor(role, words);
    }
    m_text->setPalette(own);
}

} // namespace korvex::ui
