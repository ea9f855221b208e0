#pragma once

#include "platform/bus/Bus.h"

namespace korvex::platform::bus {

/// Notices that the machine goes to sleep and wakes, as its login manager says on the system's bus;
/// without one never anything. Main thread; the bus must outlive it.
class SleepWatcher final {
public:
    explicit SleepWatcher(Bus& systemBus);

    /// It falls asleep in a moment.
    base::Signal<>& fallingAsleep() { return m_fallingAsleep; }
    base::Signal<>& woken() { return m_woken; }

private:
    base::Signal<> m_fallingAsleep;
    base::Signal<> m_woken;
    base::Subscription m_signals;
};

} // namespace korvex::platform::bus
