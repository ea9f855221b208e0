#include "ui/kit/overlays/Overlay.h"

#include <QEvent>

#include <algorithm>

namespace korvex::ui {

Overlay::Overlay(QWidget& over, QWidget& ground, Place place, const Theme& theme,
                 std::optional<Space> margin)
    : QObject(&over),
      m_over(over),
      m_ground(ground),
      m_place(place),
      m_theme(theme),
      m_margin(margin) {
    if (m_over.parentWidget() != &m_ground) {
        m_over.setParent(m_ground.parentWidget());
    }
    m_over.raise();
    m_over.installEventFilter(this);
    m_ground.installEventFilter(this);
    connect(&theme, &Theme::changed, this, &Overlay::arrange);
}

bool Overlay::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (watched == &m_ground && (type == QEvent::Resize || type == QEvent::Move)) {
        arrange();
    }
    if (watched == &m_over && (type == QEvent::LayoutRequest || type == QEvent::Show)) {
        arrange();
    }
    return false;
}

QRect Overlay::room() const {
    const auto ground = m_over.parentWidget() == &m_ground ? m_ground.rect() : m_ground.geometry();
    const auto margin = m_margin ? m_theme.space(*m_margin) : 0;
    return ground.adjusted(margin, margin, -margin, -margin);
}

void Overlay::arrange() {
    if (m_over.isHidden()) {
        return;
    }
    const auto room = this->room();
    const auto asked = m_over.sizeHint();
    const auto width = std::min(asked.width(), room.width());
    const auto wanted = m_over.hasHeightForWidth() ? m_over.heightForWidth(width) : asked.height();
    const auto height = std::min(wanted, room.height());
    const auto below = room.height() - height;
    const auto above = m_place == Place::head ? 0 : m_place == Place::middle ? below / 2 : below;
    m_over.setGeometry(room.left() + (room.width() - width) / 2, room.top() + above, width, height);
    m_over.raise();
}

} // namespace korvex::ui
