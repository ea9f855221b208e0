#include "storage/BackupFixture.h"

#include "storage/RestoreError.h"
#include "support/ScopedEnvironment.h"

namespace korvex::storage {
namespace {

using TakingBackTest = BackupFixture;

/// As a program that is killed: what was prepared stays as it is.
void killed(PreparedRestore prepared) {
    prepared.folder->beginSaving();
}

TEST_F(TakingBackTest, ARestoreIsTakenBackAndThatToo) {
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
    EXPECT_EQ(namesIn(recovery.parent_path()), std::set<std::string>{"BeforeRestore.korvexbackup"});

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
        // Whoever only looks has no need to wait.
        expectSameStore(recoveredDocument(*container, recovery, work), before);
        EXPECT_EQ(recoveredFile(*container, recovery, work)->file, recovery);
    }
    // What cannot be it is not opened, and what cannot be opened hides no other.
    fs::create_symlink(pending, pending);
    EXPECT_EQ(recoveredFile(*container, recovery, work)->file, recovery);
    fs::remove(pending);
    writeBackup(other(), recovery, work);
    const auto another = descriptionOf(RestoreErrorCase::snapshotIsGone);
    EXPECT_EQ(refusal([&] { recoveredFile(*container, recovery, work); }), another);
    EXPECT_EQ(refusal([&] { service().undoRestore(recovery, kNow, work); }), another);
    fs::remove(recovery);
    EXPECT_EQ(refusal([&] { service().undoRestore(recovery, kNow, work); }), nothing);
    expectSameStore(stored(), imported);
}

TEST_F(TakingBackTest, WhoLooksOftenReadsTheSnapshotOnceWhileItIsAsItWas) {
    std::size_t steps = 0;
    Work counting([&](const Progress&) { ++steps; });
    KnownRecoveredFile known;
    const auto look = [&] {
        steps = 0;
        return known.look(*container, recovery, counting);
    };
    EXPECT_EQ(look(), std::nullopt);
    for (int i = 0; i < 2; ++i) {
        service().restore(other(), recovery, kNow, work);
        EXPECT_EQ(look()->file, recovery);
        EXPECT_NE(steps, 0U) << "the store names another one";
        EXPECT_EQ(look()->file, recovery);
        EXPECT_EQ(steps, 0U);
    }
    fs::last_write_time(recovery, fs::last_write_time(recovery) + std::chrono::seconds(1));
    EXPECT_EQ(look()->file, recovery);
    EXPECT_NE(steps, 0U);
    fs::remove(recovery);
    EXPECT_EQ(look(), std::nullopt);
}

TEST_F(TakingBackTest, WhateverEndsARestoreTheStoreKnowsWhatTakesTheLastOneBack) {
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
        EXPECT_EQ(namesIn(recovery.parent_path()).size(), 2U);
    }
    expectSameStore(inFile(recoveredFile(*container, recovery, work)->file), before);
    const auto added = stored();
    service().undoRestore(recovery, kNow, work);
    expectSameStore(stored(), before);
    expectSameStore(inFile(recovery), added);
    EXPECT_EQ(namesIn(recovery.parent_path()).size(), 1U);

    // Killed while the new snapshot was written.
    std::ofstream(recovery.parent_path() / ".BeforeRestore.korvexbackup.new-abcdef") << "half";
    // Killed after it was written, before the store was replaced: the old one counts.
    killed(prepareUndo(*container, recovery, {}, kNow, log, work));
    EXPECT_TRUE(fs::exists(pending));
    expectSameStore(recoveredDocument(*container, recovery, work), added);
    service().undoRestore(recovery, kNow, work);
    expectSameStore(stored(), added);
    EXPECT_EQ(namesIn(recovery.parent_path()).size(), 1U);

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

TEST_F(TakingBackTest, NoTwoStoresShareARecoveryFolder) {
    const tests::ScopedEnvironment data("XDG_DATA_HOME", folder.path().string());
    const auto shared = folder / "Korvex";
    fs::create_directories(shared);
    fs::create_directory_symlink(shared, folder / "link");
    fs::create_directories(folder / "another");
    const auto name = recovery.filename();
    EXPECT_EQ(recoveryFile(folder / "korvex"), recovery);
    EXPECT_EQ(recoveryFile(folder / "another"), folder / "another" / "Recovery" / name);
    for (const auto& each : {shared, folder / "link"}) {
        EXPECT_EQ(recoveryFile(each), each / "Recovery of Primary.store" / name);
    }
}

} // namespace
} // namespace korvex::storage
