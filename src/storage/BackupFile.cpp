#include "storage/BackupFile.h"

#include "backup/BackupFileIO.h"
#include "base/Base64.h"
#include "base/FileReplacement.h"

#include <system_error>

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
    if (error) {
        throw FileError("The backup could not be written: " + error.message() + ".");
    }
}

[[noreturn]] void refuseUnreadable(const fs::path& file, const fs::filesystem_error& error) {
    throw FileError(file.string() + " could not be read: " + error.code().message() + ".");
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

bool holds(const fs::path& file, const BackupDocument& document, Work& work) {
    work.begin(Stage::verifying, partsOfReading(file));
    const auto advance = advancing(work);
    return backup::BackupFileIO::holds(backup::BackupFileIO::readFile(file, advance), document,
                                       advance);
}

} // namespace

BackupSummary writeBackup(const BackupDocument& document, const fs::path& file, Work& work,
                          MissingFolders missing) {
    constexpr mode_t kForAll = 0777;
    constexpr mode_t kForUser = 0700;
    BackupSummary summary{.exportedAt = document.exportedAt,
                          .boards = document.boards.size(),
                          .entries = document.entries.size()};
    work.begin(Stage::writing, expectedBytes(document));
    base::StagedFile staged;
    require(staged.open(file, missing == MissingFolders::userOnly ? kForUser : kForAll));
    backup::BackupFileIO::encode(document, [&](std::string_view piece) {
        require(staged.write(piece));
        summary.bytes += piece.size();
        work.advance(piece.size());
    });
    require(staged.sync());
    try {
        if (!holds(staged.path(), document, work)) {
            throw FileError("What was written of the backup is not what the disk gives back. It "
                            "was not kept.");
        }
    } catch (const fs::filesystem_error& error) {
        require(error.code());
    }
    work.checkCancellation();
    require(staged.commit());
    return summary;
}

BackupDocument readBackup(const fs::path& file, Work& work) {
    work.begin(Stage::reading, partsOfReading(file));
    try {
        const auto advance = advancing(work);
        return backup::BackupFileIO::decode(backup::BackupFileIO::readFile(file, advance), advance);
    } catch (const fs::filesystem_error& error) {
        refuseUnreadable(file, error);
    }
}

bool holdsBackup(const fs::path& file, const BackupDocument& document, Work& work) {
    try {
        return holds(file, document, work);
    } catch (const fs::filesystem_error& error) {
        refuseUnreadable(file, error);
    }
}

} // namespace korvex::storage
