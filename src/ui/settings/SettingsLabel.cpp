#include "ui/settings/SettingsLabel.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Text.h"

#include <QFontMetrics>

#include <algorithm>

namespace korvex::ui {

SettingsLabel::SettingsLabel(Kind kind, const QString& text, const Theme& theme, QWidget* parent)
    : QLabel(breakable(text), parent), m_kind(kind), m_said(text), m_theme(theme) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    const auto direction = kind == Kind::value ? lineEnd() : lineStart();
    setAlignment((direction & Qt::AlignHorizontal_Mask) | Qt::AlignTop);
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
    if (m_kind != Kind::value) {
        return QLabel::sizeHint();
    }
    const auto width = fontMetrics().size(0, text()).width();
    return {width, heightForWidth(width)};
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
    if (m_kind == Kind::name || m_kind == Kind::value) {
        // However many lines it has, the first stands where that of a control beside it does.
        const auto above =
            std::max(0, (m_theme.extent(Extent::control) - QFontMetrics(font).height()) / 2);
        setContentsMargins(0, above, 0, above);
    }
    auto own = palette();
    own.setColor(QPalette::WindowText, color);
    setPalette(own);
}

} // namespace korvex::ui
