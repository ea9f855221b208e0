#include "platform/systemd/SdBusStoreChangeBroadcaster.h"

#include "base/Text.h"

#include <systemd/sd-bus.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace korvex::platform::systemd {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kLongestDelay = std::chrono::milliseconds(100);
constexpr auto kRest = std::chrono::seconds(10);

bool isBusAnnounced() {
    if (const auto* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
        address && *address != '\0') {
        return true;
    }
    const auto* runtimeFolder = std::getenv("XDG_RUNTIME_DIR");
    return runtimeFolder && ::access((std::string(runtimeFolder) + "/bus").c_str(), F_OK) == 0;
}

} // namespace

void SdBusStoreChangeBroadcaster::CloseBus::operator()(sd_bus* bus) const {
    // Without flushing: that would wait for a bus that does not answer.
    sd_bus_close_unref(bus);
}

void SdBusStoreChangeBroadcaster::storeChanged(const std::filesystem::path& storeFile) {
    const auto now = Clock::now();
    // D-Bus carries UTF-8 only; a store with another path is looked at less promptly.
    if (now < m_restUntil || !isBusAnnounced() || !base::isValidUtf8(storeFile.native())) {
        return;
    }
    const auto deadline = now + kLongestDelay;
    const auto wasConnected = m_bus != nullptr;
    if (send(storeFile.c_str(), deadline)) {
        return;
    }
    m_bus.reset();
    // The bus may have been started anew since it was last used.
    if (wasConnected && send(storeFile.c_str(), deadline)) {
        return;
    }
    m_bus.reset();
    m_restUntil = now + kRest;
}

bool SdBusStoreChangeBroadcaster::connect() {
    sd_bus* bus = nullptr;
    if (sd_bus_open_user_with_description(&bus, "korvex") < 0) {
        return false;
    }
    m_bus.reset(bus);
    return true;
}

bool SdBusStoreChangeBroadcaster::send(const char* storeFile, TimePoint deadline) {
    if (!m_bus && !connect()) {
        return false;
    }
    return sd_bus_emit_signal(m_bus.get(), app::kStoreChangedPath, app::kStoreChangedInterface,
                              app::kStoreChangedMember, "s", storeFile) >= 0 &&
           flush(deadline);
}

/// sd_bus_flush, but with an end.
bool SdBusStoreChangeBroadcaster::flush(TimePoint deadline) {
    while (true) {
        const auto processed = sd_bus_process(m_bus.get(), nullptr);
        std::uint64_t queued = 0;
        if (processed < 0 || sd_bus_get_n_queued_write(m_bus.get(), &queued) < 0) {
            return false;
        }
        if (queued == 0 && sd_bus_is_ready(m_bus.get()) > 0) {
            return true;
        }
        if (processed > 0) {
            continue;
        }
        const auto rest =
            std::chrono::duration_cast<std::chrono::microseconds>(deadline - Clock::now());
        if (rest.count() <= 0 ||
            sd_bus_wait(m_bus.get(), static_cast<std::uint64_t>(rest.count())) <= 0) {
            return false;
        }
    }
}

} // namespace korvex::platform::systemd
