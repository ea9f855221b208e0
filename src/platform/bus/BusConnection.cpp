#include "platform/bus/BusConnection.h"

#include <poll.h>
#include <systemd/sd-bus.h>

#include <cstdint>
#include <utility>

namespace korvex::platform::bus {

namespace {

using namespace std::chrono_literals;
using Interest = base::RunLoop::Interest;

/// To be let in, and to be given a name. A bus that hangs is left and tried again.
constexpr std::chrono::duration<double> kLongestConnecting = 10s;
/// Messages in one turn of the run loop: who sends many does not keep the windows from being drawn.
constexpr int kAtOnce = 32;

Interest interestOf(int events) {
    const auto reads = (events & POLLIN) != 0;
    const auto writes = (events & POLLOUT) != 0;
    return reads && writes ? Interest::both
           : reads         ? Interest::reading
           : writes        ? Interest::writing
                           : Interest::nothing;
}

} // namespace

void BusConnection::CloseBus::operator()(sd_bus* bus) const {
    // Without flushing: that would wait for a bus that does not answer.
    sd_bus_close_unref(bus);
}

BusConnection::BusConnection(base::RunLoop& runLoop, const std::string& address, Listener listener)
    : m_runLoop(runLoop), m_listener(std::move(listener)) {
    sd_bus* bus = nullptr;
    if (sd_bus_new(&bus) < 0) {
        end();
        return;
    }
    m_bus.reset(bus);
    sd_bus_set_description(bus, "korvex");
    sd_bus_set_exit_on_disconnect(bus, 0);
    sd_bus_negotiate_fds(bus, 0);
    if (sd_bus_set_address(bus, address.c_str()) < 0 || sd_bus_set_bus_client(bus, 1) < 0 ||
        sd_bus_start(bus) < 0) {
        end();
        return;
    }
    m_limit = m_runLoop.callAfter(kLongestConnecting, [this] { end(); });
    await();
}

BusConnection::~BusConnection() = default;

void BusConnection::wrote() {
    if (!m_hasEnded && !m_isProcessing) {
        await();
    }
}

std::size_t BusConnection::unsentCount() const {
    std::uint64_t count = 0;
    return m_bus && sd_bus_get_n_queued_write(m_bus.get(), &count) >= 0
               ? static_cast<std::size_t>(count)
               : 0;
}

void BusConnection::process() {
    if (m_isProcessing) {
        // A handler runs an event loop of its own. What comes meanwhile waits until it is done.
        if (m_watch) {
            m_watch->setInterest(Interest::nothing);
        }
        return;
    }
    const std::weak_ptr<const bool> life = m_life;
    for (int i = 0; i < kAtOnce; ++i) {
        const auto step = processOne();
        if (life.expired()) {
            return;
        }
        if (step == Step::ended) {
            end();
            return;
        }
        if (!m_isReady && sd_bus_is_ready(m_bus.get()) > 0) {
            m_isReady = true;
            m_limit.reset();
            const auto ready = m_listener.ready; // it may destroy this connection
            ready();
            if (life.expired()) {
                return;
            }
        }
        if (step == Step::none) {
            await();
            return;
        }
    }
    await();
    processSoon();
}

BusConnection::Step BusConnection::processOne() {
    // A handler may destroy this connection.
    const std::weak_ptr<const bool> life = m_life;
    const std::unique_ptr<sd_bus, decltype(&sd_bus_unref)> bus(sd_bus_ref(m_bus.get()),
                                                               sd_bus_unref);
    m_isProcessing = true;
    const auto result = sd_bus_process(bus.get(), nullptr);
    if (life.expired()) {
        return Step::ended;
    }
    m_isProcessing = false;
    if (result < 0 || sd_bus_is_open(bus.get()) <= 0) {
        return Step::ended;
    }
    return result > 0 ? Step::done : Step::none;
}

void BusConnection::await() {
    const auto descriptor = sd_bus_get_fd(m_bus.get());
    const auto events = sd_bus_get_events(m_bus.get());
    if (descriptor < 0 || events < 0) {
        processSoon(); // which finds out what happened
        return;
    }
    // Until it is ready each step may go on with another socket, which may have the same number.
    if (!m_watch || m_watched != descriptor || !m_isReady) {
        m_watch.reset();
        m_watch = m_runLoop.watch(descriptor, interestOf(events), [this] { process(); });
        m_watched = descriptor;
    } else {
        m_watch->setInterest(interestOf(events));
    }
    std::uint64_t due = 0;
    // What has been read already makes no descriptor ready.
    if (sd_bus_get_timeout(m_bus.get(), &due) >= 0 && due == 0) {
        processSoon();
    }
}

void BusConnection::processSoon() {
    if (std::exchange(m_willProcess, true)) {
        return;
    }
    m_runLoop.post([this, life = std::weak_ptr<const bool>(m_life)] {
        if (!life.expired()) {
            m_willProcess = false;
            if (!m_hasEnded) {
                process();
            }
        }
    });
}

void BusConnection::end() {
    if (m_hasEnded) {
        return;
    }
    m_hasEnded = true;
    m_isReady = false;
    m_watch.reset();
    m_limit.reset();
    if (m_bus) {
        sd_bus_close(m_bus.get());
    }
    // Not from within the constructor, nor from within a call that finds this out.
    m_runLoop.post([life = std::weak_ptr<const bool>(m_life), ended = m_listener.ended] {
        if (!life.expired()) {
            ended();
        }
    });
}

} // namespace korvex::platform::bus
