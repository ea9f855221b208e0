#include "storage/RestoreWords.h"

#include "base/CountText.h"

namespace korvex::storage {

std::string englishContents(const BackupSummary& backup) {
    return base::countText(backup.boards, "board", "boards") + ", " +
           base::countText(backup.entries, "entry", "entries");
}

std::string filledIn(std::string_view text, std::string_view contents, std::string_view moment) {
    std::string result(text);
    result.replace(result.find("%2"), 2, moment); // first: what is put in may hold such a sign
    result.replace(result.find("%1"), 2, contents);
    return result;
}

} // namespace korvex::storage
