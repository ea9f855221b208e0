#pragma once

#include "base/Bytes.h"

#include <optional>

namespace korvex::store {

/// A bytes field that stays in the store until it is asked for. What is known in memory is one of:
/// not read yet, absent, or the bytes.
struct ExternalBytes {
    bool isRead = true;
    std::optional<base::Bytes> bytes;
};

} // namespace korvex::store
