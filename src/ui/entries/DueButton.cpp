#include "ui/entries/DueButton.h"

#include "ui/kit/theme/IconSet.h"
#include "ui/todos/TodoPainting.h"

#include <QStyleOptionToolButton>
#include <QStylePainter>

namespace korvex::ui {

DueButton::DueButton(const Theme& theme, QWidget* parent) : QToolButton(parent), m_theme(theme) {
    setAutoRaise(true);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    setLabel({});
}

void DueButton::setLabel(const DueLabel& label) {
    m_label = label;
    setText(label.text);
    setAccessibleName(label.text.isEmpty() ? tr("Schedule") : label.text);
    setAccessibleDescription(label.reminder);
    const auto what = tr("Schedule (Ctrl+D)");
    setToolTip(label.reminder.isEmpty() ? what : label.reminder + QLatin1Char('\n') + what);
    update();
}

QMargins DueButton::around() const {
    const auto small = m_theme.space(Space::small);
    const auto beside = m_label.isEmpty() ? small : m_theme.space(Space::medium);
    return {beside, small, beside, small};
}

void DueButton::placeAround(const QRect& words) {
    setGeometry(words.marginsAdded(around()));
}

void DueButton::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionToolButton ground;
    initStyleOption(&ground);
    ground.text.clear();
    painter.drawComplexControl(QStyle::CC_ToolButton, ground);
    const auto& colors = m_theme.colors();
    const auto words = rect().marginsRemoved(around());
    painter.setRenderHint(QPainter::Antialiasing);
    if (m_label.isEmpty()) {
        IconSet::draw(painter, QStringLiteral("calendar-plus"), colors.secondaryText, words);
    } else {
        TodoPainting::drawDueLabel(painter, words, m_label,
                                   m_label.isOverdue ? colors.danger : colors.secondaryText,
                                   m_theme);
    }
}

} // namespace korvex::ui
