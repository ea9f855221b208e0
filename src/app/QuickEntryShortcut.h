#pragma once

#include "app/KeyboardLayout.h"
#include "base/Bytes.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

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

    /// What was pressed: a key, and the modifiers held with it, by whatever names the window system
    /// has for them. Others that are held do not count.
    struct KeyEvent {
        std::uint32_t keyCode = 0;
        bool command = false;
        bool shift = false;
        bool option = false;
        bool control = false;
    };
    static QuickEntryShortcut of(const KeyEvent& event);

    /// A key that is no modifier itself, with Command, Option or Control: Shift alone types.
    bool isValid() const;
    /// Whether the windows use it for something else, such as Command + N for a new entry.
    bool conflictsWithAppCommand() const;

    /// "⌃⌥⇧⌘K"; in this order, whichever it has.
    std::string displayString(const KeyboardLayout& layout) const;
    /// "K", "F5", "↩"; "Key 108" for a key that types nothing.
    std::string keyDisplayString(const KeyboardLayout& layout) const;

    /// What to offer where the usual one is taken, the best first, more than are offered at once.
    /// Few window managers have these.
    static std::span<const QuickEntryShortcut> alternatives();

    /// JSON with the keys "keyCode" and "modifiers".
    base::Bytes json() const;
    /// Absent for what `json` does not write; keys of a later version are passed over.
    static std::optional<QuickEntryShortcut> ofJson(std::span<const std::uint8_t> bytes);
};

} // namespace korvex::app
