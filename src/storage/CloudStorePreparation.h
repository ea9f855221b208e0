#pragma once

#include "base/Instant.h"
#include "base/Log.h"
#include "base/Uuid.h"

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace korvex::storage {

/// Makes a local store ready to be kept in step with a cloud, once. Any thread that has no
/// container of the store open.
class CloudStorePreparation {
public:
    /// What is written beside the store: all of its data, as it stood after the preparation.
    static constexpr const char* kBackupName = "Migrated.korvexbackup";

    explicit CloudStorePreparation(base::LogSink& log) : m_log(&log) {}

    struct Prepared {
        /// Boards that another took the place of: the preferences are to name that one.
        std::vector<std::pair<base::Uuid, base::Uuid>> mergedBoards = {};
        bool wasUpgraded = false;
        /// What was noticed when it was opened and repaired, for the user.
        std::vector<std::string> notices = {};
    };
    /// Keeps a copy of the store beside it first, read back, under a name with ".BeforeCloudV11-"
    /// in it, then upgrades and repairs it and writes the backup. Does nothing where it has been
    /// done or nothing can be written. Throws SharedStoreError `notPrepared` and `incompleteStore`,
    /// StoreError, BackupError and FileError; nothing is marked as done then, and the next call
    /// begins anew: of the copies of several such calls the first and the last stay.
    Prepared prepare(const std::filesystem::path& at, base::Instant now) const;

private:
    base::LogSink* m_log;
};

} // namespace korvex::storage
