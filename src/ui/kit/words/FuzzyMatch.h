#pragma once

#include <QString>

#include <optional>

namespace korvex::ui {

/// How far a name is from what was typed to find it: 0 for the name itself, more the more the
/// typed letters are strewn over it; those at the beginnings of words count as near ("tl" means
/// "Trip to Lisbon"). Absent when the name does not have the letters in this order. After white
/// space a letter must begin a word. Both texts folded; only the beginning of a long one counts.
std::optional<int> fuzzyDistance(const QString& name, const QString& typed);

} // namespace korvex::ui
