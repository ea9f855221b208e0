#pragma once

#include "richtext/text/AttributedString.h"

#include <string>

namespace korvex::richtext {

/// A text for people to read and to compare: a line for each paragraph that says what differs from
/// the defaults, and under it a line for each run. Lists, tables and cells have numbers, in the
/// order of their first coming; what they are is said there.
std::string dump(const AttributedString& text);

} // namespace korvex::richtext
