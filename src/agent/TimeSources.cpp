#include "agent/TimeSources.h"

#include "base/EnvironmentVariable.h"

#include <unistd.h>

namespace korvex::agent {

namespace {

using platform::bus::WhichBus;

bool hasSystemBus() {
    return base::environmentVariable("DBUS_SYSTEM_BUS_ADDRESS") ||
           ::access("/run/dbus/system_bus_socket", F_OK) == 0;
}

} // namespace

TimeSources::TimeSources(base::RunLoop& runLoop, base::LogSink& log)
    : m_time(runLoop), m_systemBus(WhichBus::system, runLoop, log), m_sleep(m_systemBus) {
    m_subscriptions = {m_time.changed().connect([this] { m_changed.emit(); }),
                       m_sleep.woken().connect([this] { m_changed.emit(); })};
    // Where there is none, it would be looked for twice a minute; the clock tells of sleep too.
    if (hasSystemBus()) {
        m_systemBus.start();
    }
}

} // namespace korvex::agent
