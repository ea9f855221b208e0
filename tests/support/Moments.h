#pragma once

#include "base/Calendar.h"
#include "support/ScopedEnvironment.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace korvex::tests {

/// The zone of this name, as a machine that is set to it has it.
inline base::TimeZone zone(std::string_view name) {
    const ScopedEnvironment variable("TZ", std::string(name));
    auto found = base::TimeZone::system();
    if (found.name() != name) {
        throw std::invalid_argument("no time zone " + std::string(name));
    }
    return found;
}

/// "2025-03-10T09:00" on the clocks of the zone, or with "Z" or an offset.
inline base::Instant moment(std::string_view text, std::string_view zoneName = "UTC") {
    const auto found = base::instantFromIsoText(text, base::Calendar(zone(zoneName)));
    if (!found) {
        throw std::invalid_argument("no moment " + std::string(text));
    }
    return *found;
}

} // namespace korvex::tests
