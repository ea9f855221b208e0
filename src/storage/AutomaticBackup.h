#pragma once

#include "app/AppPreferences.h"
#include "base/Bytes.h"
#include "base/Instant.h"
#include "base/Log.h"
#include "base/Uuid.h"
#include "storage/AutomaticBackupError.h"
#include "storage/BackupFile.h"
#include "storage/Work.h"

#include <exception>
#include <filesystem>
#include <optional>

namespace korvex::storage {

/// One automatic backup to be made.
struct AutomaticBackup {
    std::filesystem::path storeFile;
    /// Of the chosen folder; absent: none was chosen.
    std::optional<base::Bytes> bookmark;
    /// Names the folder of the backups in the chosen one.
    base::Uuid installation;
    /// How many are kept.
    std::size_t keeping = 1;
    base::Instant now;
};

/// The one that the user's settings ask for.
AutomaticBackup automaticBackup(const app::AppPreferences& preferences,
                                std::filesystem::path storeFile, base::Instant now);

struct AutomaticBackupResult {
    /// Proven, as `writeBackup` does.
    std::filesystem::path file;
    BackupSummary summary;
    /// Why old ones could not be removed, if they could not: the backup is made all the same.
    std::exception_ptr pruningFailure;
};

/// Writes a backup of all that is saved into the chosen folder and removes those that are too many.
/// Nothing is written into another folder than the one that was chosen, whatever happens to it
/// meanwhile, and the store is only read. Throws AutomaticBackupError, what `openForReading` and
/// `exportBackup` throw, and FileError. Any thread.
AutomaticBackupResult makeAutomaticBackup(const AutomaticBackup& backup, base::LogSink& log,
                                          Work& work);

/// The settings tell from now on when this one was made; false, and they do not, where another
/// folder was chosen meanwhile, which has none. Main thread.
bool recordSuccess(const AutomaticBackup& backup, app::AppPreferences& preferences);

} // namespace korvex::storage
