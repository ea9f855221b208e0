#include "store/StoreError.h"

#include <cerrno>
#include <cstring>

namespace korvex::store {

namespace {

std::string description(StoreErrorCase which) {
    switch (which) {
    case StoreErrorCase::missing:
        return "There is no store yet.";
    case StoreErrorCase::incomplete:
        return "The store file is gone, but its companions are still there. Nothing has been "
               "changed. Put the file back, or move the companions away to start anew.";
    case StoreErrorCase::notAStore:
        return "The store file is empty, cut short, or not a Korvex store. It has been left as it "
               "is.";
    case StoreErrorCase::symbolicLink:
        return "The store file is a symbolic link, and its journal would stand somewhere else. It "
               "has been left as it is. Put the file itself in its place, or make its folder the "
               "link.";
    case StoreErrorCase::newerVersion:
        return "The store was written by a newer version of Korvex. Update Korvex to open it. It "
               "has been left as it is.";
    case StoreErrorCase::olderVersion:
        return "The store was written by an older version of Korvex that this one cannot upgrade. "
               "It has been left as it is.";
    case StoreErrorCase::needsUpgrade:
        return "The store was written by an older version of Korvex and has not been upgraded yet. "
               "Open Korvex once to upgrade it. It has been left as it is.";
    case StoreErrorCase::upgradeNeedsWriting:
        return "The store was written by an older version of Korvex and can only be read here, so "
               "it "
               "cannot be upgraded. Copy it to a folder that can be written. It has been left as "
               "it "
               "is.";
    case StoreErrorCase::noFolder:
        return "The folder of the store cannot be made.";
    case StoreErrorCase::unreadable:
        return "The store cannot be read. Check the permissions of its folder.";
    case StoreErrorCase::readOnly:
        return "The local store is read-only.";
    case StoreErrorCase::busy:
        return "Another program keeps the store busy. Nothing was changed; try again.";
    case StoreErrorCase::damaged:
        return "The store is damaged. Nothing was changed. The command line's \"store repair\" of "
               "this store saves what can be read of it.";
    case StoreErrorCase::nothingReadable:
        return "Nothing of a Korvex store can be read in the store file. It has been left as it "
               "is.";
    case StoreErrorCase::full:
        return "There is no space left on the disk. Nothing was saved; free some space and try "
               "again.";
    case StoreErrorCase::inputOutput:
        return "The store could not be read or written. Nothing was saved; try again.";
    case StoreErrorCase::conflict:
        return "The entry or board was deleted in another program. Nothing was saved.";
    case StoreErrorCase::changesMissing:
        return "The store's journal was removed while Korvex had it open. Nothing more is saved "
               "until Korvex is started again.";
    case StoreErrorCase::invalidRecord:
        return "The store already has a record with this identifier.";
    case StoreErrorCase::other:
        return "The store could not be used.";
    }
    return {};
}

} // namespace

StoreError::StoreError(StoreErrorCase which, const std::string& detail)
    : Error("Korvex.Store", static_cast<int>(which),
            detail.empty() ? description(which) : description(which) + " (" + detail + ")"),
      m_which(which),
      m_logged(errorDescription()) {}

StoreError StoreError::ofSqlite(StoreErrorCase which, const std::string& words) {
    if (which == StoreErrorCase::other) {
        return StoreError(which, words);
    }
    StoreError error(which);
    error.m_logged += " (" + words + ")";
    return error;
}

bool isDamage(const StoreError& error) {
    return error.which() == StoreErrorCase::damaged || error.which() == StoreErrorCase::notAStore ||
           error.which() == StoreErrorCase::inputOutput;
}

void throwSystemError(int error, const std::string& what) {
    throw StoreError(error == ENOSPC || error == EDQUOT ? StoreErrorCase::full
                                                        : StoreErrorCase::inputOutput,
                     (what.empty() ? what : what + ": ") + std::strerror(error));
}

} // namespace korvex::store
