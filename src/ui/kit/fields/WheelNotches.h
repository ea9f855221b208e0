#pragma once

class QWheelEvent;

namespace korvex::ui {

/// Counts what a wheel turns in whole notches; what is less waits for the next event.
class WheelNotches final {
public:
    /// How many notches it has turned with this event; upwards they are positive.
    int take(const QWheelEvent& event);

private:
    int m_turned = 0;
};

} // namespace korvex::ui
