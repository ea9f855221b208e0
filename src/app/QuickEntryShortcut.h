#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <optional>
#include <span>

namespace korvex::app {

/// The key combination that opens Quick Entry from anywhere. A plain value that can hold anything;
/// `isValid` says whether it may be registered.
struct QuickEntryShortcut {
    static constexpr std::uint32_t kCommand = 256;
    static constexpr std::uint32_t kShift = 512;
    static constexpr std::uint32_t kOption = 2048;
    static constexpr std::uint32_t kControl = 4096;

    /// The number of a key, whatever is printed on it; 49 is Space.
    std::uint32_t keyCode = 49;
    /// A sum of the four above.
    std::uint32_t modifiers = kOption;

    bool operator==(const QuickEntryShortcut&) const = default;

    /// A key that is no modifier itself, with Command, Option or Control: Shift alone types.
    bool isValid() const;

    /// JSON with the keys "keyCode" and "modifiers".
    base::Bytes json() const;
    /// Absent for what `json` does not write; keys of a later version are passed over.
    static std::optional<QuickEntryShortcut> ofJson(std::span<const std::uint8_t> bytes);
};

} // namespace korvex::app
