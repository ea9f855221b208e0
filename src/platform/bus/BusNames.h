#pragma once

namespace korvex::platform::bus {

/// The bus itself, as programs call it.
inline constexpr const char* kBusName = "org.freedesktop.DBus";
inline constexpr const char* kBusPath = "/org/freedesktop/DBus";
inline constexpr const char* kBusInterface = "org.freedesktop.DBus";

} // namespace korvex::platform::bus
