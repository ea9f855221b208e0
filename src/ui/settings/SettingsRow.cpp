#include "ui/settings/SettingsRow.h"

#include "ui/kit/controls/WordsAndButton.h"
#include "ui/kit/speech/Accessibility.h"

#include <QAbstractButton>
#include <QHBoxLayout>

namespace korvex::ui {

namespace {

/// What a name is to have beside its control, in pixels at the standard font size.
constexpr int kNarrowestName = 150;

/// Whether a screen reader knows it by the words on it.
bool hasWords(const QWidget& control) {
    const auto* const button = qobject_cast<const QAbstractButton*>(&control);
    return (button && !button->text().isEmpty()) || qobject_cast<const QLabel*>(&control) ||
           !control.accessibleName().isEmpty();
}

} // namespace

SettingsRow::SettingsRow(const QString& name, QWidget* control, const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_theme(theme),
      m_control(control),
      m_name(new SettingsLabel(SettingsLabel::Kind::name, name, theme, this)),
      m_note(new SettingsLabel(SettingsLabel::Kind::note, {}, theme, this)),
      m_refusal(new SettingsLabel(SettingsLabel::Kind::refusal, {}, theme, this)),
      m_lines(new QVBoxLayout(this)) {
    if (control) {
        m_words = new WordsAndButton(*m_name, *control);
        m_lines->addLayout(m_words);
        if (!hasWords(*control)) {
            control->setAccessibleName(name);
        }
    } else {
        m_lines->addWidget(m_name);
    }
    m_lines->addWidget(m_note);
    m_lines->addWidget(m_refusal);
    connect(&theme, &Theme::changed, this, &SettingsRow::applyTheme);
    applyTheme();
}

void SettingsRow::setName(const QString& name) {
    m_name->say(name);
}

void SettingsRow::setNote(const QString& note) {
    m_note->say(note);
    if (m_control) {
        m_control->setAccessibleDescription(note);
    }
}

void SettingsRow::setRefusal(const QString& refusal) {
    m_refusal->say(refusal);
}

void SettingsRow::addBelow(QWidget* widget) {
    m_lines->insertWidget(m_lines->indexOf(m_note), widget);
}

void SettingsRow::applyTheme() {
    const auto side = m_theme.space(Space::large);
    const auto above = m_theme.space(Space::medium);
    m_lines->setContentsMargins(side, above, side, above);
    m_lines->setSpacing(m_theme.space(Space::small));
    m_name->setMinimumHeight(m_theme.extent(Extent::control));
    if (m_words) {
        m_words->setSpacing(m_theme.space(Space::large));
        m_words->setNarrowest(m_theme.scaled(kNarrowestName));
    }
}

SettingsLabel* settingsValue(const Theme& theme) {
    auto* const value = new SettingsLabel(SettingsLabel::Kind::value, {}, theme);
    value->setWordWrap(false);
    return value;
}

QWidget* settingsButtons(const QString& name, std::initializer_list<QWidget*> buttons,
                         const Theme& theme) {
    auto* const holder = new QWidget;
    holder->setAccessibleName(name);
    Accessibility::setRole(*holder, QAccessible::Grouping);
    auto* const row = new QHBoxLayout(holder);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(theme.space(Space::medium));
    for (auto* const button : buttons) {
        row->addWidget(button);
    }
    return holder;
}

} // namespace korvex::ui
