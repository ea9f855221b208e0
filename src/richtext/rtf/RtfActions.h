#pragma once

#include <cstdint>

/// What the control words of RTF do here.
namespace korvex::richtext::rtf {

/// What a control word does. The comment says what the keyword's value means, where it has one.
enum class Action : std::uint8_t {
    /// Also what is not known at all, which has no name.
    ignored,

    // Groups and the document.
    destination, // Destination
    codePage,
    codePageFixed, // the code page
    nativeDialect,
    defaultFont,
    fallbackUnits,
    unicode,
    binary,

    // Text.
    character, // the UTF-16 unit
    paragraphEnd,
    section,
    /// The end of a page or a column.
    lineBreak,
    noteMark,
    withoutFeed,
    outlineLevel,

    // Characters.
    plain,
    font,
    bold,
    italic,
    hidden,
    underline,     // LineStyle
    strikethrough, // LineStyle
    strikethroughStyle,
    fontSize,
    fontMilliSize,
    foreground,
    background,

    // Paragraphs.
    paragraphDefault,
    alignment, // TextAlignment
    direction, // WritingDirection
    leftIndent,
    firstLineIndent,
    rightIndent,
    spacingBefore,
    spacingAfter,
    lineSpacing,
    lineHeight,
    lineHeightIsMultiple,
    minimumLineHeight,
    maximumLineHeight,
    tabStop,
    list,
    listLevel,
    inTable,
    tableDepth,

    // Tables.
    rowDefault,
    cellEnd,
    nestedCellEnd,
    rowEnd,
    nestedRowEnd,
    lastRow,
    rowLeft,
    rowGap,
    rowPadding, // Side
    cellEdge,
    cellWidth,
    cellWidthUnit,
    cellPadding, // Side
    cellBorder,  // Side
    otherBorder,
    borderLine, // 1: there is one
    borderWidth,
    borderColor,
    cellFill,
    cellAlignment, // VerticalAlignment
    mergeStart,
    merged,
    verticalMergeStart,
    verticallyMerged,
    absentCell,

    // The table of fonts.
    fixedPitchFamily,
    pitch,
    fontCharset,
    fontCodePage,

    // The tables of colours.
    red,
    green,
    blue,
    standardColor, // the number of components that tell red, green and blue
    component,
    colorName,

    // The tables of lists.
    listId,
    listOverrideNumber,
    levelKind,
    levelStart,
    levelTemplate,
    overridesStart,

    // Numbered paragraphs.
    numberKind, // as \levelnfc has it
    numberStart,
};

} // namespace korvex::richtext::rtf
