#include "ui/boards/SidebarRow.h"

#include "ui/boards/NamedRow.h"
#include "ui/kit/speech/Accessibility.h"

#include <QKeyEvent>
#include <QLocale>
#include <QPainter>

namespace korvex::ui {

SidebarRow::SidebarRow(const QString& iconName, const QString& text, const Theme& theme,
                       QWidget* parent)
    : QAbstractButton(parent), m_theme(theme), m_iconName(iconName) {
    setText(text);
    setCheckable(true);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setAccessibleName(text);
    Accessibility::setRole(*this, QAccessible::ListItem);
    setToolTip(text);
    connect(&theme, &Theme::changed, this, [this] { updateGeometry(); });
}

void SidebarRow::setCount(int count) {
    setNote(count > 0 ? QLocale().toString(count) : QString(),
            count > 0 ? tr("%Ln open todo(s)", nullptr, count) : QString());
}

void SidebarRow::setNote(const QString& note, const QString& description) {
    setAccessibleDescription(description);
    if (m_note != note) {
        m_note = note;
        update();
    }
}

void SidebarRow::setMark(const QString& iconName) {
    if (m_mark != iconName) {
        m_mark = iconName;
        update();
    }
}

QSize SidebarRow::sizeHint() const {
    return {0, NamedRow::height(m_theme)};
}

void SidebarRow::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    QStyle::State state;
    state.setFlag(QStyle::State_Selected, isChecked());
    state.setFlag(QStyle::State_MouseOver, underMouse() || isDown());
    state.setFlag(QStyle::State_HasFocus, hasFocus());
    const auto quiet = isChecked() ? colors.accent : colors.secondaryText;
    const NamedRow row{.icon = m_iconName,
                       .iconColor = m_iconColor.isValid() ? m_iconColor : quiet,
                       .name = text(),
                       .note = m_note,
                       .mark = m_mark};
    row.paint(painter, NamedRow::box(rect(), m_theme.space(Space::medium), m_theme), state,
              m_theme);
}

void SidebarRow::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        Q_EMIT walked(event->key() == Qt::Key_Up ? -1 : 1);
        return;
    case Qt::Key_Home:
    case Qt::Key_PageUp: // rows are few: one page holds them, or nearly
        Q_EMIT walkedToEnd(-1);
        return;
    case Qt::Key_End:
    case Qt::Key_PageDown:
        Q_EMIT walkedToEnd(1);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        click();
        return;
    case Qt::Key_Escape:
        event->ignore();
        return;
    default:
        QAbstractButton::keyPressEvent(event);
    }
}

} // namespace korvex::ui
