#pragma once

#include <cstdlib>

namespace korvex::cli {

/// Set, and not to nothing.
inline bool isVariableSet(const char* name) {
    const auto* value = std::getenv(name);
    return value && *value != '\0';
}

} // namespace korvex::cli
