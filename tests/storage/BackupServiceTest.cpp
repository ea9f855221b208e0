#include "storage/BackupService.h"

#include "backup/BackupFileIO.h"
#include "model/EntryAttachment.h"
#include "model/ServiceErrors.h"
#include "richtext/stored/RichTextSerializer.h"
#include "services/ServiceFixture.h"
#include "storage/RestoreError.h"

#include <sys/stat.h>

#include <fstream>
#include <thread>

namespace korvex::storage {
namespace {

namespace fs = std::filesystem;
using backup::BackupDocument;
using backup::BackupErrorCase;
using model::Board;
using model::Entry;

class BackupServiceTest : public tests::ServiceFixture {
protected:
    void SetUp() override {
        ServiceFixture::SetUp();
        boards->initializeDefaultBoards(kNow);
        boards->reorderBoards(std::vector{boards->inboxBoard(), board}, kNow);
        const auto made = add({"one", "two", "three"});
        entries->completeTodo(*made[1], kNow);
        entries->attach({{.id = base::Uuid::random(),
                          .filename = "a.txt",
                          .data = base::Bytes(20'000, std::uint8_t{7})}},
                        *made[0], kNow);
        entries->createText(
            {.rich = richtext::RichTextSerializer::plainRichText("a \"text\"\nof two lines"),
             .board = *boards->inboxBoard(),
             .now = kNow});
    }

    void type(const char* text) {
        entries->createTodos({.contents = {text}, .board = *boards->inboxBoard(), .now = kNow});
    }
    BackupDocument stored() { return createBackup(*container, kNow, work).document; }
    BackupDocument inFile(const fs::path& file) { return readBackup(file, work); }
    /// Of another store; it has what a document can have.
    BackupDocument other() { return inFile(KORVEX_BACKUP_CASES "/valid/everything.korvexbackup"); }
    /// Both without what differs by the moment and the program.
    static void expectSameStore(BackupDocument left, const BackupDocument& right) {
        left.schemaVersion = right.schemaVersion;
        left.exportedAt = right.exportedAt;
        left.appVersion = right.appVersion;
        const auto byId = [](const auto& one, const auto& another) { return one.id < another.id; };
        auto sorted = right;
        for (auto* document : {&left, &sorted}) {
            std::sort(document->boards.begin(), document->boards.end(), byId);
            std::sort(document->entries.begin(), document->entries.end(), byId);
        }
        EXPECT_EQ(left, sorted);
    }
    BackupService service(store::ModelContext& of) { return {of, reminders, widgets, log}; }
    BackupService service() { return service(*context); }

    /// The error's text; "" when there is none.
    template <typename Work>
    static std::string refusal(Work&& attempt) {
        try {
            attempt();
            return "";
        } catch (const base::Error& error) {
            return error.errorDescription();
        }
    }
    /// The disk gives back another byte than was written into a file of this folder.
    static Work flippingIn(const fs::path& where) {
        return Work([where](const Progress& progress) {
            if (progress == Progress{.stage = Stage::verifying, .fraction = 0}) {
                for (const auto& each : fs::directory_iterator(where)) {
                    if (each.path().filename().native().find(".new-") != std::string::npos) {
                        std::fstream(each.path(), std::ios::in | std::ios::out).seekp(100) << '~';
                    }
                }
            }
        });
    }
    static constexpr const char* kNotGivenBack =
        "What was written of the backup is not what the disk gives back. It was not kept.";
    static std::string textOf(BackupErrorCase which) { return descriptionOf(which); }
    static std::vector<std::string> filesIn(const fs::path& folder) {
        std::vector<std::string> names;
        for (const auto& each : fs::directory_iterator(folder)) {
            names.push_back(each.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    fs::path out = folder / "out";
    fs::path target = out / "mine.korvexbackup";
    fs::path recovery = folder / "Korvex" / "Recovery" / "BeforeRestore.korvexbackup";
    Work work;
    fs::path pending = recovery.parent_path() / "BeforeUndo.korvexbackup";
};

TEST_F(BackupServiceTest, AnExportIsTheSavedStoreAndNothingElse) {
    const auto reader = openForReading(container->configuration().file, log);
    context->fetch<Board>().front()->setName("not saved");
    const auto expected = stored();
    fs::create_directories(out);
    // What killed runs left of this file; another one is none of it.
    std::ofstream(out / ".mine.korvexbackup.new-abcdef") << "half";
    std::ofstream(out / ".mine.korvexbackup.new-other-1") << "kept";
    const auto summary = exportBackup(*reader, target, kNow, log, work);
    EXPECT_EQ(inFile(target), expected);
    EXPECT_EQ(summary,
              (BackupSummary{
                  .exportedAt = kNow, .boards = 2, .entries = 4, .bytes = fs::file_size(target)}));
    EXPECT_EQ(filesIn(out),
              (std::vector<std::string>{".mine.korvexbackup.new-other-1", "mine.korvexbackup"}));
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
              "The backup could not be written: Is a directory.");
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
    for (const auto& of :
         {store, fs::path(store.string() + "-wal"), fs::path(store.string() + ".lock"),
          out / "link", out / "second", folder / "Recovery" / "BeforeRestore.korvexbackup"}) {
        EXPECT_EQ(refusal([&] { exportBackup(*container, of, kNow, log, work); }),
                  descriptionOf(RestoreErrorCase::ofStore))
            << of;
    }
    fs::remove(out / "link");
    fs::remove(out / "second");
    Work flipping = flippingIn(out);
    EXPECT_EQ(refusal([&] { exportBackup(*container, target, kNow, log, flipping); }),
              kNotGivenBack);
    SQLite::Database(container->configuration().file, SQLite::OPEN_READWRITE)
        .exec("UPDATE Entry SET board = NULL WHERE content = 'three'");
    EXPECT_EQ(refusal([&] { exportBackup(*container, target, kNow, log, work); }),
              textOf(BackupErrorCase::incompleteRelationships));
    EXPECT_EQ(fs::file_size(target), 6U);
    EXPECT_EQ(filesIn(out), (std::vector<std::string>{"folder", "mine.korvexbackup"}));
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
    SQLite::Database(container->configuration().file, SQLite::OPEN_READWRITE)
        .exec("UPDATE Entry SET board = NULL WHERE content = 'three'");
    EXPECT_EQ(refusal([&] { service().restore(other(), recovery, kNow, work); }),
              textOf(BackupErrorCase::incompleteRelationships));
    EXPECT_EQ(inFile(recovery), snapshot);
    SQLite::Database(container->configuration().file, SQLite::OPEN_READWRITE)
        .exec("UPDATE Entry SET board = (SELECT board FROM Entry WHERE content = 'two') WHERE "
              "content = 'three'");
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
    // A save that leaves everything as it was is no change.
    const auto hook = [&] {
        const auto* const first = theirBoards.boards().front();
        const auto updatedAt = first->updatedAt();
        const auto name = first->name();
        theirBoards.renameBoard(*theirBoards.boards().front(), "for a moment", updatedAt);
        theirBoards.renameBoard(*theirBoards.boards().front(), name, updatedAt);
    };
    theirs.refresh();
    EXPECT_EQ(
        refusal([&] { service().restore(other(), recovery, kNow, work, {.beforeReplace = hook}); }),
        "");
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

/// As a program that is killed: what was prepared stays as it is.
void killed(PreparedRestore prepared) {
    prepared.folder->beginSaving();
}

TEST_F(BackupServiceTest, ARestoreIsTakenBackAndThatToo) {
    const auto nothing = descriptionOf(RestoreErrorCase::nothingToTakeBack);
    EXPECT_EQ(refusal([&] { service().undoRestore(recovery, kNow, work); }), nothing);
    const auto before = stored();
    service().restore(other(), recovery, kNow, work);
    const auto imported = stored();
    service().undoRestore(recovery, kNow, work);
    expectSameStore(stored(), before);
    expectSameStore(inFile(recovery), imported);
    service().undoRestore(recovery, kNow, work);
    expectSameStore(stored(), imported);
    EXPECT_EQ(filesIn(recovery.parent_path()),
              std::vector{std::string("BeforeRestore.korvexbackup")});

    // Only what was asked about, and only what the store knows of.
    const AskedSnapshot asked{.exportedAt = kNow, .entries = before.entries.size() + 1};
    EXPECT_EQ(refusal([&] { prepareUndo(*container, recovery, asked, kNow, log, work); }),
              descriptionOf(RestoreErrorCase::notAsAsked));
    {
        const auto running = prepareUndo(*container, recovery, {}, kNow, log, work);
        EXPECT_EQ(refusal([&] {
                      RecoveryFolder(recovery, RecoveryFolder::Missing::make,
                                     std::chrono::milliseconds::zero());
                  }),
                  descriptionOf(RestoreErrorCase::running));
    }
    writeBackup(other(), recovery, work);
    EXPECT_EQ(refusal([&] { service().undoRestore(recovery, kNow, work); }),
              descriptionOf(RestoreErrorCase::snapshotIsGone));
    fs::remove(recovery);
    EXPECT_EQ(refusal([&] { service().undoRestore(recovery, kNow, work); }), nothing);
    expectSameStore(stored(), imported);
}

TEST_F(BackupServiceTest, WhateverEndsARestoreTheStoreKnowsWhatTakesTheLastOneBack) {
    const auto before = stored();
    service().restore(other(), recovery, kNow, work);
    const auto imported = stored();
    // One that fails, or is cancelled, leaves its snapshot, and what takes the last one back.
    log.expectError("Restore failed; transaction rolled back and recovery snapshot retained");
    for (int i = 0; i < 3; ++i) {
        type("added");
        EXPECT_ANY_THROW(service().restore(other(), recovery, kNow, work,
                                           {.beforeSave = [] { throw std::runtime_error("x"); }}));
        expectSameStore(inFile(recovery), stored());
        EXPECT_EQ(filesIn(recovery.parent_path()).size(), 2U);
    }
    expectSameStore(inFile(recoveredFile(*container, recovery, work)->file), before);
    const auto added = stored();
    service().undoRestore(recovery, kNow, work);
    expectSameStore(stored(), before);
    expectSameStore(inFile(recovery), added);
    EXPECT_EQ(filesIn(recovery.parent_path()).size(), 1U);

    // Killed while the new snapshot was written.
    std::ofstream(recovery.parent_path() / ".BeforeRestore.korvexbackup.new-abcdef") << "half";
    // Killed after it was written, before the store was replaced: the old one counts.
    killed(prepareUndo(*container, recovery, {}, kNow, log, work));
    EXPECT_TRUE(fs::exists(pending));
    expectSameStore(recoveredDocument(*container, recovery, work), added);
    service().undoRestore(recovery, kNow, work);
    expectSameStore(stored(), added);
    EXPECT_EQ(filesIn(recovery.parent_path()).size(), 1U);

    // Killed after the store was replaced, before the new snapshot was in its place; then something
    // else is typed: nothing of it is lost by an undo, nor by an import.
    for (const auto isImport : {false, true}) {
        const auto is = stored();
        const auto old = inFile(recovery);
        auto prepared = prepareUndo(*container, recovery, {}, kNow, log, work);
        fs::rename(recovery, out);
        fs::create_directory(recovery); // so that nothing can be moved there
        EXPECT_EQ(service().finish(prepared, kNow, work)->snapshot, pending);
        fs::remove(recovery);
        fs::rename(out, recovery);
        prepared.folder.reset();
        type("typed");
        if (isImport) {
            EXPECT_ANY_THROW(service().restore(other(), recovery, kNow, work, {.beforeReplace = [] {
                                                   throw std::runtime_error("x");
                                               }}));
        }
        service().undoRestore(recovery, kNow, work);
        expectSameStore(stored(), is);
        EXPECT_EQ(inFile(recovery).entries.size(), old.entries.size() + 1);
    }
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
