#include "ui/kit/pages/NoticeLine.h"

#include "ui/kit/controls/WordsAndButton.h"
#include "ui/kit/pages/ColumnLayout.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>

#include <algorithm>
#include <utility>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size: beside the button the words are not to have less.
constexpr int kNarrowestWords = 140;

} // namespace

NoticeLine::NoticeLine(const Words& words, const Theme& theme, Place place)
    : m_theme(theme),
      m_place(place),
      m_iconName(words.icon),
      m_row(new QHBoxLayout),
      m_icon(new QLabel(this)),
      m_text(new QLabel(words.text, this)) {
    Accessibility::setRole(*this, QAccessible::AlertMessage);
    setAccessibleName(words.text);
    m_text->setWordWrap(true);
    m_text->setAlignment((lineStart() & Qt::AlignHorizontal_Mask) | Qt::AlignTop);
    auto* const column = new ColumnLayout(theme, this);
    column->addLayout(m_row);
    m_row->addWidget(m_icon, 0, Qt::AlignTop);
    if (words.action.isEmpty()) {
        m_row->addWidget(m_text, 1);
    } else {
        m_button = new QPushButton(words.action, this);
        m_button->setAutoDefault(true);
        m_words = new WordsAndButton(*m_text, *m_button);
        m_row->addLayout(m_words, 1);
        connect(m_button, &QPushButton::clicked, this, &NoticeLine::pressed);
    }
    connect(&theme, &Theme::changed, this, &NoticeLine::applyTheme);
    applyTheme();
    hide();
}

void NoticeLine::setActionEnabled(bool enabled) {
    m_button->setEnabled(enabled);
}

void NoticeLine::setText(const QString& text) {
    if (text == m_text->text()) {
        return;
    }
    m_text->setText(text);
    setAccessibleName(text);
    m_isUnsaid = !isHidden();
    sayInSight();
}

void NoticeLine::setHolds(bool holds) {
    if (holds == !isHidden()) {
        return;
    }
    setVisible(holds);
    m_isUnsaid = holds;
    sayInSight();
}

void NoticeLine::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    window()->installEventFilter(this);
    sayInSight();
}

bool NoticeLine::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::WindowActivate && watched == window()) {
        sayInSight();
    }
    return QWidget::eventFilter(watched, event);
}

void NoticeLine::sayInSight() {
    if (isVisible() && isActiveWindow() && std::exchange(m_isUnsaid, false)) {
        Accessibility::say(*this, m_text->text());
    }
}

void NoticeLine::applyTheme() {
    const auto& color = m_theme.colors().secondaryText;
    const auto side = m_theme.space(Space::wide);
    const auto above = m_place == Place::atTop ? m_theme.space(Space::medium) : 0;
    m_row->setContentsMargins(side, above, side, m_theme.space(Space::medium));
    m_row->setSpacing(m_theme.space(Space::medium));
    m_icon->setPixmap(
        IconSet::pixmap(m_iconName, color, m_theme.extent(Extent::icon), devicePixelRatioF()));
    m_text->setFont(m_theme.font());
    auto quiet = m_text->palette();
    quiet.setColor(QPalette::WindowText, color);
    m_text->setPalette(quiet);
    // The icon is beside the first line of the words, which is in the middle of the button.
    const auto line = QFontMetrics(m_theme.font()).height();
    const auto height = m_button ? std::max(line, m_theme.extent(Extent::control)) : line;
    m_icon->setFixedHeight(height);
    m_text->setContentsMargins(0, (height - line) / 2, 0, 0);
    if (m_words) {
        m_words->setSpacing(m_theme.space(Space::medium));
        m_words->setNarrowest(m_theme.scaled(kNarrowestWords));
    }
}

} // namespace korvex::ui
