#include "StoreFixture.h"

#include <gmock/gmock.h>

#include <fstream>

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

    std::filesystem::path sharedMemory() const { return folder() / "Primary.store-shm"; }
    std::vector<std::string> notices;
};

TEST_F(JournalTest, ARemovedJournalIsNoticedOnceAndNeverAFreshStore) {
    std::filesystem::remove(journalFile());
    std::filesystem::remove(sharedMemory());
    EXPECT_EQ(boardCount(), std::size_t{kBoards / 2 + 1});
    ASSERT_EQ(notices.size(), 1U);
    EXPECT_THAT(notices[0], testing::HasSubstr("The newest 19 saved changes are missing"));
    EXPECT_EQ(boardCount(), std::size_t{kBoards / 2 + 1});
    EXPECT_TRUE(notices.empty());
}

TEST_F(JournalTest, ACutJournalIsNoticedAndItsRemainsAreKept) {
    std::filesystem::resize_file(journalFile(), std::filesystem::file_size(journalFile()) / 2);
    std::filesystem::remove(sharedMemory());
    const auto remains = std::filesystem::file_size(journalFile());
    const auto count = boardCount();
    EXPECT_GE(count, std::size_t{kBoards / 2 + 1});
    EXPECT_LT(count, std::size_t{kBoards});
    ASSERT_EQ(notices.size(), 1U);
    const auto kept = folder() / "Primary.store.journal-before-40";
    ASSERT_TRUE(std::filesystem::exists(kept));
    EXPECT_EQ(std::filesystem::file_size(kept), remains);
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

TEST_F(JournalTest, StaleSharedMemoryIsRebuilt) {
    std::ofstream(sharedMemory(), std::ios::binary) << std::string(32'768, '\x7f');
    EXPECT_EQ(boardCount(), std::size_t{kBoards});
    EXPECT_TRUE(notices.empty());
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

TEST_F(JournalTest, ALongJournalIsMovedIntoTheStoreFile) {
    const auto container = open();
    ModelContext context(*container);
    Board& board = *context.fetch<Board>().front();
    for (int i = 0; i < 3'000; ++i) {
        board.setName("Name " + std::to_string(i));
        context.save();
    }
    EXPECT_LT(std::filesystem::file_size(journalFile()), 8U << 20U);
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
