#include "richtext/rtf/RtfWriterStyles.h"

#include "richtext/rtf/RtfDialect.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace korvex::richtext::rtf {

namespace {

std::string_view underlineWords(LineStyle style) {
    switch (style) {
    case LineStyle::none:
        return "\\ulnone";
    case LineStyle::single:
        return "\\ul\\ulc0";
    case LineStyle::thick:
        return "\\ulth\\ulc0";
    case LineStyle::doubled:
        return "\\uldb\\ulc0";
    case LineStyle::dotted:
        return "\\uld\\ulc0";
    case LineStyle::dashed:
        return "\\uldash\\ulc0";
    case LineStyle::dashDotted:
        return "\\uldashd\\ulc0";
    case LineStyle::dashDotDotted:
        return "\\uldashdd\\ulc0";
    }
    return {};
}

void writeStrikethrough(Output& output, LineStyle style) {
    switch (style) {
    case LineStyle::none:
        output.raw("\\strike0\\striked0");
        break;
    case LineStyle::single:
        output.raw("\\strike\\strikec0");
        break;
    case LineStyle::doubled:
        output.raw("\\striked1\\strikec0");
        break;
    case LineStyle::thick:
    case LineStyle::dotted:
    case LineStyle::dashed:
    case LineStyle::dashDotted:
    case LineStyle::dashDotDotted:
        // RTF has no word for these.
        output.word("\\strike\\korvexstrike", static_cast<std::int64_t>(style));
        output.raw("\\strikec0");
        break;
    }
}

Twips limited(Twips length) {
    return std::clamp(length, -kMaximumLength, kMaximumLength);
}

void writeTabStops(Output& output, const ParagraphStyle& style) {
    auto last = -kMaximumLength - 1;
    std::size_t count = 0;
    for (const auto stop : style.tabStops) {
        if (limited(stop) > last && count < kMaximumTabStops) {
            last = limited(stop);
            ++count;
            output.word("\\tx", last);
        }
    }
}

void writeLineHeight(Output& output, const ParagraphStyle& style) {
    const auto height = limited(style.lineHeight);
    if (style.lineHeightMultiple <= 0) {
        if (height != 0) {
            output.word("\\sl", height);
            output.raw("\\slmult0");
        }
        return;
    }
    output.word("\\sl", limited(style.lineHeightMultiple));
    output.raw("\\slmult1");
    if (height != 0) {
        output.word("\\slminimum", std::abs(height));
    }
    if (height < 0) {
        output.word("\\slmaximum", std::abs(height));
    }
}

std::string_view directionWord(WritingDirection direction) {
    switch (direction) {
    case WritingDirection::natural:
        return "\\pardirnatural";
    case WritingDirection::leftToRight:
        return "\\ltrpar";
    case WritingDirection::rightToLeft:
        return "\\rtlpar";
    }
    return {};
}

std::string_view alignmentWord(TextAlignment alignment) {
    switch (alignment) {
    case TextAlignment::natural:
        return {};
    case TextAlignment::left:
        return "\\ql";
    case TextAlignment::center:
        return "\\qc";
    case TextAlignment::right:
        return "\\qr";
    case TextAlignment::justified:
        return "\\qj";
    }
    return {};
}

} // namespace

void writeChange(Output& output, const std::optional<CharacterFormat>& from,
                 const CharacterFormat& to) {
    constexpr MilliPoints kHalfPoint = 500;
    const auto before = output.bytes().size();
    const auto differs = [&](auto CharacterFormat::*field) {
        return !from || (*from).*field != to.*field;
    };
    // What a document begins with need not be taken back.
    const auto needs = [&](auto CharacterFormat::*field) {
        return from ? (*from).*field != to.*field : CharacterFormat().*field != to.*field;
    };
    if (differs(&CharacterFormat::font)) {
        output.raw('\n');
        output.word("\\f", to.font);
    }
    if (needs(&CharacterFormat::isItalic)) {
        output.raw(to.isItalic ? "\\i" : "\\i0");
    }
    if (needs(&CharacterFormat::isBold)) {
        output.raw(to.isBold ? "\\b" : "\\b0");
    }
    if (differs(&CharacterFormat::size)) {
        output.word("\\fs", to.size / kHalfPoint);
        if (to.size % kHalfPoint != 0) {
            output.word("\\fsmilli", to.size);
        }
    }
    if (differs(&CharacterFormat::foreground)) {
        output.word("\\cf", to.foreground);
    }
    if (needs(&CharacterFormat::background)) {
        output.word("\\cb", to.background);
    }
    if (needs(&CharacterFormat::underline)) {
        output.raw(underlineWords(to.underline));
    }
    if (needs(&CharacterFormat::strikethrough)) {
        if (from && from->strikethrough != LineStyle::none && to.strikethrough != LineStyle::none) {
            writeStrikethrough(output, LineStyle::none);
        }
        writeStrikethrough(output, to.strikethrough);
    }
    if (output.bytes().size() != before) {
        output.raw(' ');
    }
}

void writeParagraphWords(Output& output, const ParagraphStyle& style, std::size_t depth,
                         std::optional<HeadingLevel> heading) {
    output.raw("\\pard");
    if (depth > 0) {
        output.word("\\intbl\\itap", static_cast<std::int64_t>(depth));
    }
    writeTabStops(output, style);
    output.raw("\\pardeftab720");
    const auto optional = [&](std::string_view word, Twips length) {
        if (length != 0) {
            output.word(word, limited(length));
        }
    };
    optional("\\li", style.leftIndent);
    optional("\\fi", style.firstLineIndent);
    optional("\\ri", style.rightIndent);
    writeLineHeight(output, style);
    optional("\\slleading", style.lineSpacing);
    optional("\\sb", style.spacingBefore);
    optional("\\sa", style.spacingAfter);
    output.raw(directionWord(style.direction));
    output.raw(alignmentWord(style.alignment));
    if (heading) {
        output.word("\\outlinelevel", static_cast<std::int64_t>(*heading) - 1);
    }
    output.raw("\\partightenfactor0\n");
}

} // namespace korvex::richtext::rtf
