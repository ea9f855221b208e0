#pragma once

#include <span>
#include <string_view>

namespace korvex::richtext {

/// The languages of the highlighter that Korvex is built with, in the order of their identifiers.
std::span<const std::string_view> highlighterLanguages();

} // namespace korvex::richtext
