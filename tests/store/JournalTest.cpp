#include "StoreFixture.h"

#include "support/FolderNames.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <gmock/gmock.h>

#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <utility>

namespace korvex::tests {

using model::Board;
using store::ModelContext;

/// A store whose newest changes stand only in its journal.
class JournalTest : public StoreFixture {
protected:
    static constexpr int kBoards = 40;

    void SetUp() override {
        const auto container = open();
        ModelContext context(*container);
        for (int i = 0; i < kBoards; ++i) {
            addBoard(context, "Board " + std::to_string(i));
            context.save();
            if (i == kBoards / 2) {
                container->checkpoint();
            }
        }
    }

    std::size_t boardCount() {
        const auto container = open();
        notices = container->notices();
        return ModelContext(*container).count<Board>();
    }

    /// Some 25 pages, all of them other ones than those of the save before.
    static void saveMuch(ModelContext& context, int number) {
        context.fetch<Board>().front()->setName(
            std::string(100'000, static_cast<char>('a' + number % 26)));
        context.save();
    }

    std::filesystem::path sharedMemory() const { return folder() / "Primary.store-shm"; }
    std::vector<std::string> notices;
};

TEST_F(JournalTest, ARemovedJournalIsNoticedUntilSomebodyGoesOnAndNeverAFreshStore) {
    std::filesystem::remove(journalFile());
    std::filesystem::remove(sharedMemory());
    EXPECT_EQ(boardCount(), std::size_t{kBoards / 2 + 1});
    ASSERT_EQ(notices.size(), 1U);
    EXPECT_THAT(notices[0], testing::HasSubstr("The newest 19 saved changes are missing"));
    EXPECT_EQ(boardCount(), std::size_t{kBoards / 2 + 1});
    EXPECT_EQ(notices.size(), 1U) << "who only looks forgets nothing";
    {
        // Nor does who saves: what is missing cannot be counted any more, but is not held for
        // sound.
        const auto container = open();
        ModelContext context(*container);
        addBoard(context, "Goes on");
        context.save();
    }
    EXPECT_TRUE(open()->isFromElsewhere());
    open()->adopt();
    EXPECT_FALSE(open()->isFromElsewhere());
    EXPECT_EQ(boardCount(), std::size_t{kBoards / 2 + 2});
    EXPECT_TRUE(notices.empty());
}

TEST_F(JournalTest, ACutJournalIsNoticedAndItsRemainsAreKept) {
    std::filesystem::resize_file(journalFile(), std::filesystem::file_size(journalFile()) / 2);
    std::filesystem::remove(sharedMemory());
    const auto remains = std::filesystem::file_size(journalFile());
    // First on a disk that is too small for them.
    ::rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    auto small = before;
    small.rlim_cur = remains - 1;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    boardCount();
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_THAT(notices, testing::ElementsAre(testing::HasSubstr("could not be kept: File too")));
    EXPECT_THAT(namesIn(folder()), testing::Not(testing::Contains(testing::HasSubstr("before"))));
    // Then after a kill in the middle of the copy.
    std::ofstream(folder() / ".Primary.store.journal-before-40.new-abcdef") << "half";
    const auto count = boardCount();
    EXPECT_GE(count, std::size_t{kBoards / 2 + 1});
    EXPECT_LT(count, std::size_t{kBoards});
    ASSERT_EQ(notices.size(), 1U);
    const auto kept = folder() / "Primary.store.journal-before-40";
    ASSERT_TRUE(std::filesystem::exists(kept));
    EXPECT_EQ(std::filesystem::file_size(kept), remains);
    EXPECT_THAT(namesIn(folder()), testing::Not(testing::Contains(testing::HasSubstr(".new-"))));
}

TEST_F(JournalTest, ABitFlippedInTheJournalIsNoticed) {
    {
        std::fstream file(journalFile(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(static_cast<std::streamoff>(std::filesystem::file_size(journalFile()) / 2));
        file.put('\x55');
    }
    std::filesystem::remove(sharedMemory());
    EXPECT_LT(boardCount(), std::size_t{kBoards});
    EXPECT_EQ(notices.size(), 1U);
}

TEST_F(JournalTest, WhatASaveThatFailedHasWrittenGoesAgain) {
    const auto container = open();
    ModelContext context(*container);
    saveMuch(context, 0); // which is not in the store file yet
    const auto before = std::filesystem::file_size(journalFile());
    for (int i = 0; i < 100; ++i) {
        addBoard(context, std::string(100'000, 'x'));
    }
    ::rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    auto small = limit;
    small.rlim_cur = 6 << 20;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_THROW(context.save(), store::StoreError);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::signal(SIGXFSZ, handler);
    EXPECT_LE(std::filesystem::file_size(journalFile()), before);
    context.save();
    EXPECT_EQ(boardCount(), std::size_t{kBoards + 100});
}

TEST_F(JournalTest, ItIsTakenUpAtTheNextStartWhateverTheSharedMemorySays) {
    for (const auto isStale : {false, true}) {
        if (isStale) {
            std::ofstream(sharedMemory(), std::ios::binary) << std::string(32'768, '\x7f');
        }
        EXPECT_EQ(boardCount(), std::size_t{kBoards});
        EXPECT_TRUE(notices.empty());
    }
}

TEST_F(JournalTest, AJournalRemovedWhileTheStoreIsOpenStopsSaves) {
    const auto container = open();
    ModelContext context(*container);
    addBoard(context, "Before");
    context.save();
    std::filesystem::remove(journalFile());
    addBoard(context, "After");
    try {
        context.save();
        FAIL() << "saved into a journal that is gone";
    } catch (const store::StoreError& error) {
        EXPECT_EQ(error.which(), store::StoreErrorCase::changesMissing);
    }
    EXPECT_TRUE(context.hasChanges());
}

TEST_F(JournalTest, ItStaysShortInOneLongProgramAndInManyShortOnes) {
    constexpr auto kLong = std::uintmax_t{5} << 20U;
    for (const auto isOneProgram : {true, false}) {
        std::uintmax_t longest = 0;
        std::unique_ptr<store::ModelContainer> container;
        for (int i = 0; i < 100; ++i) {
            if (!container || !isOneProgram) {
                container = open();
            }
            ModelContext context(*container);
            saveMuch(context, i);
            longest = std::max(longest, std::filesystem::file_size(journalFile()));
        }
        EXPECT_LT(longest, kLong) << isOneProgram;
        if (isOneProgram) {
            EXPECT_GT(longest, kLong / 2) << "or it was never moved";
        }
    }
}

/// A cut file would grow again with each commit; and what was moved must not be taken for the
/// newest.
TEST_F(JournalTest, ItIsWrittenOverAndWhatStandsBehindIsDead) {
    const auto container = open();
    ModelContext context(*container);
    std::uintmax_t before = 0;
    auto size = std::filesystem::file_size(journalFile());
    for (int i = 0; size > before; ++i) {
        ASSERT_LT(i, 100) << "it grows with each save";
        saveMuch(context, i);
        before = std::exchange(size, std::filesystem::file_size(journalFile()));
    }
    EXPECT_EQ(size, before);

    // As a power loss leaves them, and the former pages harmed.
    const TemporaryFolder other;
    const auto copy = other.path() / "Primary.store";
    std::filesystem::copy_file(storeFile(), copy);
    const auto journal = other.path() / "Primary.store-wal";
    std::filesystem::copy_file(journalFile(), journal);
    std::filesystem::resize_file(journal, size / 2);
    const auto found = open({.file = copy});
    ModelContext reading(*found);
    EXPECT_EQ(reading.fetch<Board>().front()->name(), context.fetch<Board>().front()->name());
    EXPECT_EQ(reading.fetch<Board>().size(), std::size_t{kBoards});
    EXPECT_TRUE(found->check().problems.empty());
}

TEST_F(JournalTest, AJournalThatIsLongAtTheStartIsMovedIntoTheStoreFile) {
    {
        const auto container = open();
        ModelContext context(*container);
        // Another program that reads all the while.
        SQLite::Database reader(storeFile().string(), SQLite::OPEN_READONLY);
        reader.exec("BEGIN; SELECT count(*) FROM Board");
        for (int i = 0; i < 60; ++i) {
            saveMuch(context, i);
        }
        EXPECT_GT(std::filesystem::file_size(journalFile()), std::uintmax_t{5} << 20U);
    }
    EXPECT_EQ(boardCount(), std::size_t{kBoards});
    EXPECT_EQ(std::filesystem::file_size(journalFile()), 0U);
    EXPECT_TRUE(notices.empty());
}

TEST_F(JournalTest, WhoeverEndsLeavesNoLongJournal) {
    constexpr std::uintmax_t kLongest = 256 * 1024;
    {
        const auto container = open();
        ModelContext context(*container);
        addBoard(context, "Newest");
        for (auto* const board : context.fetch<Board>()) {
            board->setName(std::string(10'000, 'n'));
        }
        context.save();
        ASSERT_GT(std::filesystem::file_size(journalFile()), kLongest);
    }
    EXPECT_LE(std::filesystem::file_size(journalFile()), kLongest);
    for (const auto& companion : {journalFile(), sharedMemory()}) {
        std::filesystem::remove(companion);
    }
    EXPECT_EQ(boardCount(), std::size_t{kBoards + 1}) << "the file alone is whole";
    EXPECT_TRUE(notices.empty());
}

} // namespace korvex::tests
