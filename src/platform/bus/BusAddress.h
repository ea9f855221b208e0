#pragma once

#include <optional>
#include <string>

namespace korvex::platform::bus {

/// The user's own bus, or the machine's.
enum class WhichBus { session, system };

/// Where the bus is announced to be; absent where it is not. A bus is never started.
std::optional<std::string> busAddress(WhichBus which);

} // namespace korvex::platform::bus
