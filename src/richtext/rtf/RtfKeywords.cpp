#include "richtext/rtf/RtfKeywords.h"

#include "richtext/text/ParagraphStyle.h"

#include <array>

namespace korvex::richtext::rtf {

namespace {

template <typename Value>
constexpr Keyword with(std::string_view name, Action action, Value value) {
    return {name, action, static_cast<std::int32_t>(value)};
}

constexpr Keyword group(std::string_view name, Destination destination) {
    return with(name, Action::destination, destination);
}

constexpr Keyword character(std::string_view name, char16_t unit) {
    return with(name, Action::character, unit);
}

constexpr auto kKeywords = std::to_array<Keyword>({
    group("field", Destination::field),
    group("fldinst", Destination::fieldInstruction),
    group("fldrslt", Destination::body),
    group("fonttbl", Destination::fontTable),
    group("colortbl", Destination::colorTable),
    group("expandedcolortbl", Destination::extendedColorTable),
    group("listtable", Destination::listTable),
    group("list", Destination::list),
    group("listlevel", Destination::listLevel),
    group("leveltext", Destination::levelText),
    group("levelnumbers", Destination::levelNumbers),
    group("levelmarker", Destination::levelMarker),
    group("listoverridetable", Destination::overrideTable),
    group("listoverride", Destination::listOverride),
    group("lfolevel", Destination::overrideLevel),
    group("pn", Destination::numbering),
    group("pntxtb", Destination::textBeforeNumber),
    group("pntxta", Destination::textAfterNumber),
    group("upr", Destination::alternatives),
    group("ud", Destination::unicodeAlternative),
    group("NeXTGraphic", Destination::graphic),
    group("nesttableprops", Destination::body),
    group("stylesheet", Destination::skipped),
    group("info", Destination::skipped),
    group("footnote", Destination::note),
    group("shp", Destination::shape),
    group("shpinst", Destination::shape),
    group("shpgrp", Destination::shape),
    group("do", Destination::shape),
    group("shptxt", Destination::textBox),
    group("dptxbxtext", Destination::textBox),
    group("shprslt", Destination::shapeResult),
    group("object", Destination::object),
    group("result", Destination::objectResult),
    group("sp", Destination::skipped),
    group("pict", Destination::skipped),
    group("nonshppict", Destination::skipped),
    group("header", Destination::skipped),
    group("headerl", Destination::skipped),
    group("headerr", Destination::skipped),
    group("headerf", Destination::skipped),
    group("footer", Destination::skipped),
    group("footerl", Destination::skipped),
    group("footerr", Destination::skipped),
    group("footerf", Destination::skipped),
    group("annotation", Destination::skipped),
    group("atnid", Destination::skipped),
    group("atnauthor", Destination::skipped),
    group("listtext", Destination::skipped),
    group("pntext", Destination::skipped),
    group("nonesttables", Destination::skipped),
    group("listname", Destination::skipped),
    group("revtbl", Destination::skipped),
    group("filetbl", Destination::skipped),
    group("private", Destination::skipped),
    group("private1", Destination::skipped),
    group("template", Destination::skipped),
    group("xe", Destination::skipped),
    group("tc", Destination::skipped),
    group("tcn", Destination::skipped),
    group("rxe", Destination::skipped),
    group("txe", Destination::skipped),
    group("ftnsep", Destination::skipped),
    group("ftnsepc", Destination::skipped),
    group("ftncn", Destination::skipped),
    group("aftnsep", Destination::skipped),
    group("aftnsepc", Destination::skipped),
    group("aftncn", Destination::skipped),

    // A style of characters can be marked as optional, but the text in it is not.
    {"cs", Action::ignored},

    {"ansicpg", Action::codePage},
    with("ansi", Action::codePageFixed, 1252),
    with("mac", Action::codePageFixed, 10000),
    with("pc", Action::codePageFixed, 437),
    with("pca", Action::codePageFixed, 850),
    {"cocoartf", Action::nativeDialect},
    {"deff", Action::defaultFont},
    {"uc", Action::fallbackUnits},
    {"u", Action::unicode},
    {"bin", Action::binary},

    character("tab", u'\t'),
    character("line", u'\u2028'),
    character("lbr", u'\u2028'),
    character("softline", u'\u2028'),
    character("bullet", u'\u2022'),
    character("emdash", u'\u2014'),
    character("endash", u'\u2013'),
    character("emspace", u'\u2003'),
    character("enspace", u'\u2002'),
    character("qmspace", u'\u2005'),
    character("lquote", u'\u2018'),
    character("rquote", u'\u2019'),
    character("ldblquote", u'\u201C'),
    character("rdblquote", u'\u201D'),
    character("zwj", u'\u200D'),
    character("zwnj", u'\u200C'),
    character("zwbo", u'\u200B'),
    character("zwnbo", u'\u2060'),
    character("ltrmark", u'\u200E'),
    character("rtlmark", u'\u200F'),
    {"par", Action::paragraphEnd},
    {"sect", Action::section},
    {"page", Action::lineBreak},
    {"column", Action::lineBreak},
    {"chftn", Action::noteMark},
    {"korvexnofeed", Action::withoutFeed},
    {"outlinelevel", Action::outlineLevel},

    {"plain", Action::plain},
    {"f", Action::font},
    {"b", Action::bold},
    {"i", Action::italic},
    {"v", Action::hidden},
    {"deleted", Action::hidden},
    with("ul", Action::underline, LineStyle::single),
    with("ulw", Action::underline, LineStyle::single),
    with("ulwave", Action::underline, LineStyle::single),
    with("ulhwave", Action::underline, LineStyle::thick),
    with("ululdbwave", Action::underline, LineStyle::doubled),
    with("ulth", Action::underline, LineStyle::thick),
    with("uldb", Action::underline, LineStyle::doubled),
    with("uld", Action::underline, LineStyle::dotted),
    with("ulthd", Action::underline, LineStyle::dotted),
    with("uldash", Action::underline, LineStyle::dashed),
    with("ulldash", Action::underline, LineStyle::dashed),
    with("ulthdash", Action::underline, LineStyle::dashed),
    with("ulthldash", Action::underline, LineStyle::dashed),
    with("uldashd", Action::underline, LineStyle::dashDotted),
    with("ulthdashd", Action::underline, LineStyle::dashDotted),
    with("uldashdd", Action::underline, LineStyle::dashDotDotted),
    with("ulthdashdd", Action::underline, LineStyle::dashDotDotted),
    with("ulnone", Action::underline, LineStyle::none),
    with("strike", Action::strikethrough, LineStyle::single),
    with("striked", Action::strikethrough, LineStyle::doubled),
    {"korvexstrike", Action::strikethroughStyle},
    {"fs", Action::fontSize},
    {"fsmilli", Action::fontMilliSize},
    {"cf", Action::foreground},
    {"cb", Action::background},
    {"highlight", Action::background},
    {"chcbpat", Action::background},

    {"pard", Action::paragraphDefault},
    with("qnatural", Action::alignment, TextAlignment::natural),
    with("ql", Action::alignment, TextAlignment::left),
    with("qc", Action::alignment, TextAlignment::center),
    with("qr", Action::alignment, TextAlignment::right),
    with("qj", Action::alignment, TextAlignment::justified),
    with("qd", Action::alignment, TextAlignment::justified),
    with("pardirnatural", Action::direction, WritingDirection::natural),
    with("ltrpar", Action::direction, WritingDirection::leftToRight),
    with("rtlpar", Action::direction, WritingDirection::rightToLeft),
    {"li", Action::leftIndent},
    {"lin", Action::leftIndent},
    {"fi", Action::firstLineIndent},
    {"ri", Action::rightIndent},
    {"rin", Action::rightIndent},
    {"sb", Action::spacingBefore},
    {"sa", Action::spacingAfter},
    {"slleading", Action::lineSpacing},
    {"sl", Action::lineHeight},
    {"slmult", Action::lineHeightIsMultiple},
    {"slminimum", Action::minimumLineHeight},
    {"slmaximum", Action::maximumLineHeight},
    {"tx", Action::tabStop},
    {"ls", Action::list},
    {"ilvl", Action::listLevel},
    {"intbl", Action::inTable},
    {"itap", Action::tableDepth},

    {"trowd", Action::rowDefault},
    {"cell", Action::cellEnd},
    {"nestcell", Action::nestedCellEnd},
    {"row", Action::rowEnd},
    {"nestrow", Action::nestedRowEnd},
    {"lastrow", Action::lastRow},
    {"trleft", Action::rowLeft},
    {"trgaph", Action::rowGap},
    with("trpaddt", Action::rowPadding, Side::top),
    with("trpaddl", Action::rowPadding, Side::left),
    with("trpaddb", Action::rowPadding, Side::bottom),
    with("trpaddr", Action::rowPadding, Side::right),
    {"cellx", Action::cellEdge},
    {"clwWidth", Action::cellWidth},
    {"clftsWidth", Action::cellWidthUnit},
    with("clpadt", Action::cellPadding, Side::top),
    with("clpadl", Action::cellPadding, Side::left),
    with("clpadb", Action::cellPadding, Side::bottom),
    with("clpadr", Action::cellPadding, Side::right),
    with("clbrdrt", Action::cellBorder, Side::top),
    with("clbrdrl", Action::cellBorder, Side::left),
    with("clbrdrb", Action::cellBorder, Side::bottom),
    with("clbrdrr", Action::cellBorder, Side::right),
    {"trbrdrt", Action::otherBorder},
    {"trbrdrl", Action::otherBorder},
    {"trbrdrb", Action::otherBorder},
    {"trbrdrr", Action::otherBorder},
    {"trbrdrh", Action::otherBorder},
    {"trbrdrv", Action::otherBorder},
    {"cldglu", Action::otherBorder},
    {"cldgll", Action::otherBorder},
    {"brdrt", Action::otherBorder},
    {"brdrl", Action::otherBorder},
    {"brdrb", Action::otherBorder},
    {"brdrr", Action::otherBorder},
    {"brdrbtw", Action::otherBorder},
    {"brdrbar", Action::otherBorder},
    {"box", Action::otherBorder},
    {"chbrdr", Action::otherBorder},
    with("brdrs", Action::borderLine, 1),
    with("brdrth", Action::borderLine, 1),
    with("brdrdb", Action::borderLine, 1),
    with("brdrdot", Action::borderLine, 1),
    with("brdrdash", Action::borderLine, 1),
    with("brdrdashsm", Action::borderLine, 1),
    with("brdrdashd", Action::borderLine, 1),
    with("brdrdashdd", Action::borderLine, 1),
    with("brdrhair", Action::borderLine, 1),
    with("brdrtriple", Action::borderLine, 1),
    with("brdrwavy", Action::borderLine, 1),
    with("brdrinset", Action::borderLine, 1),
    with("brdroutset", Action::borderLine, 1),
    with("brdrnil", Action::borderLine, 0),
    with("brdrnone", Action::borderLine, 0),
    with("brdrtbl", Action::borderLine, 0),
    {"brdrw", Action::borderWidth},
    {"brdrcf", Action::borderColor},
    {"clcbpat", Action::cellFill},
    with("clvertalt", Action::cellAlignment, VerticalAlignment::top),
    with("clvertalc", Action::cellAlignment, VerticalAlignment::middle),
    with("clvertalb", Action::cellAlignment, VerticalAlignment::bottom),
    {"clmgf", Action::mergeStart},
    {"clmrg", Action::merged},
    {"clvmgf", Action::verticalMergeStart},
    {"clvmrg", Action::verticallyMerged},
    {"korvexabsent", Action::absentCell},

    {"fmodern", Action::fixedPitchFamily},
    {"fprq", Action::pitch},
    {"fcharset", Action::fontCharset},
    {"cpg", Action::fontCodePage},

    {"red", Action::red},
    {"green", Action::green},
    {"blue", Action::blue},
    with("cssrgb", Action::standardColor, 3),
    with("csgray", Action::standardColor, 1),
    {"c", Action::component},
    {"cname", Action::colorName},

    {"listid", Action::listId},
    {"levelnfc", Action::levelKind},
    {"levelnfcn", Action::levelKind},
    {"levelstartat", Action::levelStart},
    {"leveltemplateid", Action::levelTemplate},
    {"listoverridestartat", Action::overridesStart},

    with("pnlvlblt", Action::numberKind, 23),
    with("pndec", Action::numberKind, 0),
    with("pnucrm", Action::numberKind, 1),
    with("pnlcrm", Action::numberKind, 2),
    with("pnucltr", Action::numberKind, 3),
    with("pnlcltr", Action::numberKind, 4),
    {"pnstart", Action::numberStart},
});

constexpr KeywordHash hashOf(std::string_view name) {
    KeywordHash hash;
    for (const auto letter : name) {
        hash.add(letter);
    }
    return hash;
}

/// Open addressing, a quarter full.
constexpr std::size_t kSlots = 1024;
constexpr std::uint16_t kEmpty = 0xFFFF;
static_assert(kKeywords.size() * 4 <= kSlots);

constexpr auto kIndex = [] {
    std::array<std::uint16_t, kSlots> slots{};
    slots.fill(kEmpty);
    for (std::size_t index = 0; index < kKeywords.size(); ++index) {
        auto slot = hashOf(kKeywords[index].name).value % kSlots;
        while (slots[slot] != kEmpty) {
            slot = (slot + 1) % kSlots;
        }
        slots[slot] = static_cast<std::uint16_t>(index);
    }
    return slots;
}();

constexpr Keyword kUnknown{};

} // namespace

const Keyword& keyword(std::string_view name, KeywordHash hash) {
    for (auto slot = hash.value % kSlots; kIndex[slot] != kEmpty; slot = (slot + 1) % kSlots) {
        const auto& known = kKeywords[kIndex[slot]];
        if (known.name == name) {
            return known;
        }
    }
    return kUnknown;
}

} // namespace korvex::richtext::rtf
