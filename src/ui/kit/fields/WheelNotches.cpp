#include "ui/kit/fields/WheelNotches.h"

#include <QWheelEvent>

namespace korvex::ui {

namespace {

/// In the units of the events.
constexpr int kNotch = 120;

} // namespace

int WheelNotches::take(const QWheelEvent& event) {
    const auto turned = event.angleDelta();
    // Some desktops take a wheel for one that turns sideways while Shift is held.
    const auto isSideways = event.modifiers().testFlag(Qt::ShiftModifier) && turned.y() == 0;
    m_turned += isSideways ? turned.x() : turned.y();
    const auto notches = m_turned / kNotch;
    m_turned %= kNotch;
    return notches;
}

} // namespace korvex::ui
