#include "ui/settings/SettingsFixture.h"

#include "storage/BackupHistory.h"
#include "ui/kit/controls/Switch.h"

#include <gmock/gmock.h>

#include <fstream>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

class BackupsPaneTest : public tests::SettingsFixture {
protected:
    std::filesystem::path backup() const { return folder / "mine.korvexbackup"; }
    std::vector<std::string> boardNames() {
        std::vector<std::string> names;
        for (const auto* const board : own.boards.boards()) {
            names.push_back(board->name());
        }
        return names;
    }
    void exportAll() {
        answer("Export…", backup());
        workUntilSaid("Backup exported.");
    }
    /// Up to the question.
    void chooseImport() {
        answer("Import…", backup());
        workUntil([&] { return !question().empty(); });
    }
    void import() {
        chooseImport();
        press("Import");
        workUntilSaid("Backup restored. A recovery copy of the previous data is kept locally.");
    }
    void typeIntoNewTodo(const QString& text) {
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        page().startTodo();
        QTest::keyClicks(QApplication::focusWidget(), text);
    }
    void write(const std::string& text, std::uintmax_t size) {
        std::ofstream(backup()) << text;
        std::filesystem::resize_file(backup(), size);
    }
};

TEST_F(BackupsPaneTest, WhatIsWreckedComesBackAndThatCanBeTakenBack) {
    own.entries.createTodos({.contents = {"kept"}, .board = *work, .now = kNow});
    add({"one", "two"});
    openSettings(backups);
    EXPECT_THAT(words(), HasSubstr("Keep them in a safe location."));
    EXPECT_THAT(words(), HasSubstr("App preferences are kept separately."));
    EXPECT_THAT(words(), Not(HasSubstr("Take back the last import")));
    exportAll();

    own.boards.deleteBoard(*work);
    clock.advance(60);
    add({"after"});
    own.entries.deleteEntry(*add({"deleted"}).front());
    EXPECT_TRUE(own.undo.canUndo());
    chooseImport();
    EXPECT_EQ(question(), "Importing this backup will replace your current boards, text entries "
                          "and todos with 3 entries. A local recovery backup will be saved first.");
    press("Cancel");
    EXPECT_THAT(boardNames(), ElementsAre("Inbox"));
    import();
    EXPECT_THAT(boardNames(), ElementsAre("Inbox", "Work"));
    EXPECT_FALSE(own.undo.canUndo());
    EXPECT_THAT(storedTexts(*own.boards.inboxBoard()), ElementsAre("one", "two"));
    EXPECT_EQ(page().board(), own.boards.inboxBoard()) << "the record that is there now";
    EXPECT_EQ(page().entries().entry(0)->content(), "one");
    EXPECT_EQ(page().banner().message(), QString()) << "it was no other program";

    workUntilSaid("Brings back 1 board, 3 entries, as they were on Mar 10, 2025, 8:01 AM.");
    press("Take back…");
    EXPECT_THAT(question(), HasSubstr("with the 3 entries of Mar 10, 2025, 8:01 AM"));
    press("Take back");
    workUntilSaid("The import was taken back.");
    EXPECT_THAT(boardNames(), ElementsAre("Inbox"));
    EXPECT_THAT(storedTexts(*own.boards.inboxBoard()), ElementsAre("one", "two", "after"));
    workUntilSaid("Brings back 2 boards, 3 entries, as they were on");
}

TEST_F(BackupsPaneTest, WhatIsRefusedLeavesAllAsItWasAndSaysWhy) {
    struct Case {
        const char* what;
        std::string text;
        std::uintmax_t size;
        const char* reason;
    };
    const std::string foreign = R"({"notes":[]})";
    add({"mine"});
    openSettings(backups);
    for (const auto& each : {Case{"damaged", "{\"boards\":[{\"id\"", 15, "not a valid"},
                             Case{"of another program", foreign, foreign.size(), "not a valid"},
                             Case{"too large", "{", 600'000'000, "512 MB"}}) {
        write(each.text, each.size);
        answer("Import…", backup());
        workUntilSaid("Could not read this backup. Your current data has not been changed.\n");
        EXPECT_THAT(words(), HasSubstr(each.reason)) << each.what;
        EXPECT_EQ(question(), "") << each.what;
    }
    std::filesystem::create_directory(folder / "gone");
    answer("Export…", folder / "gone" / "mine.korvexbackup",
           [&] { std::filesystem::remove(folder / "gone"); });
    workUntilSaid("Could not export the backup. Check the selected location and try again.\n");
    EXPECT_FALSE(std::filesystem::exists(folder / "gone"));
    answer("Export…", folder / "Primary.store");
    workUntilSaid("This place belongs to the store itself.");
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("mine"));
}

TEST_F(BackupsPaneTest, WhatIsCancelledHasChangedNothing) {
    add({"mine"});
    openSettings(backups);
    exportAll();
    chooseImport();
    press("Import");
    press("Cancel");
    workUntilSaid("Cancelled. Nothing was changed.");
    EXPECT_TRUE(control<QPushButton>("Import…").isEnabled());
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("mine"));
}

TEST_F(BackupsPaneTest, TheKeyboardStaysWithWhatIsDone) {
    add({"mine"});
    openSettings(backups);
    const auto holder = [&] {
        return static_cast<QPushButton*>(settings->focusWidget())->text().toStdString();
    };
    const auto answered = [&](const char* text) {
        for (auto* const each : settings->findChildren<SettingsLabel*>()) {
            if (each->isVisible() && each->accessibleName() == QString::fromUtf8(text)) {
                return QAccessible::queryAccessibleInterface(each)->role() ==
                       QAccessible::AlertMessage;
            }
        }
        return false;
    };
    control<QPushButton>("Export…").setFocus();
    answer("Export…", backup());
    EXPECT_EQ(holder(), "Cancel");
    EXPECT_TRUE(answered("Exporting"));
    workUntilSaid("Backup exported.");
    EXPECT_EQ(holder(), "Export…");
    EXPECT_TRUE(answered("Backup exported."));
    EXPECT_FALSE(answered("Exporting"));

    control<QPushButton>("Import…").setFocus();
    answer("Import…", backup());
    EXPECT_EQ(holder(), "Cancel");
    workUntil([&] { return !question().empty(); });
    press("Import");
    EXPECT_EQ(holder(), "Cancel");
    workUntilSaid("Backup restored.");
    EXPECT_EQ(holder(), "Import…");
}

TEST_F(BackupsPaneTest, OpenEditsAreStoredFirst) {
    add({"mine"});
    openSettings(backups);
    typeIntoNewTodo(QStringLiteral("typed"));
    exportAll();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("mine", "typed"));
    typeIntoNewTodo(QStringLiteral("more"));
    tests::StoreClient busy(folder / "Primary.store", log);
    const store::LockedStep writing(busy.context);
    for (const auto* const button : {"Export…", "Import…"}) {
        press(button);
        EXPECT_THAT(words(), HasSubstr("Your open edits could not be saved. Resolve the save error "
                                       "before using a backup."))
            << button;
        EXPECT_FALSE(settings->findChild<QFileDialog*>());
    }
}

TEST_F(BackupsPaneTest, AnotherProgramThatWritesIsWaitedForUntilThatIsCancelled) {
    add({"mine"});
    openSettings(backups);
    exportAll();
    tests::StoreClient busy(folder / "Primary.store", log);
    for (const auto isCancelled : {true, false}) {
        chooseImport();
        std::optional<store::LockedStep> writing(std::in_place, busy.context);
        press("Import");
        workUntilSaid("Waiting for another program");
        if (isCancelled) {
            press("Cancel");
        }
        runLoop.advance(1);
        EXPECT_EQ(words().find("Waiting") == std::string::npos, isCancelled);
        writing.reset();
        runLoop.advance(1);
        workUntilSaid(isCancelled ? "Cancelled. Nothing was changed." : "Backup restored.");
    }
    EXPECT_THAT(storedTexts(*own.boards.inboxBoard()), ElementsAre("mine"));
}

TEST_F(BackupsPaneTest, WhoeverReplacesTheStoreTheStepsOfThisWindowEnd) {
    own.entries.deleteEntry(*add({"deleted"}).front());
    add({"mine"});
    EXPECT_TRUE(own.undo.canUndo());
    tests::StoreClient theirs(folder / "Primary.store", log);
    storage::Work whole;
    storage::BackupService(theirs.context, theirs.reminders, theirs.widgets, log)
        .restore(storage::createBackup(*theirs.container, kNow, whole).document,
                 folder / "Recovery" / "BeforeRestore.korvexbackup", kNow, whole);
    own.context.refresh();
    EXPECT_FALSE(own.undo.canUndo());
    EXPECT_THAT(storedTexts(*own.boards.inboxBoard()), ElementsAre("mine"));
}

/// Until a moment before the store is replaced the main window can be typed into.
TEST_F(BackupsPaneTest, WordsThatAreTypedMeanwhileStayOrAreOffered) {
    add({"mine"});
    openSettings(backups);
    exportAll();
    for (const auto isInBackup : {true, false}) {
        navigation().openBoard(isInBackup ? *own.boards.inboxBoard()
                                          : own.boards.createBoard("Late", clock.now()));
        chooseImport();
        press("Import");
        typeIntoNewTodo(QStringLiteral("half a thou"));
        workUntilSaid("Backup restored.");
        EXPECT_TRUE(QTest::qWaitFor([&] { return page().board() == own.boards.inboxBoard(); }));
        EXPECT_EQ(tests::shownRefusal(page()).contains(QStringLiteral("“Late”")), !isInBackup);
        EXPECT_EQ(page().banner().message(), QString()) << "it was no other program";
        EXPECT_TRUE(page().leave());
        EXPECT_THAT(storedTexts(*page().board()), UnorderedElementsAre("mine", "half a thou"));
    }
}

TEST_F(BackupsPaneTest, AutomaticBackupsGoToTheChosenFolderAndComeBackFromThere) {
    const auto chosen = folder / "chosen";
    std::filesystem::create_directory(chosen);
    add({"mine"});
    openSettings(backups);
    EXPECT_FALSE(control<QPushButton>("Back Up Now").isEnabled());
    EXPECT_FALSE(control<Switch>("Back up every day").isEnabled());
    EXPECT_THAT(words(), HasSubstr("None has been chosen yet."));
    control<QPushButton>("Choose…").setFocus();
    answer("Choose…", chosen);
    EXPECT_FALSE(control<QPushButton>("Choose…").isEnabled());
    workUntilSaid(chosen.filename().c_str());
    EXPECT_EQ(settings->focusWidget(), &control<QPushButton>("Choose…"));
    EXPECT_THAT(words(), HasSubstr("None yet\nNext backup\nOff"));
    control<Switch>("Back up every day").click();
    EXPECT_THAT(words(), HasSubstr("Next backup\nDue now"));
    press("Back Up Now");
    EXPECT_FALSE(control<QPushButton>("Back Up Now").isEnabled());
    workUntilSaid("Checked: it is whole.");
    EXPECT_THAT(words(), HasSubstr("2 boards, 1 entry, "));
    EXPECT_THAT(words(), HasSubstr("Last backup\nMar 10, 2025, 8:00 AM\nNext backup\n"
                                   "Mar 11, 2025, 8:00 AM"));

    own.boards.deleteBoard(*work);
    auto& restore = control<QPushButton>("Restore…");
    restore.setFocus();
    press("Restore…");
    EXPECT_EQ(settings->focusWidget(), &control<QPushButton>("Cancel"));
    workUntil([&] { return !question().empty(); });
    press("Import");
    workUntilSaid("Backup restored.");
    EXPECT_EQ(settings->focusWidget(), &restore);
    EXPECT_THAT(boardNames(), ElementsAre("Inbox", "Work"));

    log.expectError("Backup operation failed");
    std::filesystem::rename(chosen, folder / "elsewhere");
    press("Back Up Now");
    workUntilSaid(storage::AutomaticBackupService::kFailure);
    EXPECT_THAT(words(), HasSubstr("Make it available, or choose it again."));
    answer("Choose…", folder / "elsewhere");
    workUntilSaid("elsewhere");
    press("Back Up Now");
    workUntil([&] { return words().find("Automatic backup failed.") == std::string::npos; });
    std::filesystem::create_directory(folder / "gone");
    answer("Choose…", folder / "gone", [&] { std::filesystem::remove(folder / "gone"); });
    workUntilSaid(
        "Could not save access to this backup folder. Choose another folder and try again.");
    EXPECT_THAT(words(), HasSubstr("elsewhere"));
}

TEST_F(BackupsPaneTest, OfAnotherStoreThanTheUsersNoneIsMade) {
    preferences.setAutomaticBackupEnabled(true);
    preferences.setAutomaticBackupLastSuccess(kNow);
    const WorkspaceOwner another({.container = *container,
                                  .isUsersOwn = false,
                                  .preferences = preferences,
                                  .defaults = defaults,
                                  .clock = clock,
                                  .runLoop = runLoop,
                                  .threads = threads,
                                  .log = log,
                                  .copies = folder / "copies"});
    window = std::make_unique<MainWindow>(another.workspace(), theme);
    window->show();
    openSettings(backups);
    EXPECT_THAT(words(), HasSubstr("only. korvex backup export makes one of this store."));
    EXPECT_THAT(words(), HasSubstr("Last backup\nNone yet\nNext backup\nOff"));
    for (const auto* const button : {"Choose…", "Back Up Now"}) {
        EXPECT_FALSE(control<QPushButton>(button).isEnabled()) << button;
    }
    EXPECT_FALSE(control<Switch>("Back up every day").isEnabled());
    window.reset();
}

} // namespace
} // namespace korvex::ui
