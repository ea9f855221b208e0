#include "ui/boards/BoardLookButton.h"

#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Shapes.h"

#include <QPainter>

namespace korvex::ui {

namespace {

/// For a sign upon this colour.
QColor signOn(const QColor& color, const ThemeColors& colors) {
    return contrast(Qt::white, color) >= colors.markContrast() ? Qt::white : Qt::black;
}

} // namespace

BoardLookButton::BoardLookButton(const QString& title, int side, const Theme& theme,
                                 QWidget* parent)
    : QToolButton(parent), m_theme(theme) {
    setToolTip(title);
    setAccessibleName(title);
    setFixedSize(side, side);
}

void BoardLookButton::show(const QColor& color, const QString& icon) {
    m_color = color;
    m_icon = icon;
    update();
}

QRectF BoardLookButton::middle(double size) const {
    return {(width() - size) / 2, (height() - size) / 2, size, size};
}

void BoardLookButton::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    const auto radius = m_theme.radius(Radius::medium);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (underMouse() && !isChecked()) {
        const auto tint = isDown() ? Tint::pressed : Tint::hovered;
        Shapes::paintBox(painter, rect(), radius, colors.tint(tint), QColor());
    }
    if (m_icon.isEmpty()) {
        paintColor(painter);
    } else {
        paintIcon(painter);
    }
    Shapes::paintFocusRing(painter, *this);
}

void BoardLookButton::paintIcon(QPainter& painter) const {
    if (isChecked()) {
        // Apart from the ring of the keyboard, which is of the same colour on many boards.
        const auto apart = m_theme.space(Space::small);
        Shapes::paintBox(painter, rect().adjusted(apart, apart, -apart, -apart),
                         m_theme.radius(Radius::small), m_color, QColor());
    }
    IconSet::draw(painter, m_icon, isChecked() ? signOn(m_color, m_theme.colors()) : m_color,
                  middle(width() / 2.0).toRect());
}

void BoardLookButton::paintColor(QPainter& painter) const {
    const double line = m_theme.space(Space::hair);
    const double size = width() / 2.0;
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_color);
    painter.drawEllipse(middle(size));
    if (isChecked()) {
        IconSet::draw(painter, QStringLiteral("check-bold"), signOn(m_color, m_theme.colors()),
                      middle(width() * 3 / 8.0).toRect());
        painter.setPen(QPen(m_color, line));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(middle(size + 3 * line));
    }
}

} // namespace korvex::ui
