#include "ui/settings/BackupsPaneFixture.h"

#include "storage/AutomaticBackup.h"
#include "ui/settings/BackupWords.h"

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

using BackupsPaneTest = BackupsPaneFixture;

TEST_F(BackupsPaneTest, WhatIsWreckedComesBackAndThatCanBeTakenBack) {
    own.entries.createTodos({.contents = {"kept"}, .board = *work, .now = kNow});
    add({"one", "two"});
    openSettings(backups);
    EXPECT_THAT(words(), HasSubstr("Keep them in a safe location."));
    EXPECT_THAT(words(), HasSubstr("App preferences are kept separately."));
    EXPECT_THAT(words(), Not(HasSubstr("Take back the last replacement")));
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

    workUntilSaid("Brings back 1 board, 3 entries, as they were on Mar 10, 2025, 8:02 AM.");
    press("Take back…");
    EXPECT_THAT(question(), HasSubstr("brings back 1 board, 3 entries, as they were on Mar 10, "
                                      "2025, 8:02 AM, in place of your current boards"));
    clock.advance(60);
    press("Take back");
    workUntilSaid("Brought back 1 board, 3 entries, as they were on Mar 10, 2025, 8:02 AM.");
    EXPECT_THAT(boardNames(), ElementsAre("Inbox"));
    EXPECT_THAT(storedTexts(*own.boards.inboxBoard()), ElementsAre("one", "two", "after"));
    workUntilSaid("Brings back 2 boards, 3 entries, as they were on Mar 10, 2025, 8:03 AM.");
    EXPECT_EQ(contentsText({.boards = 1, .entries = 60'000}),
              QStringLiteral("1 board, 60,000 entries"));
}

TEST_F(BackupsPaneTest, DialogsBeginWhereTheLastOneEndedAndTakeNamesAsTheyAre) {
    add({"mine"});
    openSettings(backups);
    const auto expectDocuments = [&] {
        auto& dialog = openDialog("Import…");
        EXPECT_TRUE(dialog.directory().exists());
        EXPECT_EQ(dialog.findChild<QLineEdit*>()->text(), QString()) << "no folder's name";
        EXPECT_EQ(dialog.nameFilters().back(), QStringLiteral("All files (*)"));
        dialog.reject();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    expectDocuments();
    EXPECT_EQ(settings->focusWidget(), &control<QPushButton>("Import…"));
    const auto exportTo = [&](const char* name) {
        answer("Export…", folder / name);
        workUntilSaid("Backup exported.");
    };
    exportTo("plain");
    EXPECT_TRUE(std::filesystem::exists(folder / "plain.korvexbackup"));
    EXPECT_FALSE(std::filesystem::exists(folder / "plain"));
    std::filesystem::rename(folder / "plain.korvexbackup", folder / "plain");
    exportTo("plain");
    EXPECT_FALSE(std::filesystem::exists(folder / "plain.korvexbackup")) << "not the one chosen";
    exportTo("Notes v1.2");
    EXPECT_TRUE(std::filesystem::exists(folder / "Notes v1.2.korvexbackup")) << "no extension";
    answer("Import…", folder / "plain");
    workUntil([&] { return !question().empty(); });
    press("Cancel");
    auto& last = openDialog("Export…");
    EXPECT_EQ(toPath(last.directory().path()), folder.path());
    EXPECT_EQ(toPath(last.selectedFiles().front()).filename(), "Korvex 2025-03-10.korvexbackup");
    last.reject();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const auto gone = (folder / "gone").native();
    defaults.setBytes("lastBackupFolder", {gone.begin(), gone.end()});
    expectDocuments();
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
    EXPECT_EQ(log.count("Backup operation failed: "), 5U);
    EXPECT_EQ(log.count("Nothing was written; choose another one for the backup. (5)"), 1U);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("mine"));
}

TEST_F(BackupsPaneTest, WhatIsCancelledHasChangedNothing) {
    add({"mine"});
    openSettings(backups);
    exportAll();
    add({"after"});
    chooseImport();
    press("Import");
    press("Cancel");
    workUntilSaid("Cancelled. Nothing was changed.");
    EXPECT_TRUE(control<QPushButton>("Import…").isEnabled());
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("mine", "after"));
    EXPECT_EQ(log.count("Backup operation failed: "), 0U);
}

TEST_F(BackupsPaneTest, WhatOthersDoMeanwhileIsToldAndNeverLost) {
    const std::string failed =
        "Could not restore the backup. Your previous data has been retained.\n";
    add({"mine"});
    openSettings(backups);
    exportAll();
    add({"after"});
    chooseImport();
    inbox->setName("not saved");
    press("Import");
    EXPECT_THAT(words(), HasSubstr(failed + "Save your open edits before restoring a backup."));
    EXPECT_FALSE(std::filesystem::exists(recovery())) << "it has not begun";
    own.context.rollback();

    // Another program saves each time that the store has been read, which changes nothing.
    tests::StoreClient theirs(folder / "Primary.store", log);
    constexpr auto kTooOften = storage::BackupService::kFollowedRevisions + 1;
    std::string told;
    for (const auto saves : {kTooOften, kTooOften - 1}) {
        auto stage = storage::Stage::reading;
        int reads = 0;
        auto isLooked = false;
        const auto saving = eachStep([&] {
            isLooked =
                isLooked || words().find("Looking at what was saved meanwhile") < words().size();
            const auto before = std::exchange(stage, operations().progress().stage);
            if (stage == storage::Stage::verifying && before != stage && ++reads <= saves) {
                theirs.boards.renameBoard(*theirs.context.find<model::Board>(work->id()), "More",
                                          kNow);
                theirs.boards.renameBoard(*theirs.context.find<model::Board>(work->id()), "Work",
                                          kNow);
            }
            if (stage == storage::Stage::replacing && operations().isUnderWay()) {
                EXPECT_FALSE(control<QPushButton>("Cancel").isEnabled());
                told = words() + tests::SettingsFixture::plain(page().banner().message());
            }
        });
        chooseImport();
        press("Import");
        workUntilSaid(saves == kTooOften ? failed.c_str() : "Backup restored.");
        EXPECT_TRUE(isLooked);
        EXPECT_EQ(words().find("Your data changed while the recovery backup was being saved. "
                               "Nothing was replaced. Try importing again.") != std::string::npos,
                  saves == kTooOften);
        EXPECT_EQ(told.empty(), saves == kTooOften);
    }
    EXPECT_THAT(told, HasSubstr("Replacing your boards and entries\n"));
    EXPECT_THAT(told, HasSubstr("\nWindows answer again in a moment."));
    EXPECT_THAT(told, HasSubstr("Replacing your boards and entries. Windows answer again in a "
                                "moment."));
    EXPECT_EQ(page().banner().message(), QString());
    EXPECT_THAT(storedTexts(*own.boards.inboxBoard()), ElementsAre("mine"));

    workUntilSaid("Brings back");
    press("Take back…");
    restoreElsewhere(kNow + 300);
    press("Take back");
    workUntilSaid(
        "Could not take this back. Your data is as it was.\nSomething else would come back "
        "by now than you were asked about.");
    workUntilSaid("Brings back 2 boards, 1 entry, as they were on Mar 10, 2025, 8:05 AM.");
    const auto inTheWay = eachStep([&] {
        if (operations().progress().stage == storage::Stage::replacing &&
            !std::filesystem::is_directory(recovery())) {
            std::filesystem::rename(recovery(), folder / "moved");
            std::filesystem::create_directory(recovery());
        }
    });
    press("Take back…");
    press("Take back");
    workUntilSaid(" What they replaced is kept locally. It is in ");
    EXPECT_THAT(words(), HasSubstr("/Recovery/BeforeUndo.korvexbackup."));
}

TEST_F(BackupsPaneTest, TheKeyboardStaysWithWhatIsDone) {
    add({"mine"});
    openSettings(backups);
    const auto holder = [&] {
        const auto* const button = qobject_cast<QPushButton*>(settings->focusWidget());
        return button ? button->text().toStdString() : "no button";
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

    workUntilSaid("Brings back");
    control<QPushButton>("Take back…").setFocus();
    press("Take back…");
    clock.advance(60);
    press("Take back");
    workUntilSaid("as they were on Mar 10, 2025, 8:01 AM.");
    EXPECT_EQ(holder(), "Take back…") << "read anew meanwhile";

    for (const auto* const button : {"Import…", "Take back…"}) {
        auto& asking = control<QPushButton>(button);
        asking.setFocus();
        if (&asking == &control<QPushButton>("Import…")) {
            answer(button, backup());
        } else {
            press(button);
        }
        // The question comes while another window has the keyboard.
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        workUntil([&] { return !question().empty(); });
        EXPECT_NE(settings->childAt(asking.mapTo(settings, asking.rect().center())), &asking)
            << "it is quiet";
        press("Cancel");
        EXPECT_EQ(holder(), button);
    }
}

TEST_F(BackupsPaneTest, APlaceThatDoesNotAnswerIsWaitedForNoLongerOnceThatIsKnown) {
    constexpr double kMinutes = 180;
    constexpr double kSeconds = 10;
    add({"mine"});
    openSettings(backups);
    const auto settle = [&] {
        EXPECT_TRUE(control<QPushButton>("Import…").isEnabled());
        EXPECT_TRUE(threads.waitUntilEnded(std::chrono::hours(1)));
        runLoop.releasePosted();
        runLoop.runPosted();
    };
    answer("Export…", backup());
    runLoop.holdPosted();
    runLoop.advance(kMinutes - 1);
    EXPECT_THAT(words(), Not(HasSubstr("no answer")));
    runLoop.advance(1);
    EXPECT_THAT(words(), HasSubstr("Exporting: no answer for minutes"));
    press("Cancel");
    const auto left = "Cancelled. The chosen folder does not answer: whether the file is there, or "
                      "still appears, is not known.";
    EXPECT_THAT(words(), HasSubstr(left));
    settle();
    EXPECT_THAT(words(), HasSubstr(left)) << "nobody waits for what comes of it";
    exportAll();

    answer("Import…", backup());
    runLoop.holdPosted();
    press("Cancel");
    runLoop.advance(kSeconds - 1);
    press("Cancel");
    EXPECT_THAT(words(), HasSubstr("Cancelling"));
    runLoop.advance(1);
    EXPECT_THAT(words(), HasSubstr("Cancelled. Nothing was changed."));
    settle();
    EXPECT_EQ(question(), "");

    // The last moment at which another thread has something to do.
    tests::StoreClient theirs(folder / "Primary.store", log);
    auto isSaved = false;
    {
        const auto saving = eachStep([&] {
            if (operations().progress().stage == storage::Stage::verifying &&
                !std::exchange(isSaved, true)) {
                theirs.boards.renameBoard(*theirs.context.find<model::Board>(work->id()), "More",
                                          kNow);
            }
            if (operations().doing() == QStringLiteral("Looking at what was saved meanwhile")) {
                runLoop.holdPosted();
            }
        });
        chooseImport();
        press("Import");
        workUntilSaid("Looking at what was saved meanwhile");
        runLoop.advance(kMinutes);
        EXPECT_THAT(words(), HasSubstr("Looking at what was saved meanwhile: no answer"));
    }
    press("Cancel");
    EXPECT_THAT(words(), HasSubstr("Cancelled. Nothing was changed."));
    settle();
    import();
}

TEST_F(BackupsPaneTest, ClosingAsksWhileSomethingIsUnderWayAndLeavesNothingHalfDone) {
    add({"mine"});
    openSettings(backups);
    const auto reply = [&](const char* button) {
        auto* const sheet = sheetOver(*window);
        ASSERT_TRUE(sheet);
        EXPECT_THAT(plain(sheet->accessibleName()), HasSubstr("A backup is being exported."));
        for (auto* const each : sheet->findChildren<QPushButton*>()) {
            if (each->text() == QString::fromUtf8(button)) {
                each->click();
                return;
            }
        }
        FAIL() << button;
    };
    answer("Export…", backup());
    runLoop.holdPosted();
    EXPECT_FALSE(window->close());
    reply("Cancel");
    runLoop.releasePosted();
    workUntilSaid("Backup exported.");
    EXPECT_TRUE(window->isVisible());

    settings->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(settings));
    answer("Export…", backup());
    runLoop.holdPosted();
    QTest::keyClick(settings, Qt::Key_Q, Qt::ControlModifier);
    QApplication::processEvents();
    reply("Quit");
    EXPECT_EQ(page().banner().message(),
              QStringLiteral("Korvex quits as soon as what it is doing is cancelled."));
    press("Cancel");
    runLoop.advance(60);
    EXPECT_FALSE(window->close()) << "a slow disk may not have come to its end yet";
    EXPECT_FALSE(sheetOver(*window));
    runLoop.releasePosted();
    workUntil([&] { return !window->isVisible(); });
    for (const auto& each : std::filesystem::directory_iterator(folder.path())) {
        EXPECT_THAT(each.path().native(), Not(HasSubstr(".new-")));
    }

    window.reset();
    openSettings(backups);
    answer("Export…", backup());
    window->storeAll();
    EXPECT_TRUE(window->close()) << "the session ends, and asks nobody";
}

TEST_F(BackupsPaneTest, WhyNothingCanBeTakenBackIsTold) {
    add({"mine"});
    openSettings(backups);
    exportAll();
    import();
    workUntilSaid("Brings back");
    const auto refuses = [&](const char* reason) {
        comeBack();
        workUntilSaid(reason);
        EXPECT_FALSE(control<QPushButton>("Take back…").isEnabled());
        std::filesystem::remove(recovery());
    };
    std::filesystem::remove(recovery());
    std::filesystem::create_symlink(recovery(), recovery());
    refuses("BeforeRestore.korvexbackup could not be read: ");
    std::filesystem::copy(backup(), recovery());
    refuses("The recovery backup is not the one that the last replacement has left.");
    comeBack();
    workUntil([&] { return words().find("Take back") == std::string::npos; });
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
        EXPECT_TRUE(threads.waitUntilEnded(std::chrono::seconds(10))) << "no look for a dialog";
        runLoop.runPosted();
        EXPECT_FALSE(settings->findChild<QFileDialog*>());
    }
}

TEST_F(BackupsPaneTest, AnotherProgramThatWritesIsWaitedForUntilThatIsCancelled) {
    add({"mine"});
    openSettings(backups);
    exportAll();
    add({"after"});
    tests::StoreClient busy(folder / "Primary.store", log);
    constexpr std::chrono::hours kLong{1};
    container->setPatience(kLong); // nobody sleeps here meanwhile
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
        EXPECT_THAT(storedTexts(*own.boards.inboxBoard()),
                    ElementsAreArray(isCancelled ? std::vector<std::string>{"mine", "after"}
                                                 : std::vector<std::string>{"mine"}));
        EXPECT_EQ(container->patience(), kLong);
    }
}

TEST_F(BackupsPaneTest, WhoeverReplacesTheStoreTheStepsOfThisWindowEnd) {
    own.entries.deleteEntry(*add({"deleted"}).front());
    add({"mine"});
    EXPECT_TRUE(own.undo.canUndo());
    openSettings(backups);
    restoreElsewhere(kNow);
    own.context.refresh();
    EXPECT_FALSE(own.undo.canUndo());
    workUntilSaid("Brings back 2 boards, 1 entry, as they were on Mar 10, 2025, 8:00 AM.");
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

TEST_F(BackupsPaneTest, AStoreThatIsKeptInACloudIsExportedAndNotReplaced) {
    const auto chosen = folder / "chosen";
    std::filesystem::create_directory(chosen);
    preferences.setAutomaticBackupBookmark(storage::FolderBookmark::make(chosen).bytes());
    storage::Work whole;
    storage::makeAutomaticBackup(
        storage::automaticBackup(preferences, folder / "Primary.store", kNow), defaults, log,
        whole);
    restoreElsewhere(kNow);
    const auto cloud = store::ModelContainer::open(
        model::currentSchema(),
        {.file = folder / "Primary.store", .cloudContainerIdentifier = "some"}, log);
    const WorkspaceOwner another(around(*cloud));
    window = std::make_unique<MainWindow>(another.workspace(), theme);
    window->show();
    openSettings(backups);
    EXPECT_THAT(words(), HasSubstr("Full replacement is unavailable with iCloud sync. Export is "
                                   "available."));
    workUntilSaid("Brings back");
    workUntilSaid("Checked: it is whole.");
    EXPECT_TRUE(control<QPushButton>("Export…").isEnabled());
    for (const auto* const button : {"Import…", "Take back…", "Restore…"}) {
        EXPECT_FALSE(control<QPushButton>(button).isEnabled()) << button;
    }
    window.reset();
}

} // namespace
} // namespace korvex::ui
