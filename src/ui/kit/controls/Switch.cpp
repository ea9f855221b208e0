#include "ui/kit/controls/Switch.h"

#include "ui/kit/theme/Shapes.h"

#include <QPainter>
#include <QStyleOption>

#include <algorithm>

namespace korvex::ui {

Switch::Switch(const QString& text, const Theme& theme, QWidget* parent)
    : QCheckBox(text, parent), m_theme(theme) {
    m_knob.setStartValue(0.0);
    m_knob.setEndValue(1.0);
    connect(&m_knob, &QVariantAnimation::valueChanged, this, [this] { update(); });
    connect(this, &QCheckBox::toggled, this, &Switch::slide);
    connect(&theme, &Theme::changed, this, [this] { updateGeometry(); });
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void Switch::slide(bool isOn) {
    m_knob.setDirection(isOn ? QVariantAnimation::Forward : QVariantAnimation::Backward);
    m_knob.setDuration(m_theme.motion(Motion::quick));
    if (isVisible() && m_knob.duration() > 0) {
        m_knob.start();
    } else {
        m_knob.stop();
    }
}

QSize Switch::trackSize() const {
    const auto height = m_theme.extent(Extent::sign);
    return {height * 7 / 4, height};
}

QSize Switch::sizeHint() const {
    const auto words = text().isEmpty() ? 0
                                        : fontMetrics().size(Qt::TextShowMnemonic, text()).width() +
                                              m_theme.space(Space::large);
    const auto margin = m_theme.space(Space::small);
    return {words + trackSize().width() + 2 * margin,
            std::max(m_theme.extent(Extent::control), fontMetrics().height())};
}

void Switch::paintEvent(QPaintEvent*) {
    const auto& colors = m_theme.colors();
    const auto margin = m_theme.space(Space::small);
    const auto room = rect().adjusted(margin, 0, -margin, 0);
    QPainter painter(this);
    if (!isEnabled()) {
        painter.setOpacity(kDisabledOpacity);
    }
    painter.setPen(colors.text);
    painter.drawText(room,
                     static_cast<int>(QStyle::visualAlignment(layoutDirection(), Qt::AlignLeft)) |
                         Qt::AlignVCenter | Qt::TextShowMnemonic,
                     text());

    QRect track(QPoint(room.right() + 1 - trackSize().width(),
                       room.top() + (room.height() - trackSize().height()) / 2),
                trackSize());
    track = QStyle::visualRect(layoutDirection(), room, track);
    const auto radius = track.height() / 2.0;
    const auto isMoving = m_knob.state() == QVariantAnimation::Running;
    const auto place = isMoving ? m_knob.currentValue().toDouble() : isChecked() ? 1.0 : 0.0;
    const auto off = colors.border;
    Shapes::paintBox(painter, track, radius, blended(colors.accent, off, place), QColor());
    if (isEnabled() && (underMouse() || isDown())) {
        Shapes::paintBox(painter, track, radius,
                         colors.tint(isDown() ? Tint::pressed : Tint::hovered), QColor());
    }
    const auto inset = m_theme.space(Space::hair);
    const auto size = track.height() - 2 * inset;
    const auto way = (track.width() - 2 * inset - size) * place;
    QRectF knob(track.left() + inset + way, track.top() + inset, size, size);
    if (layoutDirection() == Qt::RightToLeft) {
        knob.moveLeft(track.left() + track.width() - inset - size - way);
    }
    Shapes::paintBox(painter, knob, size / 2.0, colors.isDark ? colors.content : colors.field,
                     QColor());
    Shapes::paintFocusRing(painter, *this);
}

} // namespace korvex::ui
