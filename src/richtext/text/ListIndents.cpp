#include "richtext/text/ListIndents.h"

namespace korvex::richtext {

namespace {

constexpr Twips kDepth = 36 * kTwipsPerPoint;
/// How far the first line hangs out: as the document's table of lists says, or office suites would
/// mix its indents with these.
constexpr Twips kHanging = 18 * kTwipsPerPoint;
/// Where the marker stands, from the text.
constexpr Twips kMarker = 11 * kTwipsPerPoint;

} // namespace

void setListIndents(ParagraphStyle& style) {
    const auto depth = static_cast<Twips>(style.lists.size());
    style.leftIndent = depth * kDepth;
    style.firstLineIndent = 0;
    style.tabStops.clear();
    if (depth > 0) {
        style.firstLineIndent = -kHanging;
        style.tabStops = {style.leftIndent - kMarker, style.leftIndent};
    }
}

} // namespace korvex::richtext
