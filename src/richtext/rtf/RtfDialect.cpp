#include "richtext/rtf/RtfDialect.h"

#include <algorithm>
#include <array>

namespace korvex::richtext::rtf {

namespace {

struct NamedColor {
    SystemColor name;
    std::string_view catalogName;
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};

constexpr Color rgb(const NamedColor& color) {
    return {.red = color.red, .green = color.green, .blue = color.blue};
}

/// The first entry of a colour is the one that is written.
constexpr std::array kNamedColors{
    NamedColor{SystemColor::label, "labelColor", 0x1B, 0x1C, 0x1D},
    NamedColor{SystemColor::secondaryLabel, "secondaryLabelColor", 0x7F, 0x7F, 0x7F},
    NamedColor{SystemColor::quaternaryLabel, "quaternaryLabelColor", 0xE6, 0xE6, 0xE6},
    NamedColor{SystemColor::separator, "separatorColor", 0xD9, 0xD9, 0xD9},
    NamedColor{SystemColor::headerFill, "quaternarySystemFillColor", 0xF2, 0xF2, 0xF2},
    NamedColor{SystemColor::purple, "systemPurpleColor", 0xAF, 0x52, 0xDE},
    NamedColor{SystemColor::green, "systemGreenColor", 0x28, 0xA7, 0x45},
    NamedColor{SystemColor::orange, "systemOrangeColor", 0xE0, 0x7B, 0x00},
    NamedColor{SystemColor::blue, "systemBlueColor", 0x00, 0x7A, 0xFF},
    NamedColor{SystemColor::pink, "systemPinkColor", 0xE0, 0x2D, 0x55},
    NamedColor{SystemColor::red, "systemRedColor", 0xE0, 0x3B, 0x30},
    NamedColor{SystemColor::label, "textColor", 0, 0, 0},
    NamedColor{SystemColor::label, "controlTextColor", 0, 0, 0},
    NamedColor{SystemColor::separator, "gridColor", 0, 0, 0},
    NamedColor{SystemColor::headerFill, "controlBackgroundColor", 0, 0, 0},
    NamedColor{SystemColor::headerFill, "unemphasizedSelectedContentBackgroundColor", 0, 0, 0},
};

} // namespace

std::string_view catalogName(SystemColor name) {
    const auto* const found = std::find_if(kNamedColors.begin(), kNamedColors.end(),
                                           [&](const auto& color) { return color.name == name; });
    return found == kNamedColors.end() ? std::string_view() : found->catalogName;
}

SystemColor systemColor(std::string_view catalogName) {
    const auto* const found =
        std::find_if(kNamedColors.begin(), kNamedColors.end(),
                     [&](const auto& color) { return color.catalogName == catalogName; });
    return found == kNamedColors.end() ? SystemColor::none : found->name;
}

Color concrete(SystemColor name) {
    const auto* const found = std::find_if(kNamedColors.begin(), kNamedColors.end(),
                                           [&](const auto& color) { return color.name == name; });
    return found == kNamedColors.end() ? Color() : rgb(*found);
}

} // namespace korvex::richtext::rtf
