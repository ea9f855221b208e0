#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace korvex::base {

/// What the variable is set to; absent also where it is set to nothing.
inline std::optional<std::string> environmentVariable(const char* name) {
    const auto* const value = std::getenv(name);
    return value && *value != '\0' ? std::optional<std::string>(value) : std::nullopt;
}

} // namespace korvex::base
