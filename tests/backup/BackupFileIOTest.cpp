#include "RandomDocument.h"

#include "backup/BackupFileIO.h"
#include "support/CaseOf.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <optional>
#include <string_view>

namespace korvex::backup {
namespace {

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string_view textOf(std::span<const std::uint8_t> bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

void write(const std::filesystem::path& file, std::string_view contents) {
    std::ofstream(file, std::ios::binary) << contents;
}

/// A mapping of as many bytes as a test wants: blanks, without the memory for them. What is written
/// to its first and last pages stays there.
class Blanks {
public:
    explicit Blanks(std::size_t size) : m_size(size) {
        const int file = ::memfd_create("blanks", MFD_CLOEXEC);
        const std::string block(kBlock, ' ');
        EXPECT_EQ(::write(file, block.data(), block.size()), static_cast<ssize_t>(block.size()));
        m_start = static_cast<char*>(::mmap(nullptr, mappedSize(), PROT_NONE,
                                            MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
        for (std::size_t at = 0; at < mappedSize(); at += kBlock) {
            EXPECT_NE(::mmap(m_start + at, kBlock, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED,
                             file, 0),
                      MAP_FAILED);
        }
        ::close(file);
    }
    ~Blanks() { ::munmap(m_start, mappedSize()); }
    Blanks(const Blanks&) = delete;
    Blanks& operator=(const Blanks&) = delete;

    void put(std::size_t at, std::string_view text) {
        std::memcpy(m_start + at, text.data(), text.size());
    }
    std::span<const std::uint8_t> first(std::size_t size) const { return bytesOf({m_start, size}); }

private:
    static constexpr std::size_t kBlock = 4 * 1024 * 1024;

    std::size_t mappedSize() const { return (m_size + kBlock - 1) / kBlock * kBlock; }

    std::size_t m_size;
    char* m_start = nullptr;
};

constexpr std::string_view kSmallest =
    R"({"appVersion":"1","boards":[],"entries":[],"exportedAt":0.5,"schemaVersion":7})";

TEST(BackupFileIO, WhatIsWrittenIsReadAsTheSame) {
    RandomDocument documents(1);
    for (int round = 0; round < 300; ++round) {
        const auto document = documents.next();
        const auto bytes = BackupFileIO::encode(document);
        const auto decoded = BackupFileIO::decode(bytes);
        ASSERT_EQ(decoded, document) << "round " << round;
        ASSERT_EQ(BackupFileIO::encode(decoded), bytes) << "round " << round;
        std::string pieces;
        BackupFileIO::encode(document, [&](std::string_view piece) { pieces += piece; });
        ASSERT_EQ(pieces, textOf(bytes)) << "round " << round;
        ASSERT_TRUE(BackupFileIO::holds(bytes, document)) << "round " << round;
    }
}

TEST(BackupFileIO, HoldsADocumentOnlyWhereNothingDiffers) {
    const auto whole = BackupFileIO::readFile(KORVEX_BACKUP_CASES "/valid/everything.korvexbackup");
    const auto document = BackupFileIO::decode(whole);
    std::mt19937 random(4);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        auto changed = whole;
        changed[at] = static_cast<std::uint8_t>(random());
        std::optional<BackupDocument> read;
        tests::caseOf<BackupError>([&] { read = BackupFileIO::decode(changed); });
        EXPECT_EQ(BackupFileIO::holds(changed, document), read == document) << at;
    }
    auto shorter = document;
    shorter.entries.pop_back();
    auto longer = document;
    longer.boards.push_back(longer.boards.back());
    EXPECT_FALSE(BackupFileIO::holds(whole, shorter));
    EXPECT_FALSE(BackupFileIO::holds(whole, longer));
}

TEST(BackupFileIO, AnotherReaderFindsTheOneForm) {
    const tests::TemporaryFolder folder;
    RandomDocument documents(2);
    for (int round = 0; round < 40; ++round) {
        write(folder / std::to_string(round), textOf(BackupFileIO::encode(documents.next())));
    }
    const auto command =
        std::string(KORVEX_PYTHON " " KORVEX_CHECK_FORM " ") + folder.path().string();
    EXPECT_EQ(std::system(command.c_str()), 0);
}

TEST(BackupFileIO, AbsentFieldsAreLeftOutAndTheRestStandsInOrder) {
    const BackupDocument empty{.exportedAt = {0.5}, .appVersion = "1"};
    EXPECT_EQ(textOf(BackupFileIO::encode(empty)), kSmallest);
}

TEST(BackupFileIO, BytesThatAreNoTextCostOnlyThemselves) {
    BackupDocument document{.appVersion = "1"};
    document.entries = {
        {.type = "text", .content = "a\xff\xc3 \"b", .richTextData = base::Bytes()}};
    const auto decoded = BackupFileIO::decode(BackupFileIO::encode(document));
    document.entries.front().content = "a\uFFFD\uFFFD \"b";
    EXPECT_EQ(decoded, document);
}

TEST(BackupFileIO, ADateThatIsNoNumberIsNotWritten) {
    for (const auto seconds : {std::nan(""), std::numeric_limits<double>::infinity()}) {
        BackupDocument document{.appVersion = "1"};
        document.entries = {{.dueDate = base::Instant{seconds}}};
        EXPECT_EQ(tests::caseOf<BackupError>([&] { BackupFileIO::encode(document); }),
                  BackupErrorCase::invalidDocument);
    }
}

TEST(BackupFileIO, ADamagedDocumentIsRefusedAndHarmsNothing) {
    const auto whole = BackupFileIO::readFile(KORVEX_BACKUP_CASES "/valid/everything.korvexbackup");
    const auto expectReadOrRefused = [](std::span<const std::uint8_t> damaged) {
        const auto error = tests::caseOf<BackupError>([&] { BackupFileIO::decode(damaged); });
        ASSERT_TRUE(!error || error == BackupErrorCase::invalidDocument) << textOf(damaged);
    };
    std::mt19937 random(3);
    for (std::size_t at = 0; at < whole.size(); ++at) {
        // In memory of its own size, so that reading past the end shows.
        const base::Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(at));
        EXPECT_EQ(tests::caseOf<BackupError>([&] { BackupFileIO::decode(cut); }),
                  BackupErrorCase::invalidDocument);
        auto shorter = whole;
        shorter.erase(shorter.begin() + static_cast<std::ptrdiff_t>(at));
        expectReadOrRefused(shorter);
        auto changed = whole;
        changed[at] = static_cast<std::uint8_t>(random());
        expectReadOrRefused(changed);
    }
}

TEST(BackupFileIO, UnknownKeysMayHoldWhatIsNestedUpToALimit) {
    const auto nested = [](std::size_t depth) {
        auto text = std::string(kSmallest.substr(0, kSmallest.size() - 1)) + R"(,"z":)";
        return text + std::string(depth, '[') + std::string(depth, ']') + "}";
    };
    EXPECT_NO_THROW(BackupFileIO::decode(bytesOf(nested(511))));
    EXPECT_THROW(BackupFileIO::decode(bytesOf(nested(512))), BackupError);
    EXPECT_THROW(BackupFileIO::decode(bytesOf(nested(10'000'000))), BackupError);
}

TEST(BackupFileIO, TheLimitIsJudgedByTheLength) {
    constexpr auto kLimit = BackupDocument::kMaximumBytes;
    Blanks file(kLimit + 1);
    EXPECT_EQ(tests::caseOf<BackupError>([&] { BackupFileIO::decode(file.first(kLimit + 1)); }),
              BackupErrorCase::tooLarge);
    // One key more, that holds a string up to the end.
    const auto head = std::string(kSmallest.substr(0, kSmallest.size() - 1)) + R"(,"z":")";
    file.put(0, head);
    EXPECT_EQ(tests::caseOf<BackupError>([&] { BackupFileIO::decode(file.first(kLimit)); }),
              BackupErrorCase::invalidDocument);
    file.put(kLimit - 2, "\"}");
    EXPECT_EQ(tests::caseOf<BackupError>([&] { BackupFileIO::decode(file.first(kLimit)); }),
              std::nullopt);
    EXPECT_EQ(tests::caseOf<BackupError>([&] { BackupFileIO::decode(file.first(kLimit + 1)); }),
              BackupErrorCase::tooLarge);
}

TEST(BackupFileIO, TheLimitHoldsForWhatIsWritten) {
    BackupDocument document{.appVersion = "1"};
    document.entries = {{.type = "text"}};
    const auto empty = BackupFileIO::encode(document).size();
    auto& content = document.entries.front().content;
    content.reserve(BackupDocument::kMaximumBytes + 1);
    content.resize(BackupDocument::kMaximumBytes - empty, 'x');
    EXPECT_EQ(BackupFileIO::encode(document).size(), BackupDocument::kMaximumBytes);
    content.push_back('x');
    EXPECT_NO_THROW(document.checkBackupSize(BackupDocument::kMaximumBytes));
    EXPECT_EQ(tests::caseOf<BackupError>([&] { BackupFileIO::encode(document); }),
              BackupErrorCase::tooLarge);
    EXPECT_EQ(tests::caseOf<BackupError>(
                  [&] { BackupFileIO::encode(document, [](std::string_view) {}); }),
              BackupErrorCase::tooLarge);
    content.resize(BackupDocument::kMaximumBytes + 1);
    EXPECT_EQ(tests::caseOf<BackupError>([&] { BackupFileIO::encode(document); }),
              BackupErrorCase::tooLarge);
}

TEST(BackupFileIO, ReadsOnlyRegularFilesWithinTheLimit) {
    const tests::TemporaryFolder folder;
    const auto file = folder / "a.korvexbackup";
    write(file, kSmallest);
    EXPECT_EQ(textOf(BackupFileIO::readFile(file)), kSmallest);
    write(folder / "empty", "");
    EXPECT_TRUE(BackupFileIO::readFile(folder / "empty").empty());
    std::filesystem::create_symlink(file, folder / "link");
    EXPECT_EQ(textOf(BackupFileIO::readFile(folder / "link")), kSmallest);

    std::filesystem::resize_file(folder / "empty", BackupDocument::kMaximumBytes + 1);
    EXPECT_EQ(tests::caseOf<BackupError>([&] { BackupFileIO::readFile(folder / "empty"); }),
              BackupErrorCase::tooLarge);

    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const auto& other : {folder.path(), folder / "pipe", std::filesystem::path("/dev/zero")}) {
        EXPECT_EQ(tests::caseOf<BackupError>([&] { BackupFileIO::readFile(other); }),
                  BackupErrorCase::invalidDocument)
            << other;
    }
    try {
        BackupFileIO::readFile(folder / "missing");
        ADD_FAILURE() << "a missing file was read";
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
    }
}

} // namespace
} // namespace korvex::backup
