#include "richtext/text/ListMarker.h"
#include "ui/text/TextFormats.h"

#include <algorithm>
#include <array>
#include <memory>

namespace korvex::ui {

namespace {

using richtext::MarkerFormat;
using richtext::TextListRef;

struct KnownMarker {
    MarkerFormat format;
    QTextListFormat::Style style;
};
/// What Qt has, too.
constexpr std::array kMarkers{
    KnownMarker{MarkerFormat::disc, QTextListFormat::ListDisc},
    KnownMarker{MarkerFormat::circle, QTextListFormat::ListCircle},
    KnownMarker{MarkerFormat::square, QTextListFormat::ListSquare},
    KnownMarker{MarkerFormat::decimal, QTextListFormat::ListDecimal},
    KnownMarker{MarkerFormat::lowerAlpha, QTextListFormat::ListLowerAlpha},
    KnownMarker{MarkerFormat::upperAlpha, QTextListFormat::ListUpperAlpha},
    KnownMarker{MarkerFormat::lowerRoman, QTextListFormat::ListLowerRoman},
    KnownMarker{MarkerFormat::upperRoman, QTextListFormat::ListUpperRoman},
};

} // namespace

QTextListFormat listFormatOf(const std::vector<TextListRef>& lists) {
    QTextListFormat format;
    format.setIndent(static_cast<int>(lists.size()));
    format.setProperty(kListsProperty, QVariant::fromValue(lists));
    format.setStyle(QTextListFormat::ListStyleUndefined);
    return format;
}

std::vector<TextListRef> listsOf(const QTextList& list) {
    const auto format = list.format();
    auto lists = format.property(kListsProperty).value<std::vector<TextListRef>>();
    if (lists.empty()) {
        lists.push_back(
            std::make_shared<richtext::TextList>(richtext::TextList{.marker = markerOf(format)}));
    }
    return lists;
}

std::u16string markerOf(const QTextListFormat& format) {
    const auto* const drawn =
        std::find_if(kMarkers.begin(), kMarkers.end(),
                     [&](const KnownMarker& each) { return each.style == format.style(); });
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
