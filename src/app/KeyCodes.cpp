#include "app/KeyCodes.h"

#include <algorithm>
#include <array>

namespace korvex::app {

namespace {

/// By key code. Keys that stand on one kind of keyboard only have the name of what stands in their
/// place on others: Help is Insert, Clear is Num Lock. Function never reaches the system.
constexpr std::array<std::string_view, kKeyCodeCount> kXkbNames = {
    "AC01", "AC02", "AC03", "AC04", "AC06", "AC05", "AB01", "AB02", // 0: A S D F H G Z X
    "AB03", "AB04", "LSGT", "AB05", "AD01", "AD02", "AD03", "AD04", // 8: C V § B Q W E R
    "AD06", "AD05", "AE01", "AE02", "AE03", "AE04", "AE06", "AE05", // 16: Y T 1 2 3 4 6 5
    "AE12", "AE09", "AE07", "AE11", "AE08", "AE10", "AD12", "AD09", // 24: = 9 7 - 8 0 ] O
    "AD07", "AD11", "AD08", "AD10", "RTRN", "AC09", "AC07", "AC11", // 32: U [ I P ↩ L J '
    "AC08", "AC10", "BKSL", "AB08", "AB10", "AB06", "AB07", "AB09", // 40: K ; \ , / N M .
    "TAB",  "SPCE", "TLDE", "BKSP", "",     "ESC",  "RWIN", "LWIN", // 48
    "LFSH", "CAPS", "LALT", "LCTL", "RTSH", "RALT", "RCTL", "",     // 56
    "FK17", "KPDL", "",     "KPMU", "",     "KPAD", "",     "NMLK", // 64
    "VOL+", "VOL-", "MUTE", "KPDV", "KPEN", "",     "KPSU", "FK18", // 72
    "FK19", "KPEQ", "KP0",  "KP1",  "KP2",  "KP3",  "KP4",  "KP5",  // 80
    "KP6",  "KP7",  "FK20", "KP8",  "KP9",  "AE13", "AB11", "I129", // 88
    "FK05", "FK06", "FK07", "FK03", "FK08", "FK09", "MUHE", "FK11", // 96
    "HENK", "FK13", "FK16", "FK14", "",     "FK10", "COMP", "FK12", // 104
    "",     "FK15", "INS",  "HOME", "PGUP", "DELE", "FK04", "END",  // 112
    "FK02", "PGDN", "FK01", "LEFT", "RGHT", "DOWN", "UP",   "POWR", // 120
};

struct Text {
    std::uint32_t keyCode;
    std::string_view text;
};

constexpr Text kFixedTexts[] = {
    {36, "↩"},    {48, "⇥"},    {49, "Space"}, {51, "⌫"},    {53, "⎋"},    {71, "⌧"},
    {76, "⌤"},    {117, "⌦"},   {123, "←"},    {124, "→"},   {125, "↓"},   {126, "↑"},
    {122, "F1"},  {120, "F2"},  {99, "F3"},    {118, "F4"},  {96, "F5"},   {97, "F6"},
    {98, "F7"},   {100, "F8"},  {101, "F9"},   {109, "F10"}, {103, "F11"}, {111, "F12"},
    {105, "F13"}, {107, "F14"}, {113, "F15"},  {106, "F16"}, {64, "F17"},  {79, "F18"},
    {80, "F19"},  {90, "F20"},
};

} // namespace

std::optional<std::string_view> xkbKeyName(std::uint32_t keyCode) {
    return keyCode < kXkbNames.size() && !kXkbNames[keyCode].empty()
               ? std::optional(kXkbNames[keyCode])
               : std::nullopt;
}

std::optional<std::uint32_t> keyCodeOfXkbKey(std::string_view name) {
    const auto* const found = std::find(kXkbNames.begin(), kXkbNames.end(), name);
    return name.empty() || found == kXkbNames.end()
               ? std::nullopt
               : std::optional(static_cast<std::uint32_t>(found - kXkbNames.begin()));
}

std::optional<std::string_view> fixedKeyText(std::uint32_t keyCode) {
    const auto* const found =
        std::find_if(std::begin(kFixedTexts), std::end(kFixedTexts),
                     [&](const Text& each) { return each.keyCode == keyCode; });
    return found == std::end(kFixedTexts) ? std::nullopt : std::optional(found->text);
}

} // namespace korvex::app
