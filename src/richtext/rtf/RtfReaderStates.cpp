#include "richtext/rtf/RtfReaderStates.h"

#include "richtext/rtf/RtfDialect.h"
#include "richtext/text/ListIndents.h"

#include <algorithm>

namespace korvex::richtext::rtf {

namespace {

Twips limited(std::int32_t length) {
    return std::clamp(length, -kMaximumLength, kMaximumLength);
}

std::uint32_t index(std::int32_t number) {
    return static_cast<std::uint32_t>(std::max(number, 0));
}

} // namespace

void CharacterState::word(const Keyword& keyword, Parameter parameter) {
    constexpr MilliPoints kHalfPoint = 500;
    switch (keyword.action) {
    case Action::font:
        font = parameter.value;
        break;
    case Action::bold:
        isBold = parameter.isOn();
        break;
    case Action::italic:
        isItalic = parameter.isOn();
        break;
    case Action::hidden:
        isHidden = parameter.isOn();
        break;
    case Action::underline:
        underline = parameter.isOn() ? static_cast<LineStyle>(keyword.value) : LineStyle::none;
        break;
    case Action::strikethrough:
        strikethrough = parameter.isOn() ? static_cast<LineStyle>(keyword.value) : LineStyle::none;
        break;
    case Action::strikethroughStyle:
        if (parameter.value > 0 &&
            parameter.value <= static_cast<std::int32_t>(LineStyle::dashDotDotted)) {
            strikethrough = static_cast<LineStyle>(parameter.value);
        }
        break;
    case Action::fontSize:
        if (parameter.value > 0) {
            size = std::min(parameter.value, kMaximumFontSize / kHalfPoint) * kHalfPoint;
        }
        break;
    case Action::fontMilliSize:
        if (parameter.value > 0) {
            size = std::min(parameter.value, kMaximumFontSize);
        }
        break;
    case Action::foreground:
        foreground = index(parameter.value);
        break;
    case Action::background:
        background = index(parameter.value);
        break;
    default:
        break;
    }
}

void ParagraphState::word(const Keyword& keyword, Parameter parameter) {
    const auto length = limited(parameter.value);
    switch (keyword.action) {
    case Action::alignment:
        alignment = static_cast<TextAlignment>(keyword.value);
        break;
    case Action::direction:
        direction = static_cast<WritingDirection>(keyword.value);
        break;
    case Action::leftIndent:
        leftIndent = length;
        break;
    case Action::firstLineIndent:
        firstLineIndent = length;
        break;
    case Action::rightIndent:
        rightIndent = length;
        break;
    case Action::spacingBefore:
        spacingBefore = length;
        break;
    case Action::spacingAfter:
        spacingAfter = length;
        break;
    case Action::lineSpacing:
        lineSpacing = length;
        break;
    case Action::lineHeight:
        lineHeight = length;
        break;
    case Action::lineHeightIsMultiple:
        isLineHeightMultiple = parameter.value != 0;
        break;
    case Action::minimumLineHeight:
        minimumLineHeight = length;
        break;
    case Action::maximumLineHeight:
        maximumLineHeight = length;
        break;
    case Action::tabStop:
        addTabStop(length);
        break;
    case Action::list:
        list = std::max(parameter.value, 0);
        break;
    case Action::listLevel:
        listLevel =
            std::clamp(parameter.value, 0, static_cast<std::int32_t>(kMaximumListDepth) - 1);
        break;
    case Action::inTable:
        isInTable = parameter.isOn();
        break;
    case Action::tableDepth:
        tableDepth = static_cast<std::size_t>(
            std::clamp(parameter.value, 0, static_cast<std::int32_t>(kMaximumTableDepth)));
        break;
    default:
        break;
    }
}

void ParagraphState::addTabStop(Twips stop) {
    if (tabStops.empty() || stop > tabStops.back()) {
        if (tabStops.size() < kMaximumTabStops) {
            tabStops.push_back(stop);
        }
        return;
    }
    const auto place = std::lower_bound(tabStops.begin(), tabStops.end(), stop);
    if (*place != stop && tabStops.size() < kMaximumTabStops) {
        tabStops.insert(place, stop);
    }
}

} // namespace korvex::richtext::rtf
