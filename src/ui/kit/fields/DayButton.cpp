#include "ui/kit/fields/DayButton.h"

#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Shapes.h"

#include <QPainter>

#include <utility>

namespace korvex::ui {

DayButton::DayButton(const Theme& theme, QWidget* parent)
    : QAbstractButton(parent), m_theme(theme) {
    setCheckable(true);
    setAttribute(Qt::WA_Hover);
    Accessibility::setRole(*this, QAccessible::RadioButton);
}

void DayButton::show(const QDate& day, const Look& look) {
    m_day = day;
    m_look = look;
    setChecked(look.isChosen);
    update();
}

void DayButton::paintGround(QPainter& painter) const {
    const auto& colors = m_theme.colors();
    const auto radius = m_theme.radius(Radius::medium);
    const QRectF box = rect();
    if (m_look.isInRange) {
        // What is not round here goes on in the next day.
        auto left = m_look.beginsRange ? 0.0 : -radius;
        auto right = m_look.endsRange ? 0.0 : radius;
        if (isRightToLeft()) {
            std::swap(left, right);
            left = -left;
            right = -right;
        }
        painter.setClipRect(box);
        Shapes::paintBox(painter, box.adjusted(left, 0, right, 0), radius, colors.selection,
                         QColor());
        painter.setClipping(false);
    }
    if (m_look.isChosen) {
        Shapes::paintChosen(painter, box, radius, colors);
    }
    if (isEnabled() && (isDown() || underMouse())) {
        Shapes::paintBox(
            painter, box, radius,
            Shapes::tint(colors, isDown() ? Shapes::Tint::hovered : Shapes::Tint::rest), QColor());
    }
    Shapes::paintFocusRing(painter, *this);
}

void DayButton::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    QPainter painter(this);
    paintGround(painter);
    auto color = colors.text;
    if (m_look.isToday) {
        color = colors.accent;
    } else if (!isEnabled()) {
        color = palette().color(QPalette::Disabled, QPalette::Text);
    } else if (m_look.isOfOtherMonth) {
        // As faint as what can be chosen may be.
        color = readable(palette().color(QPalette::Disabled, QPalette::Text),
                         m_look.isChosen || m_look.isInRange ? colors.selection : colors.raised,
                         colors.textContrast());
    } else if (m_look.isQuiet) {
        color = colors.secondaryText;
    }
    auto font = this->font();
    font.setWeight(m_look.isToday || m_look.isChosen ? QFont::DemiBold : QFont::Normal);
    painter.setFont(font);
    painter.setPen(color);
    painter.drawText(rect(), Qt::AlignCenter, text());
    if (m_look.isToday) {
        // Who does not see the colour sees the dot.
        const auto size = m_theme.space(Space::small);
        const QRectF dot((width() - size) / 2.0, height() - 1.5 * size, size, size);
        Shapes::paintBox(painter, dot, size / 2.0, color, QColor());
    }
}

} // namespace korvex::ui
