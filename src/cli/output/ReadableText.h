#pragma once

#include "richtext/text/AttributedString.h"

#include <string>

namespace korvex::cli {

/// Formatted text as lines that a person can read without its formatting, in UTF-8: items of lists
/// begin with their markers, rows of tables are lines with " | " between the cells. No line feed
/// after the last line.
std::string readableText(const richtext::AttributedString& text);

} // namespace korvex::cli
