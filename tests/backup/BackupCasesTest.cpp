// The documents under tests/cases/backup. Each is named for what is special about it, and otherwise
// as good as valid/everything.

#include "backup/BackupFileIO.h"
#include "support/CaseOf.h"
#include "support/RecordingLog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

namespace korvex::backup {
namespace {

const std::filesystem::path kCases = KORVEX_BACKUP_CASES;

void forEachCase(const char* folder, const std::function<void(const base::Bytes&)>& expect) {
    const std::filesystem::directory_iterator entries(kCases / folder);
    std::vector<std::filesystem::path> files;
    std::transform(begin(entries), end(entries), std::back_inserter(files),
                   [](const auto& entry) { return entry.path(); });
    std::sort(files.begin(), files.end());
    EXPECT_FALSE(files.empty());
    for (const auto& file : files) {
        SCOPED_TRACE(file.filename().string());
        expect(BackupFileIO::readFile(file));
    }
}

/// Of the document that the bytes hold.
std::optional<BackupErrorCase> validationErrorOf(const base::Bytes& bytes) {
    std::optional<BackupDocument> document;
    EXPECT_NO_THROW(document = BackupFileIO::decode(bytes));
    tests::RecordingLog log;
    return document ? tests::caseOf<BackupError>([&] { validate(*document, log); }) : std::nullopt;
}

TEST(BackupCases, ValidDocumentsMayBecomeAStore) {
    forEachCase("valid", [](const base::Bytes& bytes) {
        EXPECT_EQ(validationErrorOf(bytes), std::nullopt);
        EXPECT_EQ(BackupFileIO::encode(BackupFileIO::decode(bytes)), bytes);
    });
}

TEST(BackupCases, InvalidDocumentsAreReadAndRefused) {
    forEachCase("invalid", [](const base::Bytes& bytes) {
        EXPECT_EQ(validationErrorOf(bytes), BackupErrorCase::invalidDocument);
    });
}

TEST(BackupCases, AnotherVersionIsToldBeforeAllElse) {
    forEachCase("unsupported", [](const base::Bytes& bytes) {
        EXPECT_EQ(validationErrorOf(bytes), BackupErrorCase::unsupportedVersion);
    });
}

TEST(BackupCases, WhatIsNoDocumentIsNotRead) {
    forEachCase("unreadable", [](const base::Bytes& bytes) {
        EXPECT_EQ(tests::caseOf<BackupError>([&] { BackupFileIO::decode(bytes); }),
                  BackupErrorCase::invalidDocument);
    });
}

TEST(BackupCases, OneDocumentCanBeWrittenInManyWays) {
    const auto canonical = BackupFileIO::readFile(kCases / "same" / "canonical.korvexbackup");
    forEachCase("same", [&](const base::Bytes& bytes) {
        EXPECT_EQ(BackupFileIO::decode(bytes), BackupFileIO::decode(canonical));
    });
}

} // namespace
} // namespace korvex::backup
