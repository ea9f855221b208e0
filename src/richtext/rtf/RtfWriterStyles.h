#pragma once

#include "richtext/rtf/RtfWriterOutput.h"
#include "richtext/text/HeadingLevel.h"
#include "richtext/text/ParagraphStyle.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace korvex::richtext::rtf {

/// The attributes of characters as control words say them.
struct CharacterFormat {
    std::int32_t font = 0;
    bool isBold = false;
    bool isItalic = false;
    MilliPoints size = 0;
    std::uint32_t foreground = 0;
    std::uint32_t background = 0;
    LineStyle underline = LineStyle::none;
    LineStyle strikethrough = LineStyle::none;

    bool operator==(const CharacterFormat&) const = default;
};

/// Writes the words that lead from one format to another; from nothing, those that a document needs
/// first.
void writeChange(Output& output, const std::optional<CharacterFormat>& from,
                 const CharacterFormat& to);

/// Writes the words of a paragraph that stands `depth` tables deep, all but those of its list.
/// Office suites know a heading by its outline level.
void writeParagraphWords(Output& output, const ParagraphStyle& style, std::size_t depth,
                         std::optional<HeadingLevel> heading);

} // namespace korvex::richtext::rtf
