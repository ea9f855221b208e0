#include "StoreFixture.h"

#include "store/SoleHold.h"
#include "store/salvage/StoreSalvage.h"
#include "support/CaseOf.h"
#include "support/FileSizeLimit.h"
#include "support/FolderNames.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <exception>
#include <fstream>
#include <future>
#include <map>
#include <thread>
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

    std::map<std::string, std::string> filesNow() const {
        std::map<std::string, std::string> files;
        for (const auto& each : std::filesystem::directory_iterator(folder())) {
            files[each.path().filename()] = bytesOf(each.path());
        }
        return files;
    }
    void putBack(const std::map<std::string, std::string>& files) const {
        for (const auto& each : std::filesystem::directory_iterator(folder())) {
            std::filesystem::remove(each.path());
        }
        for (const auto& [name, contents] : files) {
            std::ofstream(folder() / name, std::ios::binary) << contents;
        }
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
    // First on a disk that is too small for them: whoever went on would write over them.
    {
        const FileSizeLimit limit(remains - 1);
        EXPECT_EQ(refusal(), store::StoreErrorCase::inputOutput);
    }
    EXPECT_EQ(std::filesystem::file_size(journalFile()), remains);
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
    {
        const FileSizeLimit limit(6 << 20);
        EXPECT_THROW(context.save(), store::StoreError);
    }
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

/// Until it is moved for the first time, all words of a store stand in it. SQLite, were it to open
/// the empty file, would remove it.
TEST_F(JournalTest, WhatStandsInItIsSavedWhereTheFileIsCutToNothing) {
    putBack({});
    constexpr int kTodos = 30;
    constexpr int kAtOnce = 5;
    std::size_t firstSave = 0;
    {
        const auto container = open();
        ModelContext context(*container);
        auto& board = addBoard(context, "All");
        for (int i = 0; i < kTodos; ++i) {
            addTodo(context, board, "todo " + std::to_string(i) + std::string(150, 'x'), i);
            if (i % kAtOnce == kAtOnce - 1) {
                context.save();
                firstSave = i < kAtOnce ? std::filesystem::file_size(journalFile()) : firstSave;
            }
        }
    }
    const auto made = filesNow();
    const auto journal = made.at("Primary.store-wal");
    // How much is left of the file and of its journal, which byte of that is harmed, how many todos
    // are saved, and whether it is said that changes are missing.
    const struct {
        const char* name;
        std::size_t file;
        std::size_t journal;
        int todos;
        std::size_t notices = 0;
        std::size_t harmed = std::string::npos;
    } cases[] = {
        {"nothing", 0, journal.size(), kTodos},
        {"less than a head", 99, journal.size(), kTodos},
        {"less than a page", 1'000, journal.size(), kTodos},
        {"nothing, and the journal is cut in a frame", 0, journal.size() - 100, kTodos - kAtOnce,
         1},
        {"nothing, and a bit is flipped after the first save", 0, journal.size(), kAtOnce, 1,
         firstSave + 100},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        auto files = made;
        files["Primary.store"].resize(each.file);
        auto& left = files["Primary.store-wal"];
        left.resize(each.journal);
        if (each.harmed < left.size()) {
            left[each.harmed] = static_cast<char>(left[each.harmed] ^ 1);
        }
        files.erase("Primary.store-shm");
        putBack(files);
        if (each.file < 100) {
            EXPECT_EQ(refusal(), store::StoreErrorCase::notAStore);
            EXPECT_EQ(refusal({.allowsSave = false}), store::StoreErrorCase::notAStore);
            EXPECT_EQ(caseOf<store::StoreError>(
                          [&] { store::StoreFile(storeFile()).copyTo(folder() / "copy"); }),
                      store::StoreErrorCase::notAStore);
            EXPECT_TRUE(filesNow() == files) << "it was not left as it is";
        }
        const auto report = store::salvageStore(storeFile(), model::currentSchema(),
                                                std::chrono::milliseconds(50), log);
        EXPECT_EQ(report.notices.size(), each.notices);
        EXPECT_EQ(report.saved, static_cast<std::size_t>(each.todos) + 1);
        EXPECT_FALSE(report.mayMissMore);
        const auto container = open();
        EXPECT_TRUE(container->notices().empty());
        ModelContext context(*container);
        EXPECT_EQ(context.count<model::Entry>(), static_cast<std::size_t>(each.todos));
        EXPECT_EQ(context.fetch<Board>().front()->entries().size(),
                  static_cast<std::size_t>(each.todos));
        if (each.file < 100) {
            EXPECT_TRUE(filesNow().at(report.kept.filename().string() + "-wal") == left);
        }
    }
    putBack({{"Primary.store", ""}, {"Primary.store-wal", "no journal"}});
    EXPECT_EQ(caseOf<store::StoreError>([&] {
                  store::salvageStore(storeFile(), model::currentSchema(),
                                      std::chrono::milliseconds(50), log);
              }),
              store::StoreErrorCase::nothingReadable);
    EXPECT_EQ(filesNow().at("Primary.store-wal"), "no journal");
}

TEST_F(JournalTest, ItIsMovedOnceWhoeverReadsInItHasEnded) {
    std::promise<void> reads;
    std::promise<void> wasBusy;
    const std::jthread other([&] {
        SQLite::Database reader(storeFile().string(), SQLite::OPEN_READONLY);
        reader.exec("BEGIN; SELECT count(*) FROM Board");
        reads.set_value();
        wasBusy.get_future().wait_for(std::chrono::seconds(10));
    });
    reads.get_future().wait();
    const store::StoreFile file(storeFile());
    EXPECT_EQ(
        caseOf<store::StoreError>([&] { store::SoleHold(file, std::chrono::milliseconds(1)); }),
        store::StoreErrorCase::busy);
    EXPECT_TRUE(file.hasJournal());
    wasBusy.set_value();
    store::SoleHold hold(file, std::chrono::seconds(10));
    EXPECT_FALSE(file.hasJournal());
    hold.copyTo(folder() / "copy");
}

TEST_F(JournalTest, WhoCannotBeAloneIsToldWhichProgramIsThere) {
    std::array<int, 2> ready{};
    ASSERT_EQ(::pipe2(ready.data(), O_CLOEXEC), 0);
    const auto other = ::fork();
    ASSERT_GE(other, 0);
    if (other == 0) {
        ::prctl(PR_SET_NAME, "onlooker");
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        try {
            SQLite::Database reader(storeFile().string(), SQLite::OPEN_READONLY);
            static_cast<void>(reader.execAndGet("SELECT count(*) FROM Board"));
            static_cast<void>(::write(ready[1], "!", 1));
            ::pause();
        } catch (const std::exception&) { // it must not go on with the other tests
        }
        ::_exit(1);
    }
    ::close(ready[1]); // so that one that has ended is not waited for
    char said = 0;
    EXPECT_EQ(::read(ready[0], &said, 1), 1);
    ::close(ready[0]);
    const store::StoreFile file(storeFile());
    std::string refusal;
    try {
        store::SoleHold(file, std::chrono::milliseconds(1));
    } catch (const store::StoreError& error) {
        refusal = error.errorDescription();
    }
    ::kill(other, SIGKILL);
    ::waitpid(other, nullptr, 0);
    EXPECT_EQ(refusal,
              "Another program keeps the store busy. Nothing was changed; try again. (it is "
              "open in onlooker, process " +
                  std::to_string(other) + ")");
}

} // namespace korvex::tests
