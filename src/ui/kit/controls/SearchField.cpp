#include "ui/kit/controls/SearchField.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"

#include <QAction>
#include <QKeyEvent>
#include <QPainter>

namespace korvex::ui {

namespace {

constexpr double kCornerRadius = 6;

} // namespace

SearchField::SearchField(const Theme& theme, QWidget* parent)
    : QLineEdit(parent), m_theme(theme), m_icon(addAction(QIcon(), QLineEdit::LeadingPosition)) {
    setFrame(false);
    setAlignment(lineStart());
    setPlaceholderText(tr("Search"));
    Accessibility::nameClearButton(*this, tr("Clear"));
    m_icon->setText(tr("Search")); // the name of its button
    setMaxLength(kMaximumLength);
    setMinimumWidth(0);
    connect(m_icon, &QAction::triggered, this, [this] { setFocus(); });
    connect(&theme, &Theme::changed, this, &SearchField::applyTheme);
    applyTheme();
}

void SearchField::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        Q_EMIT walked(event->key());
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        Q_EMIT openRequested();
        return;
    case Qt::Key_Escape:
        Q_EMIT escaped();
        return;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void SearchField::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    Q_EMIT focused();
}

void SearchField::paintEvent(QPaintEvent* event) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(hasFocus() ? QPen(colors.accent, 1.5) : QPen(Qt::NoPen));
    painter.setBrush(hasFocus() ? colors.content : blended(colors.text, colors.sidebar, 0.07));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), kCornerRadius,
                            kCornerRadius);
    painter.end();
    QLineEdit::paintEvent(event);
}

void SearchField::applyTheme() {
    const auto& colors = m_theme.colors();
    setFont(m_theme.font());
    auto own = palette();
    own.setColor(QPalette::Base, Qt::transparent);
    own.setColor(QPalette::Text, colors.text);
    own.setColor(QPalette::PlaceholderText, colors.secondaryText);
    setPalette(own);
    m_icon->setIcon(IconSet::icon(QStringLiteral("magnifying-glass"), colors.secondaryText));
    setFixedHeight(QFontMetrics(m_theme.font()).lineSpacing() + m_theme.scaled(10));
    update();
}

} // namespace korvex::ui
