#pragma once

#include "base/Log.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "platform/bus/Bus.h"
#include "platform/bus/SleepWatcher.h"
#include "platform/system/SystemTimeWatcher.h"

#include <array>

namespace korvex::agent {

/// What tells that time has not passed as usual: the clock, the zone, and whoever puts the machine
/// to sleep. Main thread; the run loop and the log must outlive it.
class TimeSources final {
public:
    TimeSources(base::RunLoop& runLoop, base::LogSink& log);

    base::Signal<>& changed() { return m_changed; }

private:
    platform::system::SystemTimeWatcher m_time;
    platform::bus::Bus m_systemBus;
    platform::bus::SleepWatcher m_sleep;
    base::Signal<> m_changed;
    std::array<base::Subscription, 2> m_subscriptions;
};

} // namespace korvex::agent
