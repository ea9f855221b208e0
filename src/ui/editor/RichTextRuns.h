#pragma once

#include "richtext/code/CodeSyntax.h"
#include "richtext/text/Formatting.h"
#include "richtext/text/HeadingLevel.h"
#include "ui/text/TextFormats.h"

#include <algorithm>
#include <optional>
#include <vector>

namespace korvex::ui {

/// What the parts of RichTextEdit share: walks over a document's blocks and runs.

/// By the first character, of an empty paragraph by what is typed into it.
inline std::optional<richtext::HeadingLevel> headingOf(const QTextBlock& block) {
    const auto first = block.begin();
    return richtext::headingLevel(
        attributesOf(first.atEnd() ? block.charFormat() : first.fragment().charFormat()).font);
}

inline bool isEmpty(const QTextBlock& block) {
    return block.length() <= 1;
}

/// From the outermost list to the one that the block is an item of.
std::vector<richtext::TextListRef> listsOf(const QTextBlock& block);

/// Whether two blocks stand in the same cell, or both in none.
bool isSameCell(const QTextBlock& left, const QTextBlock& right);

/// Calls `visit(start, end, format)` with each stretch of the block that has one format, cut to the
/// range. False from `visit` ends it; false when it was ended.
template <typename Visit>
bool forEachStretch(const QTextBlock& block, int from, int to, Visit&& visit) {
    for (auto it = block.begin(); !it.atEnd(); ++it) {
        const auto fragment = it.fragment();
        const int start = std::max(fragment.position(), from);
        const int end = std::min(fragment.position() + fragment.length(), to);
        if (start < end && !visit(start, end, fragment.charFormat())) {
            return false;
        }
    }
    return true;
}

/// The blocks that a range touches. The one in which nothing but the end of a selection stands is
/// not touched.
std::vector<QTextBlock> blocksOf(const QTextCursor& range);

} // namespace korvex::ui
