#include "richtext/text/ListMarker.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace korvex::richtext {

namespace {

using namespace std::string_view_literals;

constexpr std::array kNames{
    std::pair{MarkerFormat::none, u"{none}"sv},
    std::pair{MarkerFormat::disc, u"{disc}"sv},
    std::pair{MarkerFormat::circle, u"{circle}"sv},
    std::pair{MarkerFormat::square, u"{square}"sv},
    std::pair{MarkerFormat::hyphen, u"{hyphen}"sv},
    std::pair{MarkerFormat::check, u"{check}"sv},
    std::pair{MarkerFormat::decimal, u"{decimal}"sv},
    std::pair{MarkerFormat::lowerAlpha, u"{lower-alpha}"sv},
    std::pair{MarkerFormat::upperAlpha, u"{upper-alpha}"sv},
    std::pair{MarkerFormat::lowerRoman, u"{lower-roman}"sv},
    std::pair{MarkerFormat::upperRoman, u"{upper-roman}"sv},
};

constexpr std::int64_t kLargestRoman = 3999;

std::u16string digits(std::int64_t number) {
    const auto narrow = std::to_string(number);
    return {narrow.begin(), narrow.end()};
}

/// a, b, … z, aa, ab, …
std::u16string letters(std::int64_t number, char16_t first) {
    constexpr std::int64_t kLetters = 26;
    std::u16string text;
    for (; number > 0; number = (number - 1) / kLetters) {
        text.push_back(static_cast<char16_t>(first + (number - 1) % kLetters));
    }
    std::reverse(text.begin(), text.end());
    return text;
}

std::u16string romanNumeral(std::int64_t number) {
    constexpr std::array kSteps{
        std::pair{1000, u"m"sv}, std::pair{900, u"cm"sv}, std::pair{500, u"d"sv},
        std::pair{400, u"cd"sv}, std::pair{100, u"c"sv},  std::pair{90, u"xc"sv},
        std::pair{50, u"l"sv},   std::pair{40, u"xl"sv},  std::pair{10, u"x"sv},
        std::pair{9, u"ix"sv},   std::pair{5, u"v"sv},    std::pair{4, u"iv"sv},
        std::pair{1, u"i"sv},
    };
    std::u16string text;
    for (const auto& [value, numeral] : kSteps) {
        for (; number >= value; number -= value) {
            text += numeral;
        }
    }
    return text;
}

} // namespace

MarkerParts partsOf(std::u16string_view marker) {
    const auto open = marker.find(u'{');
    const auto close = open == marker.npos ? open : marker.find(u'}', open);
    if (close == marker.npos) {
        return {.before = marker};
    }
    const auto name = marker.substr(open, close + 1 - open);
    const auto* const known = std::find_if(kNames.begin(), kNames.end(),
                                           [&](const auto& entry) { return entry.second == name; });
    // Other systems know more bullets than these.
    const auto format = known == kNames.end() ? MarkerFormat::disc : known->first;
    return {marker.substr(0, open), format, marker.substr(close + 1)};
}

std::u16string_view bracedName(MarkerFormat format) {
    return kNames[static_cast<std::size_t>(format)].second;
}

std::u16string symbolOf(MarkerFormat format, std::int64_t number) {
    switch (format) {
    case MarkerFormat::none:
        return {};
    case MarkerFormat::disc:
        return u"\u2022";
    case MarkerFormat::circle:
        return u"\u25E6";
    case MarkerFormat::square:
        return u"\u25AA";
    case MarkerFormat::hyphen:
        return u"\u2043";
    case MarkerFormat::check:
        return u"\u2713";
    case MarkerFormat::decimal:
        return digits(number);
    case MarkerFormat::lowerAlpha:
        return number < 1 ? digits(number) : letters(number, u'a');
    case MarkerFormat::upperAlpha:
        return number < 1 ? digits(number) : letters(number, u'A');
    case MarkerFormat::lowerRoman:
    case MarkerFormat::upperRoman: {
        if (number < 1 || number > kLargestRoman) {
            return digits(number);
        }
        auto text = romanNumeral(number);
        if (format == MarkerFormat::upperRoman) {
            for (auto& unit : text) {
                unit = static_cast<char16_t>(unit - u'a' + u'A');
            }
        }
        return text;
    }
    }
    return {};
}

std::u16string markerText(const TextList& list, std::int64_t number) {
    const auto parts = partsOf(list.marker);
    std::u16string text(parts.before);
    text += symbolOf(parts.format, number);
    text += parts.after;
    return text;
}

} // namespace korvex::richtext
