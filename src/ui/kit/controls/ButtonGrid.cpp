#include "ui/kit/controls/ButtonGrid.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QKeyEvent>

#include <algorithm>

namespace korvex::ui {

ButtonGrid::ButtonGrid(const QString& name, int columns, const Theme& theme, QWidget* parent)
    : QWidget(parent), m_grid(new QGridLayout(this)), m_columns(columns) {
    setAccessibleName(name);
    Accessibility::setRole(*this, QAccessible::Grouping);
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setSpacing(theme.space(Space::hair));
}

void ButtonGrid::add(QAbstractButton* button) {
    const auto place = static_cast<int>(m_buttons.size());
    button->setCheckable(true);
    button->setFocusPolicy(place == 0 ? Qt::StrongFocus : Qt::ClickFocus);
    button->installEventFilter(this);
    m_grid->addWidget(button, place / m_columns, place % m_columns);
    m_buttons.push_back(button);
}

void ButtonGrid::choose(std::size_t index) {
    for (std::size_t i = 0; i < m_buttons.size(); ++i) {
        m_buttons[i]->setChecked(i == index);
    }
    const auto isWalkedIn = std::any_of(m_buttons.begin(), m_buttons.end(),
                                        [](const auto* button) { return button->hasFocus(); });
    if (!isWalkedIn) {
        enterAt(index);
    }
}

void ButtonGrid::enterAt(std::size_t index) {
    for (std::size_t i = 0; i < m_buttons.size(); ++i) {
        m_buttons[i]->setFocusPolicy(i == index ? Qt::StrongFocus : Qt::ClickFocus);
    }
    setFocusProxy(m_buttons[index]);
}

bool ButtonGrid::eventFilter(QObject* watched, QEvent* event) {
    const auto found = std::find(m_buttons.begin(), m_buttons.end(), watched);
    if (found != m_buttons.end()) {
        const auto index = static_cast<std::size_t>(found - m_buttons.begin());
        if (event->type() == QEvent::FocusIn) {
            enterAt(index);
        } else if (event->type() == QEvent::KeyPress) {
            return walk(index, static_cast<QKeyEvent*>(event)->key());
        }
    }
    return QWidget::eventFilter(watched, event);
}

bool ButtonGrid::walk(std::size_t from, int key) {
    const auto place = static_cast<int>(from);
    const auto count = static_cast<int>(m_buttons.size());
    const auto column = place % m_columns + stepOf(key);
    const auto row = place / m_columns + (key == Qt::Key_Down ? 1 : key == Qt::Key_Up ? -1 : 0);
    const auto target = row * m_columns + column;
    if (target == place) {
        return false; // no arrow
    }
    if (column >= 0 && column < m_columns && row >= 0 && target < count) {
        m_buttons[static_cast<std::size_t>(target)]->setFocus(Qt::OtherFocusReason);
    }
    return true; // at an edge the keyboard stays
}

} // namespace korvex::ui
