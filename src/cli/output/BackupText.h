#pragma once

#include "storage/BackupHistory.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace korvex::cli {

class Session;

/// What was made: the text, then what it holds.
void printBackup(Session& session, std::string_view text, const std::filesystem::path& file,
                 const storage::BackupSummary& summary);

/// What reading a backup in full has shown.
enum class BackupState {
    sound,
    damaged,     ///< or no backup at all
    unsupported, ///< of a newer version of the program
    tooLarge,
    unreadable, ///< for want of permission, or because the disk fails
};

/// A backup that was read in full.
struct ReadBackup {
    storage::ListedBackup listed;
    /// Absent where it is no backup that could be imported; then the problem says why.
    std::optional<storage::BackupSummary> summary = std::nullopt;
    BackupState state = BackupState::sound;
    std::string problem = {};
};
/// One a line: date, what it holds, size, state, file. For programs also why each of `unlisted`
/// could not be looked at.
void printBackups(Session& session, std::span<const ReadBackup> backups,
                  std::span<const std::string> unlisted);

} // namespace korvex::cli
