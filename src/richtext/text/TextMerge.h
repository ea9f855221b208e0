#pragma once

#include "richtext/text/AttributedString.h"

#include <vector>

namespace korvex::richtext {

/// Three versions of a text made one. A value free of shared state.
struct TextMerge {
    /// What each side has changed, and what neither has.
    AttributedString text;
    /// Both have changed the same place: there stands `mine`, and behind it `theirs`.
    bool hasBoth = false;
};

/// Takes into `mine` what `theirs` has changed since `base`: paragraph by paragraph, in a paragraph
/// that both have changed word by word, and a table as a whole. Words that one side has added are
/// in the result, and so is what both have left as it was; what one side has changed the other has
/// not deleted. A list of `theirs` that goes on in `mine` becomes that list.
TextMerge merged(const AttributedString& base, const AttributedString& mine,
                 const AttributedString& theirs);

/// A part of one text that another has otherwise.
struct TextDifference {
    TextRange before;
    TextRange after;
};

/// The parts in which two texts differ, from the front, each no longer than it must be: what makes
/// `before` of `after` by as little change as possible.
std::vector<TextDifference> differences(const AttributedString& before,
                                        const AttributedString& after);

} // namespace korvex::richtext
