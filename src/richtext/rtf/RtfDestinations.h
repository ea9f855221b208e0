#pragma once

#include <cstdint>

namespace korvex::richtext::rtf {

/// What a group holds.
enum class Destination : std::uint8_t {
    body,
    skipped,
    field,
    fieldInstruction,
    /// A footnote or an endnote: body text, in brackets.
    note,
    /// A drawing. Only what is written in it is text.
    shape,
    /// What is written in a drawing: body text, on lines of its own.
    textBox,
    /// A drawing once more, for readers that do not know the new kind.
    shapeResult,
    /// An embedded object. Only what it looks like is text.
    object,
    objectResult,
    fontTable,
    colorTable,
    extendedColorTable,
    listTable,
    list,
    listLevel,
    levelText,
    levelNumbers,
    levelMarker,
    overrideTable,
    listOverride,
    overrideLevel,
    /// A numbered paragraph as old writers have it.
    numbering,
    textBeforeNumber,
    textAfterNumber,
    /// Text twice: for readers without Unicode, and in a group of its own for the others.
    alternatives,
    unicodeAlternative,
    /// A picture whose enclosing group holds the character that stands for it.
    graphic,
};

} // namespace korvex::richtext::rtf
