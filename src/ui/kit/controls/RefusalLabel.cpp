#include "ui/kit/controls/RefusalLabel.h"

#include "ui/kit/speech/Accessibility.h"

namespace korvex::ui {

RefusalLabel::RefusalLabel(const Theme& theme, QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setWordWrap(true);
    setFont(theme.smallFont());
    auto red = palette();
    red.setColor(QPalette::WindowText, theme.colors().danger);
    setPalette(red);
    Accessibility::setRole(*this, QAccessible::AlertMessage);
    hide();
}

void RefusalLabel::say(const QString& why) {
    if (why != text()) {
        setText(why);
        setVisible(!why.isEmpty());
        Accessibility::say(*this, why);
    }
}

} // namespace korvex::ui
