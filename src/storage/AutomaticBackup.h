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
    /// Names the folder of the backups in the chosen one, together with the store.
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
    std::exception_ptr pruningFailure = {};
};

/// Writes a backup of all that is saved into the chosen folder, has the settings tell of it, unless
/// another folder was chosen meanwhile, and then removes those that are too many, in this order:
/// who is killed between the last two makes no further one at the next start. Nothing is written
/// into another folder than the one that was chosen, whatever happens to it meanwhile, and the
/// store is only read. Throws AutomaticBackupError, what `openForReading` and `exportBackup` throw,
/// and FileError. Any thread; the defaults must be this thread's.
AutomaticBackupResult makeAutomaticBackup(const AutomaticBackup& backup,
                                          app::UserDefaults& defaults, base::LogSink& log,
                                          Work& work);

} // namespace korvex::storage
