#include "richtext/text/ListMarker.h"
#include "ui/kit/words/Text.h"
#include "ui/text/TextFormats.h"

#include <algorithm>
#include <array>

namespace korvex::ui {

namespace {

using richtext::MarkerFormat;
using richtext::TextListRef;

struct DrawnMarker {
    MarkerFormat format;
    QTextListFormat::Style style;
};
/// What Qt has, too.
constexpr std::array kMarkers{
    DrawnMarker{MarkerFormat::disc, QTextListFormat::ListDisc},
    DrawnMarker{MarkerFormat::circle, QTextListFormat::ListCircle},
    DrawnMarker{MarkerFormat::square, QTextListFormat::ListSquare},
    DrawnMarker{MarkerFormat::decimal, QTextListFormat::ListDecimal},
    DrawnMarker{MarkerFormat::lowerAlpha, QTextListFormat::ListLowerAlpha},
    DrawnMarker{MarkerFormat::upperAlpha, QTextListFormat::ListUpperAlpha},
    DrawnMarker{MarkerFormat::lowerRoman, QTextListFormat::ListLowerRoman},
    DrawnMarker{MarkerFormat::upperRoman, QTextListFormat::ListUpperRoman},
};

} // namespace

QTextListFormat listFormatOf(const std::vector<TextListRef>& lists) {
    const auto marker = richtext::partsOf(lists.back()->marker);
    const auto* const drawn =
        std::find_if(kMarkers.begin(), kMarkers.end(),
                     [&](const DrawnMarker& each) { return each.format == marker.format; });
    QTextListFormat format;
    format.setIndent(static_cast<int>(lists.size()));
    format.setProperty(kListsProperty, QVariant::fromValue(lists));
    const auto isBare = marker.before.empty() && marker.after.empty();
    if (drawn != kMarkers.end() && isBare && !richtext::isCounting(marker.format)) {
        format.setStyle(drawn->style);
    } else {
        format.setStyle(QTextListFormat::ListStyleUndefined);
        format.setProperty(kOwnMarkerProperty, true);
    }
    return format;
}

QString markerTextOf(const QTextList& list, int item) {
    const auto lists = list.format().property(kListsProperty).value<std::vector<TextListRef>>();
    const auto value =
        lists.empty() ? richtext::TextList{.marker = markerOf(list.format())} : *lists.back();
    return toQString(richtext::markerText(value, std::int64_t{value.start} + item));
}

std::u16string markerOf(const QTextListFormat& format) {
    const auto* const drawn =
        std::find_if(kMarkers.begin(), kMarkers.end(),
                     [&](const DrawnMarker& each) { return each.style == format.style(); });
    const auto known = drawn == kMarkers.end() ? MarkerFormat::disc : drawn->format;
    std::u16string name(richtext::bracedName(known));
    if (!richtext::isCounting(known)) {
        return name;
    }
    // Qt writes a period where nothing is said.
    const auto before = format.numberPrefix().toStdU16String();
    const auto after = format.hasProperty(QTextFormat::ListNumberSuffix)
                           ? format.numberSuffix().toStdU16String()
                           : std::u16string(u".");
    constexpr std::size_t kMaximumAffix = 16;
    return before.substr(0, kMaximumAffix) + name + after.substr(0, kMaximumAffix);
}

} // namespace korvex::ui
