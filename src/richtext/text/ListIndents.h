#pragma once

#include "richtext/text/ParagraphStyle.h"

namespace korvex::richtext {

/// Gives a paragraph the indents and tab stops of an item of its lists, none where it is in none.
/// Here items are drawn by their depth alone, but other readers of the stored text draw them by
/// these.
void setListIndents(ParagraphStyle& style);

} // namespace korvex::richtext
