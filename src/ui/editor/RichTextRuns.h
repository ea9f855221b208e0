#pragma once

#include "richtext/code/CodeSyntax.h"
#include "richtext/text/Formatting.h"
#include "richtext/text/HeadingLevel.h"
#include "ui/text/TextFormats.h"

#include <functional>
#include <optional>
#include <vector>

namespace korvex::ui {

/// Walks over the blocks and runs of a document under edit, and what stands around a place in it.
/// Main thread.

using AttributesTest = std::function<bool(const richtext::CharacterAttributes&)>;

inline bool isEmpty(const QTextBlock& block) {
    return block.length() <= 1;
}

/// Whether two blocks stand in the same cell, or both in none.
bool isSameCell(const QTextBlock& left, const QTextBlock& right);
/// Whether the block stands outside of tables and the one before it in one.
bool isBehindTable(const QTextBlock& block);
/// Qt draws no empty paragraph right behind a table: its caret would stand beside the table.
bool isHiddenBehindTable(const QTextBlock& block);

/// The blocks that a range touches. The one in which nothing but the end of a selection stands is
/// not touched.
std::vector<QTextBlock> blocksOf(const QTextCursor& range);

/// What is typed next at a caret looks like this.
inline richtext::CharacterAttributes typedAttributes(const QTextCursor& caret) {
    return attributesOf(caret.charFormat());
}
/// The same for a caret that has just come to its place: typing beside a link or inline code is not
/// part of it.
richtext::CharacterAttributes typedBesideRuns(const QTextCursor& caret);

/// Whether the test holds for every character that is selected, or for what is typed at the caret.
bool isEverywhere(const QTextCursor& range, const AttributesTest& test);
/// The maximal stretch of characters around the caret or selection that the test holds for; over
/// the ends of paragraphs where it holds for both, within one cell.
QTextCursor runAround(const QTextCursor& range, const AttributesTest& test);

} // namespace korvex::ui
