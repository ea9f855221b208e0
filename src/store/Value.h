#pragma once

#include "base/Bytes.h"
#include "base/Uuid.h"

#include <cstdint>
#include <string>
#include <variant>

namespace korvex::store {

/// The value of one field, detached from its record: absent, integer (booleans too), date or other
/// real number, text, bytes, identifier.
using Value =
    std::variant<std::monostate, std::int64_t, double, std::string, base::Bytes, base::Uuid>;

inline bool isAbsent(const Value& value) {
    return std::holds_alternative<std::monostate>(value);
}

} // namespace korvex::store
