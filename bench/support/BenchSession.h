#pragma once

#include "support/BenchStore.h"
#include "support/ChildProcess.h"
#include "support/Scratch.h"

#include "tests/support/SessionBus.h"

#include <systemd/sd-bus.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

namespace korvex::bench {

/// A user's session with a bus of its own, and a store in the user's data folder.
class BenchSession {
public:
    explicit BenchSession(std::size_t todos) {
        const auto folder = m_scratch / "korvex";
        std::filesystem::create_directory(folder);
        std::filesystem::create_directory(m_scratch / "services");
        makeStore(storeFile(), titles(todos));
        // It is as a program leaves it that has prepared it.
        runToEnd({KORVEX_PROGRAM, "boards"}, environment());
        m_bus = std::make_unique<tests::SessionBus>(m_scratch / "bus", m_scratch / "services");
        sd_bus* connection = nullptr;
        sd_bus_new(&connection);
        sd_bus_set_address(connection, m_bus->address().c_str());
        sd_bus_set_bus_client(connection, 1);
        if (sd_bus_start(connection) < 0) {
            throw std::runtime_error("no session bus");
        }
        m_connection.reset(connection);
    }

    const std::filesystem::path& folder() const { return m_scratch.path(); }
    std::filesystem::path storeFile() const { return m_scratch / "korvex" / "Primary.store"; }
    Environment environment() const {
        return {{"XDG_DATA_HOME", m_scratch.path()},
                {"XDG_CONFIG_HOME", m_scratch / "config"},
                {"XDG_STATE_HOME", m_scratch / "state"},
                {"XDG_RUNTIME_DIR", m_scratch.path()},
                {"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + (m_scratch / "bus").string()}};
    }
    sd_bus* connection() const { return m_connection.get(); }

    /// Whether somebody has the name now.
    bool hasOwner(const char* name) const {
        int isOwned = 0;
        sd_bus_message* reply = nullptr;
        if (sd_bus_call_method(connection(), "org.freedesktop.DBus", "/org/freedesktop/DBus",
                               "org.freedesktop.DBus", "NameHasOwner", nullptr, &reply, "s",
                               name) >= 0) {
            sd_bus_message_read(reply, "b", &isOwned);
        }
        sd_bus_message_unref(reply);
        return isOwned != 0;
    }
    void waitForOwner(const char* name, bool isOwned = true) const {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (hasOwner(name) != isOwned) {
            if (std::chrono::steady_clock::now() > end) {
                throw std::runtime_error(std::string(name) + " does not come or go");
            }
        }
    }

private:
    struct Close {
        void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
    };

    Scratch m_scratch;
    std::unique_ptr<tests::SessionBus> m_bus;
    std::unique_ptr<sd_bus, Close> m_connection;
};

} // namespace korvex::bench
