#pragma once

#include "base/Instant.h"
#include "base/Log.h"
#include "base/Uuid.h"
#include "storage/BackupFile.h"
#include "storage/FolderBookmark.h"
#include "storage/Work.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::storage {

/// A backup's file as its folder shows it, unread.
struct ListedBackup {
    std::filesystem::path file;
    base::Instant modifiedAt;
    std::uintmax_t bytes = 0;
    /// What it stands on. The number of the file says nothing: some file systems, as those of
    /// cards and sticks, give it another one each time.
    std::uint64_t device = 0;

    bool operator==(const ListedBackup&) const = default;
};

/// What was found, the newest first, and what is called a backup and cannot be looked at, each with
/// the reason: "… could not be read: …".
struct BackupList {
    std::vector<ListedBackup> backups = {};
    std::vector<std::string> unreadable = {};
    /// Of one history: that the folder holds others too.
    bool hasForeign = false;
};

/// The folder of one store's automatic backups by one installation in the chosen one, which are
/// told from others by this: two that share a folder never remove each other's.
std::string historyFolderName(const base::Uuid& history);
/// A new automatic backup's name.
std::string newBackupName();

/// The automatic backups of this history in the folder that was chosen, and in no other, and
/// whether there are others'. Nothing is read of them. Throws AutomaticBackupError `chooseAgain`,
/// and FileError where the folder cannot be read. Any thread.
BackupList automaticBackups(const FolderBookmark& bookmark, const base::Uuid& history);
/// All backups that stand in a folder or in the folder of a history in it. Throws FileError
/// where it cannot be read. Any thread.
BackupList backupsIn(const std::filesystem::path& folder);

/// Reads a backup in full, and checks that it may become a store. Throws as `readBackup` and
/// `backup::validate`, and FileError where another file has its name by now. Any thread.
BackupSummary checkBackup(const ListedBackup& backup, base::LogSink& log, Work& work);

/// Removes what killed programs left of backups that they did not finish. Any thread.
void removeUnfinished(const std::filesystem::path& folder);

/// Keeps `newest` and the most recent automatic backups beside it, by the time of their files and
/// then by their names: `keeping` altogether, at least one. Everything else in the folder stays.
/// Throws FileError; the oldest go first.
void prune(const HeldFolder& folder, std::size_t keeping, std::string_view newest);

} // namespace korvex::storage
