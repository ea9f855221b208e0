#pragma once

#include "richtext/text/ParagraphStyle.h"

#include <cstddef>

namespace korvex::richtext {

/// Lists in lists go no deeper: the stored form has so many levels.
inline constexpr std::size_t kMaximumListDepth = 9;

/// Gives a paragraph the indents and tab stops of an item of its lists, none where it is in none.
/// Here items are drawn by their depth alone, but other readers of the stored text draw them by
/// these.
void setListIndents(ParagraphStyle& style);

} // namespace korvex::richtext
