#include "ui/kit/controls/RefusalLabel.h"

#include "ui/kit/speech/Accessibility.h"

namespace korvex::ui {

RefusalLabel::RefusalLabel(const Theme& theme, QWidget* parent) : QLabel(parent), m_theme(theme) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    Accessibility::setRole(*this, QAccessible::AlertMessage);
    hide();
    connect(&theme, &Theme::changed, this, &RefusalLabel::applyTheme);
    applyTheme();
}

void RefusalLabel::applyTheme() {
    setFont(m_theme.smallFont());
    auto red = palette();
    red.setColor(QPalette::WindowText, m_theme.colors().danger);
    setPalette(red);
}

void RefusalLabel::say(const QString& why) {
    if (why != text()) {
        setText(why);
        setVisible(!why.isEmpty());
        Accessibility::say(*this, why);
    }
}

} // namespace korvex::ui
