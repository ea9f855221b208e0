#include "ui/settings/SettingsLabel.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Text.h"

namespace korvex::ui {

SettingsLabel::SettingsLabel(Kind kind, const QString& text, const Theme& theme, QWidget* parent)
    : QLabel(breakable(text), parent), m_kind(kind), m_said(text), m_theme(theme) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setAlignment(kind == Kind::value ? lineEnd() : lineStart());
    if (text.isEmpty()) {
        hide();
    }
    if (kind == Kind::title || kind == Kind::heading) {
        Accessibility::setRole(*this, QAccessible::Heading);
    }
    connect(&theme, &Theme::changed, this, &SettingsLabel::applyTheme);
    applyTheme();
}

void SettingsLabel::say(const QString& text) {
    if (text != m_said) {
        m_said = text;
        setText(breakable(text));
        setVisible(!text.isEmpty());
    }
}

QSize SettingsLabel::sizeHint() const {
    const auto wanted = QLabel::sizeHint();
    return m_kind == Kind::value ? QSize(fontMetrics().size(0, text()).width(), wanted.height())
                                 : wanted;
}

void SettingsLabel::announce(const QString& text) {
    if (text != m_said) {
        say(text);
        Accessibility::setRole(*this, QAccessible::AlertMessage);
        Accessibility::say(*this, text);
    }
}

void SettingsLabel::applyTheme() {
    const auto& colors = m_theme.colors();
    auto color = colors.text;
    auto font = m_theme.font();
    switch (m_kind) {
    case Kind::title:
        font = m_theme.titleFont();
        break;
    case Kind::heading:
        font = m_theme.sectionFont();
        break;
    case Kind::name:
        break;
    case Kind::value:
        color = colors.secondaryText;
        setMinimumHeight(m_theme.extent(Extent::control)); // in the middle of its line
        break;
    case Kind::note:
        font = m_theme.smallFont();
        color = colors.secondaryText;
        break;
    case Kind::refusal:
        font = m_theme.smallFont();
        color = colors.danger;
        break;
    }
    setFont(font);
    auto own = palette();
    own.setColor(QPalette::WindowText, color);
    setPalette(own);
}

} // namespace korvex::ui
