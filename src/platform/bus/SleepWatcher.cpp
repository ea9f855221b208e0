#include "platform/bus/SleepWatcher.h"

namespace korvex::platform::bus {

SleepWatcher::SleepWatcher(Bus& systemBus) {
    m_signals = systemBus.match({.sender = "org.freedesktop.login1",
                                 .path = "/org/freedesktop/login1",
                                 .interface = "org.freedesktop.login1.Manager",
                                 .member = "PrepareForSleep"},
                                [this](const IncomingSignal& signal) {
                                    const auto isStarting = signal.read<bool>();
                                    (isStarting ? m_fallingAsleep : m_woken).emit();
                                });
}

} // namespace korvex::platform::bus
