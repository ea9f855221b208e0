#include "ui/settings/SettingsPane.h"

#include "ui/kit/overlays/PanelScroll.h"
#include "ui/kit/pages/ColumnLayout.h"

#include <QTimer>

#include <utility>

namespace korvex::ui {

SettingsPane::SettingsPane(const QString& title, const Theme& theme)
    : m_theme(theme),
      m_content(new QWidget),
      m_column(new ColumnLayout(theme, m_content)),
      m_scroll(new PanelScroll(m_content, this)) {
    setAccessibleName(title);
    auto* const whole = new QVBoxLayout(this);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->addWidget(m_scroll);
    m_column->addWidget(new SettingsLabel(SettingsLabel::Kind::title, title, theme, m_content));
    m_column->addStretch();
    connect(&theme, &Theme::changed, this, &SettingsPane::applyTheme);
    applyTheme();
}

SettingsGroup& SettingsPane::addGroup(const QString& heading, const QString& note) {
    auto* const section = new QVBoxLayout;
    section->setSpacing(m_theme.space(Space::medium));
    m_sections.push_back(section);
    using Kind = SettingsLabel::Kind;
    for (const auto& [kind, words] : {std::pair(Kind::heading, heading), {Kind::note, note}}) {
        if (!words.isEmpty()) {
            section->addWidget(new SettingsLabel(kind, words, m_theme, m_content));
        }
    }
    auto* const group = new SettingsGroup(m_theme, m_content);
    section->addWidget(group);
    m_column->insertLayout(m_column->count() - 1, section);
    return *group;
}

void SettingsPane::bringIntoSight(QWidget& part) {
    QTimer::singleShot(0, &part,
                       [this, &part] { m_scroll->ensureWidgetVisible(&part, 0, part.height()); });
}

void SettingsPane::followSoon() {
    if (isVisible() && !std::exchange(m_willFollow, true)) {
        QTimer::singleShot(0, this, [this] {
            m_willFollow = false;
            if (isVisible()) {
                follow();
            }
        });
    }
}

void SettingsPane::showEvent(QShowEvent* event) {
    follow();
    QWidget::showEvent(event);
}

void SettingsPane::applyTheme() {
    const auto side = m_theme.space(Space::wide);
    m_column->setContentsMargins(side, side, side, m_theme.space(Space::vast));
    m_column->setSpacing(side);
    for (auto* const section : m_sections) {
        section->setSpacing(m_theme.space(Space::medium));
    }
}

} // namespace korvex::ui
