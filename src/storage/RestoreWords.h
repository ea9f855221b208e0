#pragma once

#include "storage/BackupFile.h"

#include <string>
#include <string_view>

namespace korvex::storage {

/// What its user is asked before what was replaced last is brought back, and told when it is: in
/// the same words whether an import brought what goes, or the taking back of one. %1 stands for
/// what comes back, %2 for the moment when that was replaced.
inline constexpr const char* kTakeBackQuestion =
    "This brings back %1, as they were on %2, in place of your current boards, text entries and "
    "todos. It can be taken back in the same way.";
inline constexpr const char* kTakenBack =
    "Brought back %1, as they were on %2. What they replaced is kept locally.";

/// "2 boards, 1 entry", in English.
std::string englishContents(const BackupSummary& backup);
/// The text with `contents` and `moment` in the place of %1 and %2.
std::string filledIn(std::string_view text, std::string_view contents, std::string_view moment);

} // namespace korvex::storage
