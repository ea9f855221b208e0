#pragma once

#include <cstddef>
#include <string_view>

namespace korvex::cli {

class Session;

// What a terminal is told before and after a text.
inline constexpr std::string_view kBold = "\x1b[1m";
inline constexpr std::string_view kDim = "\x1b[2m";
inline constexpr std::string_view kRed = "\x1b[31m";
inline constexpr std::string_view kPlain = "\x1b[0m";

/// What stands between two columns.
inline constexpr std::string_view kGap = "  ";
/// A text column narrower than this is not worth having: texts wrap at the terminal's own edge
/// then.
inline constexpr std::size_t kNarrowestText = 20;

/// The text in this style (which may be empty) where there is color, else as it is.
void printStyled(Session& session, std::string_view style, std::string_view text);

} // namespace korvex::cli
