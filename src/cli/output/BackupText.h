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

/// A backup that was read in full.
struct ReadBackup {
    storage::ListedBackup listed;
    /// Absent where it is no backup that could be imported; then the problem says why.
    std::optional<storage::BackupSummary> summary;
    std::string problem;
};
/// One a line: date, what it holds, size, whether it is sound, file.
void printBackups(Session& session, std::span<const ReadBackup> backups);

} // namespace korvex::cli
