#include "ui/settings/SettingsRow.h"

#include "ui/kit/controls/FlowLayout.h"
#include "ui/kit/controls/WordsAndButton.h"
#include "ui/kit/speech/Accessibility.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QPushButton>

#include <algorithm>

namespace korvex::ui {

namespace {

/// What a name is to have beside its control, in pixels at the standard font size.
constexpr int kNarrowestName = 150;
/// The widest that a choice is, in such pixels: a board can have a long name.
constexpr int kWidestChoice = 240;

/// Whether a screen reader knows it by the words on it.
bool hasWords(const QWidget& control) {
    const auto* const button = qobject_cast<const QAbstractButton*>(&control);
    return (button && !button->text().isEmpty()) || qobject_cast<const QLabel*>(&control) ||
           !control.accessibleName().isEmpty();
}

/// Return presses a button that has the keyboard, as everywhere in the windows.
void answerToReturn(QWidget* control) {
    if (auto* const button = qobject_cast<QPushButton*>(control)) {
        button->setAutoDefault(true);
    }
}

/// Buttons side by side. Wants room for all of them in one line, and makes do with less.
class ButtonLine final : public QWidget {
public:
    ButtonLine(std::initializer_list<QWidget*> buttons, const Theme& theme)
        : m_theme(theme), m_flow(new FlowLayout(this)) {
        m_flow->setContentsMargins(0, 0, 0, 0);
        for (auto* const button : buttons) {
            answerToReturn(button);
            m_flow->addWidget(button);
        }
        connect(&theme, &Theme::changed, this, &ButtonLine::applyTheme);
        applyTheme();
    }

private:
    void applyTheme() { m_flow->setSpacing(m_theme.space(Space::medium)); }

    const Theme& m_theme;
    FlowLayout* m_flow;
};

} // namespace

SettingsRow::SettingsRow(const QString& name, QWidget* control, const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_theme(theme),
      m_control(control),
      m_name(new SettingsLabel(SettingsLabel::Kind::name, name, theme, this)),
      m_note(new SettingsLabel(SettingsLabel::Kind::note, {}, theme, this)),
      m_refusal(new SettingsLabel(SettingsLabel::Kind::refusal, {}, theme, this)),
      m_lines(new QVBoxLayout(this)) {
    answerToReturn(control);
    if (control) {
        m_words = new WordsAndButton(*m_name, *control, WordsAndButton::Below::atBeginning);
        m_lines->addLayout(m_words);
        if (!hasWords(*control)) {
            control->setAccessibleName(name);
            m_name->setBuddy(control); // of a choice Qt tells what is chosen in place of its name
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

void SettingsRow::setAnswer(const QString& answer) {
    m_name->announce(answer);
}

void SettingsRow::setNote(const QString& note) {
    m_note->say(note);
    describe();
}

void SettingsRow::setRefusal(const QString& refusal) {
    m_refusal->announce(refusal);
    describe();
}

void SettingsRow::describe() {
    if (m_control) {
        const QStringList said{m_refusal->said(), m_note->said()};
        m_control->setAccessibleDescription(said.join(QLatin1Char('\n')).trimmed());
    }
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
    if (qobject_cast<QComboBox*>(m_control)) {
        m_control->setMinimumWidth(1); // less than its longest choice, where there is no room
        m_control->setMaximumWidth(m_theme.scaled(kWidestChoice));
    }
    if (m_words) {
        m_words->setSpacing(m_theme.space(Space::large));
        m_words->setSpacingBelow(m_theme.space(Space::hair)); // it belongs to the name
        m_words->setNarrowest(m_theme.scaled(kNarrowestName));
    }
}

SettingsLabel* settingsValue(const Theme& theme) {
    return new SettingsLabel(SettingsLabel::Kind::value, {}, theme);
}

QWidget* settingsButtons(const QString& name, std::initializer_list<QWidget*> buttons,
                         const Theme& theme) {
    auto* const line = new ButtonLine(buttons, theme);
    line->setAccessibleName(name);
    Accessibility::setRole(*line, QAccessible::Grouping);
    return line;
}

} // namespace korvex::ui
