#include "platform/bus/BusAddress.h"

#include "base/EnvironmentVariable.h"

#include <unistd.h>

#include <cctype>
#include <string_view>

namespace korvex::platform::bus {

namespace {

constexpr const char* kSystemBus = "unix:path=/run/dbus/system_bus_socket";

/// In an address other bytes than these stand as their number.
std::string escaped(std::string_view path) {
    constexpr std::string_view kDigits = "0123456789abcdef";
    constexpr std::string_view kPlain = "-_/.*\\";
    std::string text;
    for (const char each : path) {
        const auto byte = static_cast<unsigned char>(each);
        if (std::isalnum(byte) || kPlain.find(each) != std::string_view::npos) {
            text += each;
        } else {
            text += {'%', kDigits[byte / 16], kDigits[byte % 16]};
        }
    }
    return text;
}

} // namespace

std::optional<std::string> busAddress(WhichBus which) {
    if (which == WhichBus::system) {
        return base::environmentVariable("DBUS_SYSTEM_BUS_ADDRESS").value_or(kSystemBus);
    }
    if (auto address = base::environmentVariable("DBUS_SESSION_BUS_ADDRESS")) {
        return address;
    }
    const auto folder = base::environmentVariable("XDG_RUNTIME_DIR");
    const auto socket = folder.value_or("") + "/bus";
    if (!folder || ::access(socket.c_str(), F_OK) != 0) {
        return std::nullopt;
    }
    return "unix:path=" + escaped(socket);
}

} // namespace korvex::platform::bus
