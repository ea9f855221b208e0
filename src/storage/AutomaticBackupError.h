#pragma once

#include "base/Error.h"

#include <string>

namespace korvex::storage {

/// Why no automatic backup could be made; what else can fail says so itself.
enum class AutomaticBackupErrorCase {
    anotherStore,      ///< the settings, which are the user's, mean the user's own store only
    noFolder,          ///< none was chosen yet
    notSaved,          ///< a folder that was chosen cannot be marked
    chooseAgain,       ///< the chosen folder is gone, or is another one
    unknownFolder,     ///< what the settings hold of it is no bookmark
    historyIsNoFolder, ///< something else stands in the place of the backups' own folder
    running,           ///< another program is making one, or a run that was left alone
    noAnswer,          ///< whoever reads or writes there has been waiting for minutes
};
std::string descriptionOf(AutomaticBackupErrorCase which);
std::string domainOf(AutomaticBackupErrorCase which);
using AutomaticBackupError = base::TypedError<AutomaticBackupErrorCase>;

} // namespace korvex::storage
