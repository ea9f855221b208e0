#include "storage/BackupFixture.h"

#include "model/ServiceErrors.h"
#include "storage/CloudStorePreparation.h"
#include "storage/RestoreError.h"
#include "storage/StoreMarkers.h"
#include "storage/StoreStart.h"
#include "store/StoreError.h"
#include "support/CaseOf.h"
#include "support/OldStore.h"

#include <sys/stat.h>

#include <thread>

namespace korvex::storage {
namespace {

using model::Board;
using model::Entry;
using tests::caseOf;
using tests::OldStore;

using BackupServiceTest = BackupFixture;

TEST_F(BackupServiceTest, AnExportIsTheSavedStoreAndNothingElse) {
    const auto reader = openForReading(container->configuration().file, log);
    context->fetch<Board>().front()->setName("not saved");
    const auto expected = stored();
    fs::create_directories(out);
    // What killed runs left of this backup and of others; another file is none of it.
    std::ofstream(out / ".mine.korvexbackup.new-abcdef") << "half";
    std::ofstream(out / ".yesterday.korvexbackup.new-abcdef") << "half";
    std::ofstream(out / ".mine.korvexbackup.new-other-1") << "kept";
    std::ofstream(out / ".notes.txt.new-abcdef") << "kept";
    const auto summary = exportBackup(*reader, target, kNow, log, work);
    EXPECT_EQ(inFile(target), expected);
    EXPECT_EQ(summary,
              (BackupSummary{
                  .exportedAt = kNow, .boards = 2, .entries = 4, .bytes = fs::file_size(target)}));
    EXPECT_EQ(namesIn(out), (std::set<std::string>{".mine.korvexbackup.new-other-1",
                                                   ".notes.txt.new-abcdef", "mine.korvexbackup"}));
    EXPECT_EQ(fs::status(target).permissions(), fs::perms(0600));
    context->rollback();
    EXPECT_NO_THROW(backup::validate(expected, log));
}

TEST_F(BackupServiceTest, AFailedExportLeavesTheFileAsItWas) {
    fs::create_directories(out / "folder");
    std::ofstream(target) << "before";
    const auto cancelAt = [&](Stage stage) {
        return [&, stage] {
            const auto stop = std::make_unique<std::stop_source>();
            Work cancelled(
                [&](const Progress& progress) {
                    if (progress.stage == stage) {
                        stop->request_stop();
                    }
                },
                stop->get_token());
            exportBackup(*container, target, kNow, log, cancelled);
        };
    };
    for (const auto stage : {Stage::reading, Stage::writing, Stage::verifying}) {
        EXPECT_EQ(refusal(cancelAt(stage)), Cancelled().errorDescription());
    }
    EXPECT_EQ(refusal([&] { exportBackup(*container, out / "folder", kNow, log, work); }),
              (out / "folder").string() + " is not a file. Choose another one for the backup.");
    const auto pipe = out / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const auto noFile = pipe.string() + " is not a file. Choose another one for the backup.";
    EXPECT_EQ(refusal([&] { exportBackup(*container, pipe, kNow, log, work); }), noFile);
    EXPECT_EQ(refusal([&] { readBackup(pipe, work); }), noFile);
    fs::remove(pipe);
    EXPECT_EQ(refusal([&] { exportBackup(*container, target / "x", kNow, log, work); }),
              "The backup could not be written: Not a directory.");
    EXPECT_EQ(refusal([&] { exportBackup(*container, out / "none" / "x", kNow, log, work); }),
              "The backup could not be written: No such file or directory.");
    const auto keep = base::StagedFile::Existing::keep;
    EXPECT_EQ(refusal([&] { exportBackup(*container, target, kNow, log, work, keep); }),
              "The backup could not be written: File exists.");
    const auto store = container->configuration().file;
    fs::create_symlink(store, out / "link");
    fs::create_hard_link(store, out / "second");
    fs::create_directories(folder / "Recovery");
    fs::create_directories(folder / "Drafts");
    for (const auto& of :
         {store, fs::path(store.string() + "-wal"), fs::path(store.string() + ".lock"),
          out / "link", out / "second", folder / "Recovery" / "BeforeRestore.korvexbackup",
          folder / storeMarkers::kPrepared, folder / storeMarkers::kPreparedForCloud,
          folder / CloudStorePreparation::kBackupName, folder / "Drafts",
          folder / "Drafts" / "x"}) {
        EXPECT_EQ(refusal([&] { exportBackup(*container, of, kNow, log, work); }),
                  descriptionOf(RestoreErrorCase::ofStore))
            << of;
    }
    fs::remove(out / "link");
    fs::remove(out / "second");
    Work flipping = flippingIn(out);
    EXPECT_EQ(refusal([&] { exportBackup(*container, target, kNow, log, flipping); }),
              kNotGivenBack);
    for (const auto& each : kUnfit) {
        runSql(each.damage);
        EXPECT_EQ(refusal([&] { exportBackup(*container, target, kNow, log, work); }),
                  ofThisStore(each.error));
        runSql(each.mending);
    }
    EXPECT_EQ(fs::file_size(target), 6U);
    EXPECT_EQ(namesIn(out), (std::set<std::string>{"folder", "mine.korvexbackup"}));
}

TEST_F(BackupServiceTest, AStoreOfAnOlderVersionIsExportedOnceItIsUpgraded) {
    const auto file = folder / "old" / "Primary.store";
    fs::create_directories(file.parent_path());
    fs::create_directories(out);
    {
        OldStore old(file, OldStore::version("V13"));
        const auto inbox = OldStore::board("Inbox");
        old.addBoard(inbox);
        old.addEntry(OldStore::entry(inbox, "todo", "old words"));
    }
    EXPECT_EQ(caseOf<store::StoreError>([&] { openForReading(file, log); }),
              store::StoreErrorCase::needsUpgrade);
    const auto started = StoreStart::open({.storeFile = file, .now = kNow}, log);
    exportBackup(*started.container, target, kNow, log, work);
    EXPECT_EQ(inFile(target).entries.at(0).content, "old words");
}

TEST_F(BackupServiceTest, AnExportHasOneMomentHoweverTheStoreChangesMeanwhile) {
    const auto expected = stored();
    const auto revision = container->revision();
    const auto reader = openForReading(container->configuration().file, log);
    // Between the first look and the rows, another program adds, empties the journal, adds more.
    Work disturbed([&](const Progress& progress) {
        if (progress == Progress{.stage = Stage::reading, .fraction = 0}) {
            add({"while it is read"});
            container->checkpoint();
            add({"and more"});
        }
    });
    const auto snapshot = createBackup(*reader, kNow, disturbed);
    EXPECT_EQ(snapshot.document, expected);
    EXPECT_EQ(snapshot.revision, revision);
    EXPECT_EQ(createBackup(*reader, kNow, work).document, stored());
}

TEST_F(BackupServiceTest, ARestoreReplacesEverythingForEverybody) {
    const auto before = stored();
    const auto backup = other();
    const auto elsewhere = openContainer(); // as another program has it
    store::ModelContext theirs(*elsewhere);
    ASSERT_EQ(theirs.fetch<Entry>().size(), 4U);
    ASSERT_EQ(board->entries().size(), 3U);
    const auto* const oldEntry = board->entries().front();

    const auto reconciles = reminders.reconciles;
    const auto restored = service().restore(backup, recovery, kNow, work);
    EXPECT_EQ(restored.boards, boards->boards());
    EXPECT_EQ(restored.snapshot, recovery);
    expectSameStore(stored(), backup);
    EXPECT_EQ(inFile(recovery), before);
    EXPECT_EQ(fs::status(recovery.parent_path()).permissions(), fs::perms(0700));
    EXPECT_EQ(fs::status(recovery.parent_path().parent_path()).permissions(), fs::perms(0700));
    EXPECT_TRUE(container->check().problems.empty());
    EXPECT_EQ(reminders.reconciles, reconciles + 1);
    EXPECT_GT(widgets.reloads, 0);
    EXPECT_EQ(log.count("Restored backup; recovery snapshot retained locally"), 1U);

    EXPECT_FALSE(board->isLive());
    EXPECT_FALSE(oldEntry->isLive());
    auto isTold = false;
    const auto telling = theirs.didChange().connect(
        [&](const store::ChangeSet& changes) { isTold = isTold || changes.isReplacement; });
    theirs.refresh();
    EXPECT_TRUE(std::exchange(isTold, false)) << "what they knew is of another store";
    for (auto* each : {context.get(), &theirs}) {
        ASSERT_EQ(each->fetch<Entry>().size(), backup.entries.size());
        std::size_t underBoards = 0;
        for (const auto* const mine : each->fetch<Board>()) {
            underBoards += mine->entries().size();
        }
        EXPECT_EQ(underBoards, backup.entries.size());
    }
    // What comes back is the same to who holds it, and both can go on.
    service().restore(backup, recovery, kNow, work);
    EXPECT_TRUE(restored.boards.front()->isLive());
    boards->createBoard("After", kNow);
    theirs.refresh();
    EXPECT_EQ(theirs.fetch<Board>().size(), backup.boards.size() + 1);
    isTold = false;
    boards->createBoard("Another", kNow);
    theirs.refresh();
    EXPECT_FALSE(isTold);
}

TEST_F(BackupServiceTest, ARefusedRestoreChangesNothing) {
    const auto before = stored();
    auto unsupported = other();
    unsupported.schemaVersion = 8;
    auto invalid = other();
    invalid.entries.front().boardID = base::Uuid();
    const auto failing = [] { throw std::runtime_error("hook"); };
    const auto cloud = store::ModelContainer::open(
        model::currentSchema(),
        {.file = container->configuration().file, .cloudContainerIdentifier = "some"}, log);
    store::ModelContext inCloud(*cloud);
    const auto readOnly = openContainer(false);
    store::ModelContext forReading(*readOnly);
    const auto stopped = std::make_unique<std::stop_source>();
    stopped->request_stop();
    Work cancelled({}, stopped->get_token());
    auto isLate = false;
    Work late({}, [&] { return isLate; });
    enum class Snapshot { none, kept };
    struct {
        const char* name;
        BackupDocument document;
        store::ModelContext& in;
        Work& under;
        RestoreHooks hooks;
        std::string error;
        Snapshot snapshot;
    } const cases[]{
        {"version",
         unsupported,
         *context,
         work,
         {},
         textOf(BackupErrorCase::unsupportedVersion),
         Snapshot::none},
        {"document",
         invalid,
         *context,
         work,
         {},
         textOf(BackupErrorCase::invalidDocument),
         Snapshot::none},
        {"cloud",
         other(),
         inCloud,
         work,
         {},
         textOf(BackupErrorCase::cloudRestoreUnsupported),
         Snapshot::none},
        {"read-only",
         other(),
         forReading,
         work,
         {},
         descriptionOf(model::EntryServiceErrorCase::readOnlyStore),
         Snapshot::none},
        {"cancelled",
         other(),
         *context,
         cancelled,
         {},
         Cancelled().errorDescription(),
         Snapshot::none},
        {"cancelled at the last moment",
         other(),
         *context,
         late,
         {.beforeReplace = [&] { isLate = true; }},
         Cancelled().errorDescription(),
         Snapshot::kept},
        {"before replacing",
         other(),
         *context,
         work,
         {.beforeReplace = failing},
         "hook",
         Snapshot::kept},
        {"typed before replacing",
         other(),
         *context,
         work,
         {.beforeReplace = [&] { board->setName("typed"); }},
         textOf(BackupErrorCase::pendingChanges),
         Snapshot::kept},
        {"before saving", other(), *context, work, {.beforeSave = failing}, "hook", Snapshot::kept},
        {"saving",
         other(),
         *context,
         work,
         {.beforeReplace = [&] { breakSaves(); }},
         "The store already has a record with this identifier. (the disk, 1811)",
         Snapshot::kept},
    };
    log.expectError("Restore failed; transaction rolled back and recovery snapshot retained");
    for (const auto& each : cases) {
        fs::remove(recovery);
        std::string error;
        try {
            service(each.in).restore(each.document, recovery, kNow, each.under, each.hooks);
        } catch (const std::exception& thrown) {
            error = thrown.what();
        }
        EXPECT_EQ(error, each.error) << each.name;
        EXPECT_EQ(fs::exists(recovery), each.snapshot == Snapshot::kept) << each.name;
        context->rollback();
        EXPECT_TRUE(board->isLive() && board->entries().size() == 3) << each.name;
        EXPECT_EQ(stored(), before) << each.name;
        EXPECT_TRUE(container->check().problems.empty()) << each.name;
    }
    mendSaves();
    fs::create_directories(out);
    // What stops it at its start leaves the last snapshot alone.
    const auto snapshot = inFile(recovery);
    board->setName("typed");
    EXPECT_EQ(refusal([&] { service().restore(other(), recovery, kNow, work); }),
              textOf(BackupErrorCase::pendingChanges));
    context->rollback();
    Work flipping = flippingIn(recovery.parent_path());
    EXPECT_EQ(refusal([&] { service().restore(other(), recovery, kNow, flipping); }),
              kNotGivenBack);
    const auto files = namesIn(recovery.parent_path());
    for (const auto& each : kUnfit) {
        runSql(each.damage);
        EXPECT_EQ(refusal([&] { service().restore(other(), recovery, kNow, work); }),
                  ofThisStore(each.error));
        runSql(each.mending);
        EXPECT_EQ(inFile(recovery), snapshot);
        EXPECT_EQ(namesIn(recovery.parent_path()), files);
    }
    EXPECT_EQ(stored(), before);
    // Nothing was ever replaced: there is nothing to take back, whatever is kept.
    EXPECT_EQ(recoveredFile(*container, recovery, work), std::nullopt);
    EXPECT_EQ(refusal([&] { service().undoRestore(recovery, kNow, work); }),
              descriptionOf(RestoreErrorCase::nothingToTakeBack));
    EXPECT_EQ(stored(), before);
    EXPECT_EQ(cloud->allowsSave(), true);
    EXPECT_EQ(exportBackup(*cloud, target, kNow, log, work).entries, 4U); // export goes on
}

TEST_F(BackupServiceTest, WhatAnotherProgramSavesMeanwhileIsNeverLost) {
    const auto elsewhere = openContainer();
    store::ModelContext theirs(*elsewhere);
    services::BoardService theirBoards(theirs, reminders, widgets, log);
    // At each point of progress up to the replacement; then at the hook before it.
    for (int point = 0;; ++point) {
        int passed = 0;
        std::string added;
        const auto disturb = [&] {
            if (passed++ == point) {
                added = "Added at " + std::to_string(point);
                theirBoards.createBoard(added, kNow);
            }
        };
        Work disturbed([&](const Progress& progress) {
            if (progress.stage != Stage::replacing) {
                disturb();
            }
        });
        const auto before = stored();
        const auto error = refusal([&] {
            service().restore(other(), recovery, kNow, disturbed, {.beforeReplace = disturb});
        });
        if (added.empty()) {
            EXPECT_EQ(error, "");
            EXPECT_GT(point, 4);
            break;
        }
        // Either it is still there, or it is in the snapshot.
        const auto kept = error.empty() ? inFile(recovery) : stored();
        EXPECT_TRUE(error.empty() || error == textOf(BackupErrorCase::storeChanged)) << error;
        EXPECT_EQ(kept.boards.size(), before.boards.size() + 1) << point << error;
        EXPECT_EQ(kept.entries, before.entries);
    }
    // So it is while an import is taken back, in words that say so.
    EXPECT_EQ(refusal([&] {
                  service().undoRestore(recovery, kNow, work, {.beforeReplace = [&] {
                                            theirBoards.createBoard("Added", kNow);
                                        }});
              }),
              descriptionOf(RestoreErrorCase::storeChanged));
    EXPECT_FALSE(fs::exists(pending));
    // A save that leaves everything as it was is no change, unless there is one each time.
    for (const auto saves :
         {1, BackupService::kFollowedRevisions, BackupService::kFollowedRevisions + 1}) {
        int looks = 0;
        Work busy([&](const Progress& progress) {
            // Just after what is read is settled.
            if (progress == Progress{.stage = Stage::reading, .fraction = 0} && looks++ < saves) {
                auto& first = *theirBoards.boards().front();
                const auto name = first.name();
                theirBoards.renameBoard(first, "for a moment", first.updatedAt());
                theirBoards.renameBoard(first, name, first.updatedAt());
            }
        });
        theirs.refresh();
        EXPECT_EQ(refusal([&] { service().restore(other(), recovery, kNow, busy); }),
                  saves > BackupService::kFollowedRevisions ? textOf(BackupErrorCase::storeChanged)
                                                            : "")
            << saves;
    }
}

TEST_F(BackupServiceTest, WhatFailsAfterTheSaveIsNoFailureOfTheRestore) {
    struct : services::ReminderReconciling {
        void requestReconcile() override { throw std::runtime_error("late"); }
        void removePending(std::span<const base::Uuid>) override {}
    } failing;
    BackupService(*context, failing, widgets, log).restore(other(), recovery, kNow, work);
    expectSameStore(stored(), other());
    EXPECT_EQ(log.count("After a restore: late"), 1U);
}

TEST_F(BackupServiceTest, ABackupWithoutAnInboxGetsOneAndItsOrderGetsDense) {
    auto document = other();
    std::erase_if(document.boards, [](const auto& each) { return each.isSystem; });
    const auto home = document.boards.front().id;
    for (auto& entry : document.entries) {
        entry.boardID = home;
    }
    service().restore(document, recovery, kNow, work);
    ASSERT_NE(boards->inboxBoard(), nullptr);
    const auto after = stored();
    EXPECT_NO_THROW(backup::validate(after, log));
    for (std::size_t i = 0; i < after.boards.size(); ++i) {
        EXPECT_EQ(after.boards[i].sortOrder, static_cast<std::int64_t>(i));
    }
    EXPECT_EQ(storedOrder(*boards->board(home)).size(), document.entries.size());
}

} // namespace
} // namespace korvex::storage
