#pragma once

#include "app/StoreChangeChannel.h"

#include <chrono>
#include <memory>

struct sd_bus;

namespace korvex::platform::systemd {

/// Sends the change signal over the user's session bus, connecting at the first change. Where no
/// bus is announced it does nothing, and it never starts one. A bus that does not answer holds a
/// change up for a tenth of a second at most, and then is left alone for a while. One thread.
class SdBusStoreChangeBroadcaster final : public app::StoreChangeBroadcaster {
public:
    SdBusStoreChangeBroadcaster() = default;
    ~SdBusStoreChangeBroadcaster() override = default;

    void storeChanged(const std::filesystem::path& storeFile) override;

private:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct CloseBus {
        void operator()(sd_bus* bus) const;
    };

    bool connect();
    bool send(const char* storeFile, TimePoint deadline);
    bool flush(TimePoint deadline);

    std::unique_ptr<sd_bus, CloseBus> m_bus;
    TimePoint m_restUntil{};
};

} // namespace korvex::platform::systemd
