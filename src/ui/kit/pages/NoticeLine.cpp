#include "ui/kit/pages/NoticeLine.h"

#include "ui/kit/pages/ColumnLayout.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace korvex::ui {

NoticeLine::NoticeLine(const Words& words, const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_theme(theme),
      m_iconName(words.icon),
      m_row(new QHBoxLayout),
      m_icon(new QLabel(this)),
      m_text(new QLabel(words.text, this)) {
    m_text->setWordWrap(true);
    m_text->setAlignment(lineStart());
    auto* const column = new ColumnLayout(theme, this);
    auto* const row = m_row;
    column->addLayout(row);
    row->addWidget(m_icon);
    row->addWidget(m_text, 1);
    if (!words.action.isEmpty()) {
        m_button = new QPushButton(words.action, this);
        m_button->setAutoDefault(true);
        row->addWidget(m_button);
        connect(m_button, &QPushButton::clicked, this, &NoticeLine::pressed);
    }
    connect(&theme, &Theme::changed, this, &NoticeLine::applyTheme);
    applyTheme();
    hide();
}

void NoticeLine::setActionEnabled(bool enabled) {
    m_button->setEnabled(enabled);
}

void NoticeLine::applyTheme() {
    const auto& color = m_theme.colors().secondaryText;
    const auto side = m_theme.space(Space::wide);
    m_row->setContentsMargins(side, 0, side, m_theme.space(Space::medium));
    m_row->setSpacing(m_theme.space(Space::medium));
    m_icon->setPixmap(
        IconSet::pixmap(m_iconName, color, m_theme.extent(Extent::icon), devicePixelRatioF()));
    m_text->setFont(m_theme.font());
    auto quiet = m_text->palette();
    quiet.setColor(QPalette::WindowText, color);
    m_text->setPalette(quiet);
}

} // namespace korvex::ui
