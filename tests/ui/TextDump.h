#pragma once

#include "richtext/text/AttributedString.h"

#include <string>

namespace korvex::tests {

/// Formatted text as one reads it in a failed test, a line for each paragraph: "# " heading, "- "
/// and "1. " items, moved in by their depth, "| " a cell, "auto> " a line of code in that language;
/// in the lines *bold*, /italic/, _underlined_, ~struck~, `code`, [link](target).
std::string dump(const richtext::AttributedString& text);

} // namespace korvex::tests
