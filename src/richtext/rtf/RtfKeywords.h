#pragma once

#include "richtext/rtf/RtfActions.h"
#include "richtext/rtf/RtfDestinations.h"

#include <cstdint>
#include <string_view>

namespace korvex::richtext::rtf {

struct Keyword {
    std::string_view name;
    Action action = Action::ignored;
    std::int32_t value = 0;
};

/// The hash of a control word is made while its letters are read.
struct KeywordHash {
    std::uint32_t value = 2'166'136'261U;

    constexpr void add(char letter) {
        value = (value ^ static_cast<std::uint8_t>(letter)) * 16'777'619U;
    }
};

/// Unknown words are `Action::ignored` without a name.
const Keyword& keyword(std::string_view name, KeywordHash hash);

} // namespace korvex::richtext::rtf
