#include "ui/capture/ChoiceButton.h"

#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"

#include <QKeyEvent>
#include <QStyleOptionButton>
#include <QStylePainter>

#include <algorithm>

namespace korvex::ui {

namespace {

/// Of the words, in pixels at the standard font size: the most, and what is always seen.
constexpr int kWidest = 200;
constexpr int kNarrowest = 32;

} // namespace

ChoiceButton::ChoiceButton(const Theme& theme, QWidget* parent)
    : QPushButton(parent), m_theme(theme) {
    setAutoDefault(true); // Return presses the one that has the keyboard
}

void ChoiceButton::show(const QString& icon, const QColor& color, const QString& words) {
    m_icon = icon;
    m_color = color;
    m_words = words;
    updateGeometry();
    update();
}

int ChoiceButton::iconRoom() const {
    return m_icon.isEmpty() ? 0 : m_theme.extent(Extent::icon) + m_theme.space(Space::small);
}

int ChoiceButton::widthFor(int words) const {
    return 2 * m_theme.space(Space::large) + iconRoom() + words;
}

QSize ChoiceButton::sizeHint() const {
    const auto words = fontMetrics().horizontalAdvance(m_words) + 1;
    return {widthFor(std::min(words, m_theme.scaled(kWidest))), m_theme.extent(Extent::control)};
}

QSize ChoiceButton::minimumSizeHint() const {
    return {std::min(widthFor(m_theme.scaled(kNarrowest)), sizeHint().width()),
            sizeHint().height()};
}

void ChoiceButton::keyPressEvent(QKeyEvent* event) {
    if (event->modifiers().testFlag(Qt::ControlModifier)) {
        event->ignore(); // Return presses it, and with Ctrl it saves, wherever the keyboard is
    } else {
        QPushButton::keyPressEvent(event);
    }
}

void ChoiceButton::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.features &= ~QStyleOptionButton::HasMenu;
    painter.drawControl(QStyle::CE_PushButtonBevel, option);
    const auto side = m_theme.space(Space::large);
    auto inside = rect().adjusted(side, 0, -side, 0);
    if (!m_icon.isEmpty()) {
        const auto size = m_theme.extent(Extent::icon);
        const QRect icon(inside.left(), inside.center().y() + 1 - size / 2, size, size);
        IconSet::draw(painter, m_icon, m_color, mirrored(icon, rect()));
        inside.setLeft(inside.left() + iconRoom());
    }
    painter.setPen(palette().color(QPalette::ButtonText));
    painter.drawText(mirrored(inside, rect()), static_cast<int>(lineStart()),
                     fontMetrics().elidedText(m_words, Qt::ElideRight, inside.width()));
}

} // namespace korvex::ui
