#include "storage/BackupFile.h"

#include "backup/BackupFileIO.h"
#include "base/Base64.h"

namespace korvex::storage {

namespace {

namespace fs = std::filesystem;
using backup::BackupDocument;

/// What the keys and the smaller fields of a record take in a file, about.
constexpr std::size_t kRecordBytes = 400;

/// How long the file will be, well enough to tell how far it is.
std::size_t expectedBytes(const BackupDocument& document) {
    std::size_t bytes = 0;
    for (const auto& entry : document.entries) {
        bytes += kRecordBytes + entry.content.size();
        for (const auto* data : {&entry.richTextData, &entry.attachmentData}) {
            bytes += *data ? base::base64Length((*data)->size()) : 0;
        }
    }
    return bytes;
}

void require(const std::error_code& error) {
    requireWritten("The backup", error);
}

[[noreturn]] void refuseUnreadable(const fs::path& file, const std::error_code& error) {
    throw FileError(file.string() + " could not be read: " + error.message() + ".");
}

/// A file is read and then decoded: each byte counts twice.
std::uint64_t partsOfReading(const fs::path& file) {
    std::error_code error;
    const auto size = fs::file_size(file, error);
    return error ? 0 : size * 2;
}

backup::BackupFileIO::Advance advancing(Work& work) {
    return [&work](std::size_t bytes) { work.advance(bytes); };
}

bool holds(const fs::path& file, const BackupDocument& document, Work& work,
           const std::function<void(std::span<const std::uint8_t>)>& proven = {}) {
    work.begin(Stage::verifying, partsOfReading(file));
    const auto advance = advancing(work);
    const auto bytes = backup::BackupFileIO::readFile(file, advance);
    const auto isThat = backup::BackupFileIO::holds(bytes, document, advance);
    if (isThat && proven) {
        proven(bytes);
    }
    return isThat;
}

} // namespace

void requireWritten(const std::string& what, const std::error_code& error) {
    if (error) {
        throw FileError(what + " could not be written: " + error.message() + ".");
    }
}

void logFailure(base::LogSink& log, const base::Error& error) {
    base::Logger(log, "Backup")
        .warning(std::string("Backup operation failed: ") + error.what() + " (" +
                 std::to_string(error.code()) + ")");
}

BackupSummary writeBackup(const BackupDocument& document, const fs::path& file, Work& work,
                          const BackupWriting& how) {
    constexpr mode_t kForUser = 0700;
    BackupSummary summary{.exportedAt = document.exportedAt,
                          .boards = document.boards.size(),
                          .entries = document.entries.size()};
    work.begin(Stage::writing, expectedBytes(document));
    base::StagedFile staged;
    require(staged.open(file, how.missing == MissingFolders::userOnly ? std::optional(kForUser)
                                                                      : std::nullopt));
    backup::BackupFileIO::encode(document, [&](std::string_view piece) {
        require(staged.write(piece));
        summary.bytes += piece.size();
        work.advance(piece.size());
    });
    require(staged.sync());
    try {
        if (!holds(staged.path(), document, work, how.proven)) {
            throw FileError("What was written of the backup is not what the disk gives back. It "
                            "was not kept.");
        }
    } catch (const fs::filesystem_error& error) {
        require(error.code());
    }
    work.checkCancellation();
    require(staged.commit(how.existing));
    return summary;
}

void requireFile(const fs::path& file) {
    std::error_code unknown;
    const auto status = fs::status(file, unknown);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw FileError(file.string() + " is not a file. Choose another one for the backup.");
    }
}

BackupDocument readBackup(const fs::path& file, Work& work) {
    requireFile(file);
    const auto open = openBackup(file);
    if (!open.isOpen()) {
        refuseUnreadable(file, std::make_error_code(std::errc::no_such_file_or_directory));
    }
    return backup::BackupFileIO::decode(readBackupBytes(open, file, work), advancing(work));
}

base::FileDescriptor openBackup(const fs::path& file) {
    try {
        return backup::BackupFileIO::openFile(file);
    } catch (const fs::filesystem_error& error) {
        if (error.code() == std::errc::no_such_file_or_directory) {
            return {};
        }
        refuseUnreadable(file, error.code());
    }
}

base::Bytes readBackupBytes(const base::FileDescriptor& open, const fs::path& file, Work& work) {
    work.begin(Stage::reading, partsOfReading(file));
    try {
        return backup::BackupFileIO::readFile(open, file, advancing(work));
    } catch (const fs::filesystem_error& error) {
        refuseUnreadable(file, error.code());
    }
}

bool holdsBackup(const fs::path& file, const BackupDocument& document, Work& work) {
    try {
        return holds(file, document, work);
    } catch (const fs::filesystem_error& error) {
        refuseUnreadable(file, error.code());
    }
}

} // namespace korvex::storage
