#include "StoreFixture.h"

#include "store/StoreFile.h"
#include "store/StoreLock.h"
#include "support/RestoredStore.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <gmock/gmock.h>

#include <chrono>
#include <set>
#include <utility>

namespace korvex::tests {

using model::Board;
using model::Entry;
using store::ChangeSet;
using store::ModelContext;

/// Two connections on one file, as two programs have them.
class SharedStoreTest : public StoreFixture {
protected:
    void SetUp() override {
        mine = open();
        theirs = open();
        context.emplace(*mine);
        other.emplace(*theirs);
        board = &addBoard(*context, "Home");
        context->save();
        other->refresh();
        sameBoard = other->find<Board>(board->id());
        ASSERT_TRUE(sameBoard);
    }
    void TearDown() override {
        context.reset();
        other.reset();
    }

    std::unique_ptr<store::ModelContainer> mine;
    std::unique_ptr<store::ModelContainer> theirs;
    std::optional<ModelContext> context;
    std::optional<ModelContext> other;
    Board* board = nullptr;
    Board* sameBoard = nullptr;
};

TEST_F(SharedStoreTest, RefreshBringsInsertionsChangesMovesAndDeletions) {
    Entry& kept = addTodo(*context, *board, "kept");
    Entry& removed = addTodo(*context, *board, "removed");
    context->save();
    other->refresh();
    ASSERT_EQ(sameBoard->entries().size(), 2U);
    Entry* sameKept = other->find<Entry>(kept.id());
    Entry* sameRemoved = other->find<Entry>(removed.id());

    ChangeSet seen;
    const auto observing =
        other->didChange().connect([&](const ChangeSet& changes) { seen = changes; });
    Board& work = addBoard(*context, "Work");
    Entry& added = addTodo(*context, *board, "added");
    kept.setContent("kept on");
    kept.setBoard(&work);
    kept.setAttachmentData(base::Bytes{4});
    context->remove(removed);
    context->save();
    other->refresh();

    EXPECT_EQ(seen.origin, ChangeSet::Origin::elsewhere);
    EXPECT_THAT(seen.inserted, testing::UnorderedElementsAre(work.id(), added.id()));
    EXPECT_THAT(seen.updated, testing::ElementsAre(kept.id()));
    EXPECT_THAT(seen.deleted, testing::ElementsAre(removed.id()));
    EXPECT_EQ(sameKept->content(), "kept on");
    EXPECT_EQ(sameKept->board()->name(), "Work");
    EXPECT_EQ(sameKept->attachmentData(), base::Bytes{4});
    EXPECT_FALSE(sameRemoved->isLive());
    ASSERT_EQ(sameBoard->entries().size(), 1U);
    EXPECT_EQ(sameBoard->entries()[0]->content(), "added");
}

TEST_F(SharedStoreTest, WhoeverIsFarBehindStillSeesEverything) {
    auto count = std::size_t{0};
    // More saves than the log keeps, or none, and then one that it names, or one too large for it.
    for (const auto& [saves, added] : {std::pair(800, 1), {0, 20'000}}) {
        Entry& changed = addTodo(*context, *board, "changed");
        Entry& removed = addTodo(*context, *board, "removed");
        context->save();
        other->refresh();
        ASSERT_EQ(sameBoard->entries().size(), count + 2);
        for (int i = 0; i < saves; ++i) {
            changed.setSortOrder(i + 1);
            context->save();
        }
        context->remove(removed);
        for (int i = 0; i < added; ++i) {
            addTodo(*context, *board, "one more", i);
        }
        context->save();
        other->refresh();
        count += static_cast<std::size_t>(added) + 1;
        EXPECT_EQ(sameBoard->entries().size(), count);
        EXPECT_EQ(other->find<Entry>(changed.id())->sortOrder(), saves);
        EXPECT_EQ(other->find<Entry>(removed.id()), nullptr);
    }
}

TEST_F(SharedStoreTest, AStoreThatWentBackIsReadAgain) {
    Entry& changed = addTodo(*context, *board, "before");
    context->save();
    const auto revision = std::to_string(mine->revision());
    changed.setContent("after");
    Entry& added = addTodo(*context, *board, "added");
    context->save();
    other->refresh();
    Entry* same = other->find<Entry>(changed.id());
    ASSERT_TRUE(other->find<Entry>(added.id()));
    // As if a copy had been put back underneath.
    SQLite::Database underneath(storeFile().string(), SQLite::OPEN_READWRITE);
    underneath.exec(
        "DELETE FROM Entry WHERE content = 'added'; UPDATE Entry SET content = 'before', "
        "version = " +
        revision + "; DELETE FROM ChangeLog WHERE revision > " + revision);
    other->refresh();
    EXPECT_EQ(same->content(), "before");
    EXPECT_EQ(sameBoard->entries().size(), 1U);
    same->setContent("and on");
    other->save();
    EXPECT_EQ(std::to_string(theirs->revision() - 1), revision);
}

TEST_F(SharedStoreTest, ANewRowUnderADeletedRowsNumberIsAnotherRecord) {
    const auto contents = [&] {
        std::vector<std::string> all;
        for (const auto* const entry : other->fetch<Entry>({.order = {{Entry::sortOrderField}}})) {
            all.push_back(entry->content());
        }
        return all;
    };
    for (const auto isReadBeforeRefresh : {false, true}) {
        Entry& last = addTodo(*context, *board, "last");
        context->save();
        other->refresh();
        Entry* sameLast = other->find<Entry>(last.id());
        context->remove(last);
        context->save();
        Entry& next = addTodo(*context, *board, "next", 1);
        // The deleted one comes back, under another row's number.
        auto again = std::make_unique<Entry>(model::EntryFields{
            .id = last.id(), .typeRawValue = "todo", .content = "again", .sortOrder = 2});
        again->setBoard(board);
        auto& back = context->insert(std::move(again));
        context->save();

        std::set<base::Uuid> told;
        const auto observing = other->didChange().connect([&](const ChangeSet& changes) {
            for (const auto* ids : {&changes.inserted, &changes.updated, &changes.deleted}) {
                told.insert(ids->begin(), ids->end());
            }
        });
        if (isReadBeforeRefresh) {
            EXPECT_THAT(contents(), testing::ElementsAre("next", "again"));
        }
        other->refresh();
        EXPECT_THAT(contents(), testing::ElementsAre("next", "again"));
        EXPECT_FALSE(sameLast->isLive());
        EXPECT_EQ(other->find<Entry>(next.id())->content(), "next");
        EXPECT_EQ(other->find<Entry>(last.id())->content(), "again");
        EXPECT_THAT(told, testing::UnorderedElementsAre(next.id(), last.id()))
            << "what was read before the refresh is told all the same";
        context->remove(next);
        context->remove(back);
        context->save();
    }
}

TEST_F(SharedStoreTest, ARecordThatLostItsRowLeavesItToTheNewOne) {
    Entry& last = addTodo(*context, *board, "last");
    context->save();
    other->refresh();
    ASSERT_EQ(sameBoard->entries().size(), 1U);
    other->find<Entry>(last.id())->setContent("pending");
    context->remove(last);
    context->save();
    Entry& next = addTodo(*context, *board, "next", 1);
    context->save();
    other->refresh();
    const auto* const sameNext = other->find<Entry>(next.id());
    auto again = std::make_unique<Entry>(
        model::EntryFields{.id = last.id(), .typeRawValue = "todo", .content = "again"});
    again->setBoard(board);
    context->insert(std::move(again));
    context->save();
    other->refresh();
    next.setContent("changed");
    context->save();
    other->refresh();
    EXPECT_TRUE(sameNext->isLive());
    EXPECT_EQ(sameNext->content(), "changed");
    other->rollback();
}

TEST_F(SharedStoreTest, EntriesFindTheirBoardThatCameBackInAnotherRow) {
    enum class Came { bySave, byFile };
    for (const auto& [came, isLoaded] : {std::pair(Came::bySave, false),
                                         {Came::bySave, true},
                                         {Came::byFile, false},
                                         {Came::byFile, true}}) {
        Board& work = addBoard(*context, "Work");
        Entry& one = addTodo(*context, *board, "one");
        Entry& two = addTodo(*context, work, "two");
        context->save();
        other->refresh();
        const auto sameOne = other->find<Entry>(one.id());
        const auto sameTwo = other->find<Entry>(two.id());
        ASSERT_EQ(sameOne->board()->name(), "Home");
        if (isLoaded) {
            ASSERT_EQ(sameTwo->board()->entries().size(), 1U);
            ASSERT_EQ(sameOne->board()->entries().size(), 1U);
        }
        const auto home = board->id();
        const auto office = work.id();
        const auto first = one.id();
        const auto second = two.id();
        if (came == Came::bySave) {
            restoreEverything(*context);
        } else {
            // As a copy is put back underneath.
            const auto revision = std::to_string(mine->revision());
            addBoard(*context, "Later");
            context->save();
            SQLite::Database underneath(storeFile().string(), SQLite::OPEN_READWRITE);
            underneath.exec("DELETE FROM Board WHERE name = 'Later'; "
                            "UPDATE Board SET rowid = rowid + 100; "
                            "DELETE FROM ChangeLog WHERE revision > " +
                            revision);
        }
        other->refresh();
        context->refresh();
        auto* const onHome = other->find<Entry>(first);
        auto* const onWork = other->find<Entry>(second);
        auto* const otherHome = other->find<Board>(home);
        auto* const otherWork = other->find<Board>(office);
        EXPECT_EQ(onHome->board(), otherHome);
        EXPECT_EQ(onWork->board(), otherWork);
        EXPECT_THAT(otherHome->entries(), testing::ElementsAre(onHome));
        onHome->setBoard(otherWork);
        EXPECT_THAT(otherHome->entries(), testing::IsEmpty());
        EXPECT_THAT(otherWork->entries(), testing::UnorderedElementsAre(onHome, onWork));
        other->rollback();
        EXPECT_THAT(otherHome->entries(), testing::ElementsAre(onHome));
        onHome->setBoard(otherWork);
        other->save();
        context->refresh();
        EXPECT_EQ(context->find<Entry>(first)->board()->name(), "Work");
        other->remove(*onHome);
        other->remove(*onWork);
        other->remove(*otherWork);
        other->save();
        context->refresh();
        board = context->find<Board>(home);
    }
}

TEST_F(SharedStoreTest, WhatIsReadBeforeARefreshStandsOnOneBoard) {
    Board& work = addBoard(*context, "Work");
    Entry& entry = addTodo(*context, *board, "moves");
    context->save();
    other->refresh();
    ASSERT_EQ(sameBoard->entries().size(), 1U);
    entry.setBoard(&work);
    context->save();
    // Not told of it yet, another looks what stands on the board.
    auto* const sameWork = other->find<Board>(work.id());
    EXPECT_THAT(sameWork->entries(), testing::IsEmpty());
    other->refresh();
    auto* const same = other->find<Entry>(entry.id());
    EXPECT_THAT(sameWork->entries(), testing::ElementsAre(same));
    EXPECT_THAT(sameBoard->entries(), testing::IsEmpty());
}

TEST_F(SharedStoreTest, ARollbackIsWholeWhileTheStoreCannotBeRead) {
    Board& away = addBoard(*context, "Away");
    Entry& entry = addTodo(*context, *board, "moves");
    Entry& another = addTodo(*context, *board, "stays");
    context->save();
    other->refresh();
    auto& moved = *other->find<Entry>(entry.id());
    auto& removed = *other->find<Entry>(another.id());
    ASSERT_EQ(sameBoard->entries().size(), 2U);
    moved.setBoard(other->find<Board>(away.id()));
    moved.setContent("typed meanwhile");
    other->remove(removed);
    Board& work = addBoard(*context, "Work");
    entry.setBoard(&work);
    context->save();
    other->refresh();
    const auto rename = [&](const char* sql) {
        SQLite::Database(storeFile().string(), SQLite::OPEN_READWRITE).exec(sql);
    };
    ChangeSet seen;
    const auto observing =
        other->didChange().connect([&](const ChangeSet& changes) { seen = changes; });

    rename("ALTER TABLE Board RENAME TO Hidden");
    EXPECT_NO_THROW(other->rollback());
    EXPECT_FALSE(other->hasChanges());
    EXPECT_EQ(moved.content(), "moves");
    EXPECT_TRUE(removed.isLive());
    EXPECT_THAT(seen.updated, testing::ElementsAre(moved.id()));
    EXPECT_THAT(seen.inserted, testing::ElementsAre(removed.id()));
    EXPECT_THAT(sameBoard->entries(), testing::ElementsAre(&removed));
    rename("ALTER TABLE Hidden RENAME TO Board");
    EXPECT_EQ(moved.board(), other->find<Board>(work.id())) << "read once it is asked for";
    EXPECT_THAT(moved.board()->entries(), testing::ElementsAre(&moved));
}

TEST_F(SharedStoreTest, DifferentFieldsMergeAndMineWinTheSameField) {
    Entry& entry = addTodo(*context, *board, "base");
    context->save();
    other->refresh();
    Entry* same = other->find<Entry>(entry.id());
    entry.setContent("theirs");
    entry.setSortOrder(5);
    context->save();
    same->setContent("mine");
    same->setIsCompleted(true);
    other->save();
    context->refresh();
    for (const Entry* each : {static_cast<const Entry*>(&entry), static_cast<const Entry*>(same)}) {
        EXPECT_EQ(each->content(), "mine");
        EXPECT_EQ(each->sortOrder(), 5);
        EXPECT_TRUE(each->isCompleted());
    }
}

TEST_F(SharedStoreTest, ARecordDeletedUnderneathIsReportedAndNeverComesBack) {
    Entry& entry = addTodo(*context, *board, "doomed");
    context->save();
    other->refresh();
    Entry* same = other->find<Entry>(entry.id());
    same->setContent("typed meanwhile");
    context->remove(entry);
    context->save();
    try {
        other->save();
        FAIL() << "saved over a deletion";
    } catch (const store::StoreError& error) {
        EXPECT_EQ(error.which(), store::StoreErrorCase::conflict);
    }
    EXPECT_TRUE(other->hasChanges());
    EXPECT_EQ(same->content(), "typed meanwhile");
    other->rollback();
    EXPECT_FALSE(same->isLive());
    EXPECT_EQ(other->count<Entry>(), 0U);
    // Deleted on both sides is no conflict.
    Entry& another = addTodo(*context, *board, "another");
    context->save();
    other->refresh();
    other->remove(*other->find<Entry>(another.id()));
    context->remove(another);
    context->save();
    EXPECT_NO_THROW(other->save());
}

TEST_F(SharedStoreTest, NothingIsStoredOnABoardThatWasDeletedMeanwhile) {
    Entry& stays = addTodo(*context, addBoard(*context, "Work"), "stays");
    context->save();
    other->refresh();
    Entry& added = addTodo(*other, *sameBoard, "typed meanwhile");
    context->remove(*board);
    context->save();
    EXPECT_THROW(other->save(), store::StoreError);
    EXPECT_TRUE(added.isInserted());
    EXPECT_EQ(added.content(), "typed meanwhile");
    other->rollback();
    auto& moved = *other->find<Entry>(stays.id());
    Board& gone = addBoard(*context, "Gone");
    context->save();
    other->refresh();
    moved.setBoard(other->find<Board>(gone.id()));
    context->remove(gone);
    context->save();
    EXPECT_THROW(other->save(), store::StoreError);
    other->rollback();
    EXPECT_EQ(moved.board()->name(), "Work");
    EXPECT_EQ(ModelContext(*mine).count<Entry>(), 1U);
    EXPECT_TRUE(mine->check().problems.empty());
}

TEST_F(SharedStoreTest, AHeldLockRefusesAfterItsTimeAndLosesNothing) {
    store::ModelConfiguration impatient{.file = storeFile(),
                                        .lockTimeout = std::chrono::milliseconds(30)};
    const auto third = open(impatient);
    ModelContext waiting(*third);
    for (const auto isRemoved : {false, true}) {
        addBoard(waiting, "Waiting");
        if (isRemoved) {
            // Both have it open: a lock on it would exclude nobody any more.
            std::filesystem::remove(folder() / "Primary.store.lock");
        }
        {
            const store::LockedStep step(*context);
            EXPECT_TRUE(std::filesystem::exists(folder() / "Primary.store.lock"));
            try {
                waiting.save();
                FAIL() << "saved without the lock";
            } catch (const store::StoreError& error) {
                EXPECT_EQ(error.which(), store::StoreErrorCase::busy);
            }
            EXPECT_TRUE(waiting.hasChanges());
        }
        EXPECT_NO_THROW(waiting.save());
    }
}

TEST_F(SharedStoreTest, WhoAsksToBeAloneIsHeardWhileItHoldsTheLockAndLeavesNothingWhenKilled) {
    constexpr std::size_t kSoleRequestAt = 32;
    const auto lockFile = store::StoreFile(storeFile()).lockFile();
    const auto heard = [&] { // by other programs
        const store::LockedStep step(*context);
        return store::SoleRequest::stands(lockFile);
    };
    {
        const store::SoleRequest request(lockFile);
        EXPECT_TRUE(heard());
        static_cast<void>(store::SoleRequest(lockFile));
        EXPECT_TRUE(heard()) << "it goes on";
    }
    EXPECT_FALSE(heard());
    const auto asked = bytesOf(lockFile).replace(kSoleRequestAt, 1, "\1");
    std::ofstream(lockFile, std::ios::in | std::ios::binary) << asked;
    EXPECT_TRUE(heard());
    EXPECT_FALSE(store::SoleRequest::stands(lockFile)) << "nobody holds the lock";
    addBoard(*context, "Saved");
    context->save();
    EXPECT_FALSE(heard()) << "somebody has saved since";
}

TEST_F(SharedStoreTest, AnImpatientProgramDoesNotWaitForWhoKnowsNoLockOfOursEither) {
    mine->setPatience(std::chrono::milliseconds(0));
    const auto third = open({.file = storeFile(), .lockTimeout = std::chrono::milliseconds(0)});
    ModelContext born(*third);
    for (auto* const impatient : {&*context, &born}) {
        SQLite::Database stranger(storeFile().string(), SQLite::OPEN_READWRITE);
        stranger.exec("BEGIN IMMEDIATE");
        addBoard(*impatient, "Waiting");
        const auto begin = std::chrono::steady_clock::now();
        try {
            impatient->save();
            FAIL() << "saved beside another's transaction";
        } catch (const store::StoreError& error) {
            EXPECT_EQ(error.which(), store::StoreErrorCase::busy);
        }
        EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(2));
        stranger.exec("ROLLBACK");
        EXPECT_NO_THROW(impatient->save());
    }
}

} // namespace korvex::tests
