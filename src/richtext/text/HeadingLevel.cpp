#include "richtext/text/HeadingLevel.h"

namespace korvex::richtext {

namespace {

constexpr MilliPoints kLevel1Size = 20'000;
constexpr MilliPoints kOlderLevel1Size = 22'000;
constexpr MilliPoints kLevel2Size = 17'000;
constexpr MilliPoints kLevel3Size = 15'000;

} // namespace

std::string titleOf(HeadingLevel level) {
    switch (level) {
    case HeadingLevel::level1:
        return "Heading 1";
    case HeadingLevel::level2:
        return "Heading 2";
    case HeadingLevel::level3:
        return "Heading 3";
    }
    return {};
}

Font fontOf(HeadingLevel level) {
    Font font{.isBold = true};
    switch (level) {
    case HeadingLevel::level1:
        font.size = kLevel1Size;
        break;
    case HeadingLevel::level2:
        font.size = kLevel2Size;
        break;
    case HeadingLevel::level3:
        font.size = kLevel3Size;
        break;
    }
    return font;
}

Twips spacingBeforeOf(HeadingLevel level) {
    switch (level) {
    case HeadingLevel::level1:
        return 12 * kTwipsPerPoint;
    case HeadingLevel::level2:
        return 8 * kTwipsPerPoint;
    case HeadingLevel::level3:
        return 4 * kTwipsPerPoint;
    }
    return 0;
}

std::optional<HeadingLevel> headingLevel(const Font& font) {
    if (!font.isBold) {
        return std::nullopt;
    }
    switch (font.size) {
    case kOlderLevel1Size:
    case kLevel1Size:
        return HeadingLevel::level1;
    case kLevel2Size:
        return HeadingLevel::level2;
    case kLevel3Size:
        return HeadingLevel::level3;
    default:
        return std::nullopt;
    }
}

} // namespace korvex::richtext
