#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace korvex::app {

/// Key codes lie below this.
inline constexpr std::uint32_t kKeyCodeCount = 128;

/// What X and Wayland call the key at that place of the keyboard, as in the description of the
/// keyboard that the system loads ("AC01", "SPCE"); absent for a code that no key here has.
std::optional<std::string_view> xkbKeyName(std::uint32_t keyCode);
/// And back.
std::optional<std::uint32_t> keyCodeOfXkbKey(std::string_view name);

/// The words for a key that shows the same whatever the layout ("↩", "F5"); absent for others.
std::optional<std::string_view> fixedKeyText(std::uint32_t keyCode);

} // namespace korvex::app
