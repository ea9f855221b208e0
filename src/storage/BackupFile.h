#pragma once

#include "backup/BackupDocument.h"
#include "base/Error.h"
#include "base/FileDescriptor.h"
#include "base/FileReplacement.h"
#include "base/Log.h"
#include "storage/Work.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <system_error>

namespace korvex::storage {

/// A file that is not the store could not be read or written. The description names the reason.
class FileError final : public base::Error {
public:
    explicit FileError(std::string description) : Error("Korvex.File", 1, std::move(description)) {}
};

/// What a backup holds, as it is told to its user.
struct BackupSummary {
    base::Instant exportedAt;
    std::size_t boards = 0;
    std::size_t entries = 0;
    /// Of its file.
    std::uintmax_t bytes = 0;

    bool operator==(const BackupSummary&) const = default;
};

/// Throws FileError where there is an error: "`what` could not be written: …".
void requireWritten(const std::string& what, const std::error_code& error);
/// For the log: what its user is told too.
void logFailure(base::LogSink& log, const base::Error& error);

/// Folders that are missing on the way to a backup are missed, or made for the user alone.
enum class MissingFolders { refuse, userOnly };

struct BackupWriting {
    MissingFolders missing = MissingFolders::refuse;
    /// A file that is to be kept fails it, whenever it came.
    base::StagedFile::Existing existing = base::StagedFile::Existing::replace;
    /// Shown what the disk has given back, once that is what was meant.
    std::function<void(std::span<const std::uint8_t>)> proven = {};
};

/// Gives a file the document, all or nothing: writes it beside, syncs it, reads it back from the
/// disk, decodes it and compares; only then it takes the file's place, for good. The file is
/// readable for its owner alone, unless the one that it replaces was for others too. What a killed
/// run left beside the file is removed. Throws BackupError `tooLarge` (before more than the
/// document is made) and `invalidDocument` (a date that cannot be written), FileError and
/// Cancelled, and then the file is as it was. Any thread.
BackupSummary writeBackup(const backup::BackupDocument& document, const std::filesystem::path& file,
                          Work& work, const BackupWriting& how = {});

/// Throws FileError where something else stands there, as a folder or a pipe: it is neither read
/// nor replaced.
void requireFile(const std::filesystem::path& file);

/// Reads a backup; whether it may become a store says `backup::validate`. Throws BackupError
/// `tooLarge` (unread) and `invalidDocument`, FileError and Cancelled. Any thread.
backup::BackupDocument readBackup(const std::filesystem::path& file, Work& work);
/// The same in two steps, without decoding it: what is open is read whatever becomes of its name
/// meanwhile. Not open where there is no such file.
base::FileDescriptor openBackup(const std::filesystem::path& file);
base::Bytes readBackupBytes(const base::FileDescriptor& open, const std::filesystem::path& file,
                            Work& work);

/// Whether the file holds just this document. Throws as `readBackup`. Any thread.
bool holdsBackup(const std::filesystem::path& file, const backup::BackupDocument& document,
                 Work& work);

} // namespace korvex::storage
