#pragma once

#include "app/StoreChangeChannel.h"
#include "platform/bus/Bus.h"

#include <filesystem>
#include <string>

namespace korvex::platform::bus {

/// What a store is called between programs, whichever way leads there: each finds that out for its
/// own only, since another's may lie where nothing answers.
std::string storeNameOf(const std::filesystem::path& storeFile);

/// Sends the change signal. False when it could not be sent.
bool announceStoreChange(Bus& bus, const std::filesystem::path& storeFile);

/// Sends it for whoever does not know the bus. Main thread; the bus must outlive it.
class BusStoreChangeBroadcaster final : public app::StoreChangeBroadcaster {
public:
    explicit BusStoreChangeBroadcaster(Bus& bus) : m_bus(bus) {}

    void storeChanged(const std::filesystem::path& storeFile) override {
        announceStoreChange(m_bus, storeFile);
    }

private:
    Bus& m_bus;
};

/// Hears the change signals of other programs on the same store. Main thread; the bus must outlive
/// it.
class StoreChangeListener final {
public:
    StoreChangeListener(Bus& bus, const std::filesystem::path& storeFile);

    base::Signal<>& changed() { return m_changed; }

private:
    Bus& m_bus;
    std::string m_store;
    base::Signal<> m_changed;
    base::Subscription m_signals;
};

} // namespace korvex::platform::bus
