#pragma once

#include "richtext/rtf/RtfKeywords.h"
#include "richtext/text/ParagraphStyle.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvex::richtext::rtf {

/// The number behind a control word.
struct Parameter {
    /// The number, or 0 where there is none.
    std::int32_t value = 0;
    bool isPresent = false;

    /// Whether a word that switches something switches it on: it does unless it says 0.
    bool isOn() const { return !isPresent || value != 0; }
};

/// What characters look like at a point of the document: small, since each group has its own.
struct CharacterState {
    /// RTF's default is 12 points.
    static constexpr MilliPoints kDefaultSize = 12'000;

    std::int32_t font = 0;
    MilliPoints size = kDefaultSize;
    /// Indices of the table of colours.
    std::uint32_t foreground = 0;
    std::uint32_t background = 0;
    /// A number that `TextBuilder::link` gave; 0 for no link.
    std::uint32_t link = 0;
    LineStyle underline = LineStyle::none;
    LineStyle strikethrough = LineStyle::none;
    bool isBold = false;
    bool isItalic = false;
    bool isHidden = false;
    /// The level of the heading that a word processor's paragraph is; 0 for no heading.
    std::uint8_t heading = 0;

    void word(const Keyword& keyword, Parameter parameter);

    bool operator==(const CharacterState&) const = default;
};

/// What paragraphs look like at a point of the document.
struct ParagraphState {
    TextAlignment alignment = TextAlignment::natural;
    WritingDirection direction = WritingDirection::natural;
    Twips leftIndent = 0;
    Twips firstLineIndent = 0;
    Twips rightIndent = 0;
    Twips spacingBefore = 0;
    Twips spacingAfter = 0;
    Twips lineSpacing = 0;
    std::int32_t lineHeight = 0;
    bool isLineHeightMultiple = false;
    Twips minimumLineHeight = 0;
    Twips maximumLineHeight = 0;
    /// What \ls and \ilvl say; 0 for no list.
    std::int32_t list = 0;
    std::int32_t listLevel = 0;
    /// A number that `TextBuilder::numbering` gave; 0 for none.
    std::size_t numbering = 0;
    bool isInTable = false;
    std::size_t tableDepth = 0;
    std::vector<Twips> tabStops;

    void word(const Keyword& keyword, Parameter parameter);
    /// How many tables the paragraph is in.
    std::size_t depth() const { return tableDepth > 0 ? tableDepth : isInTable ? 1 : 0; }

private:
    void addTabStop(Twips stop);
};

} // namespace korvex::richtext::rtf
