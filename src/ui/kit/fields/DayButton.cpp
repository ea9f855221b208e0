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

std::optional<Tint> DayButton::tint() const {
    return !isEnabled()   ? std::nullopt
           : isDown()     ? std::optional(Tint::hovered)
           : underMouse() ? std::optional(Tint::rest)
                          : std::nullopt;
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
    if (const auto tint = this->tint()) {
        Shapes::paintBox(painter, box, radius, colors.tint(*tint), QColor());
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
        const auto& ground = m_look.isChosen || m_look.isInRange ? colors.selection : colors.raised;
        const auto tint = this->tint();
        color = readable(palette().color(QPalette::Disabled, QPalette::Text),
                         tint ? colors.tinted(ground, *tint) : ground, colors.textContrast());
    } else if (m_look.isQuiet) {
        color = colors.secondaryText;
    }
    painter.setFont(m_look.isToday || m_look.isChosen ? Theme::strong(font()) : font());
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
