#include "ui/settings/BackupsPaneFixture.h"

#include "base/FileDescriptor.h"
#include "support/ScopedEnvironment.h"
#include "ui/kit/controls/Switch.h"
#include "ui/settings/AutomaticBackupRows.h"

#include <QSignalSpy>

#include <fcntl.h>
#include <sys/fsuid.h>

#include <atomic>
#include <csignal>
#include <thread>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

using AutomaticBackupsPaneTest = BackupsPaneFixture;

TEST_F(AutomaticBackupsPaneTest, AutomaticBackupsGoToTheChosenFolderAndComeBackFromThere) {
    const auto chosen = folder / "chosen";
    std::filesystem::create_directory(chosen);
    add({"mine"});
    openSettings(backups);
    EXPECT_FALSE(control<QPushButton>("Back Up Now").isEnabled());
    EXPECT_FALSE(control<Switch>("Back up every day").isEnabled());
    EXPECT_THAT(words(), HasSubstr("None has been chosen yet."));
    EXPECT_THAT(words(), HasSubstr("Choose a folder, then enable daily backups. Saved entries are "
                                   "backed up while Korvex is running; missed backups run when you "
                                   "reopen it. History is kept in a separate subfolder for this "
                                   "installation. Manual exports are kept separately."));
    EXPECT_THAT(words(), HasSubstr("\nKeep Most Recent\n"));
    control<QPushButton>("Choose…").setFocus();
    answer("Choose…", chosen);
    EXPECT_FALSE(control<QPushButton>("Choose…").isEnabled());
    workUntilSaid(chosen.filename().c_str());
    EXPECT_EQ(settings->focusWidget(), &control<QPushButton>("Choose…"));
    EXPECT_THAT(words(), HasSubstr("None yet\nNext backup\nOff"));
    control<Switch>("Back up every day").click();
    EXPECT_THAT(words(), HasSubstr("Next backup\nDue now"));
    backUpNow();
    EXPECT_THAT(words(), HasSubstr("2 boards, 1 entry, "));
    EXPECT_THAT(words(), HasSubstr("Last backup\nMar 10, 2025, 8:00 AM\nNext backup\n"
                                   "Mar 11, 2025, 8:00 AM"));
    EXPECT_EQ(firstLine("Next backup"), firstLine("Mar 11, 2025, 8:00 AM"));

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

    std::filesystem::create_directory(folder / "gone");
    answer("Choose…", folder / "gone", [&] { std::filesystem::remove(folder / "gone"); });
    workUntilSaid(
        "Could not save access to this backup folder. Choose another folder and try again.");
    EXPECT_THAT(words(), HasSubstr("chosen"));
    const QSignalSpy told(settings->findChild<AutomaticBackupRows*>(), &AutomaticBackupRows::told);
    EXPECT_THAT(words(), Not(HasSubstr("Backup made."))) << "it was asked for something else";
    settings->resize(settings->width(), 300); // hardly room for two rows
    press("Back Up Now");
    workUntilSaid("Backup made.");
    EXPECT_EQ(told.count(), 1) << "what the folder was refused for is no answer to this";
    EXPECT_TRUE(QTest::qWaitFor([&] { return isInSight("Backup made."); }));
    answer("Choose…", chosen);
    workUntil([&] { return words().find("Backup made.") == std::string::npos; });
    EXPECT_THAT(words(), HasSubstr("None yet\nNext backup\nDue now"));
}

/// The backup counts, so the settings tell of it before the failure is known here.
TEST_F(AutomaticBackupsPaneTest, WhatCouldNotBeRemovedIsToldWhereTheBackupWasAskedFor) {
    const auto chosen = folder / "chosen";
    std::filesystem::create_directory(chosen);
    const auto history = chosen / storage::historyFolderName(preferences.automaticBackupID());
    std::filesystem::create_directory(history);
    for (int i = 0; i <= preferences.automaticBackupRetention(); ++i) {
        std::ofstream(history / ("Korvex-" + std::to_string(i) + ".korvexbackup")) << "{";
    }
    const auto main = std::this_thread::get_id();
    std::atomic<bool> isMade = false;
    app::FileUserDefaults theirs(
        folder / "settings.json", nullptr, [&](const std::filesystem::path& file, auto patience) {
            auto lock = app::FileUserDefaults::lock(file, patience);
            // It is made then, and is told of.
            if (std::this_thread::get_id() != main && !isMade.exchange(true)) {
                std::filesystem::permissions(history, std::filesystem::perms::owner_read |
                                                          std::filesystem::perms::owner_exec);
                ::setfsuid(65'534); // of this thread: root is held up by nothing
            }
            return lock;
        });
    app::AppPreferences settingsOfIt(theirs, log);
    // Else that would be the first that is written.
    static_cast<void>(app::settleAutomaticBackupID(theirs, preferences.automaticBackupID(),
                                                   container->storeID()));
    const WorkspaceOwner another(around(*container, settingsOfIt, theirs));
    window = std::make_unique<MainWindow>(another.workspace(), theme);
    window->show();
    openSettings(backups);
    answer("Choose…", chosen);
    workUntilSaid(chosen.filename().c_str());
    const QSignalSpy told(settings->findChild<AutomaticBackupRows*>(), &AutomaticBackupRows::told);
    log.expectError("Backup operation failed");
    press("Back Up Now");
    workUntilSaid("The backup was made; old ones could not be removed: ");
    ASSERT_TRUE(QTest::qWaitFor([&] { return told.count() == 1; }));
    EXPECT_TRUE(told.front().front().value<QWidget*>()->isAncestorOf(
        &label(storage::AutomaticBackupService::kFailure)));
    EXPECT_THAT(words(), Not(HasSubstr("Backup made.")));
    std::filesystem::permissions(history, std::filesystem::perms::owner_all);
    window.reset();
}

/// A file that is leased is opened only when the lease is given back.
TEST_F(AutomaticBackupsPaneTest, TheHistoryOfAnotherFolderDoesNotWaitForTheFormerOne) {
    chooseAndBackUp(folder / "silent");
    const auto made = storage::backupsIn(folder / "silent").backups.front().file;
    const auto before = std::signal(SIGIO, SIG_IGN); // it asks for the lease
    const base::FileDescriptor lease(::open(made.c_str(), O_RDONLY | O_CLOEXEC));
    if (::fcntl(lease.get(), F_SETLEASE, F_WRLCK) != 0) {
        std::signal(SIGIO, before);
        GTEST_SKIP() << "no leases here";
    }
    press("Check");
    EXPECT_THAT(words(), HasSubstr("Checking…"));
    const auto foreign =
        folder / "other" / storage::historyFolderName(base::Uuid::random()) / "x.korvexbackup";
    std::filesystem::create_directories(foreign.parent_path());
    std::ofstream(foreign) << "{";
    answer("Choose…", folder / "other");
    workUntilSaid("No automatic backups yet.\nThe folder also holds backups of another store "
                  "or installation, or of this one before its settings were lost; Import… "
                  "reads them.");
    EXPECT_THAT(words(), Not(HasSubstr("Checking…")));
    backUpNow();
    EXPECT_THAT(words(), HasSubstr("The folder also holds")) << "besides";
    std::signal(SIGIO, before);
}

TEST_F(AutomaticBackupsPaneTest, AFailureIsToldOnceWhereItBelongsUntilABackupIsMade) {
    const auto chosen = folder / "chosen";
    chooseAndBackUp(chosen);
    log.expectError("Backup operation failed");
    std::filesystem::rename(chosen, folder / "elsewhere");
    comeBack();
    workUntilSaid("The folder is gone, or another one stands in its place. Make it available, or "
                  "choose it again.");
    workUntilSaid("Those in the folder are shown when it is there again.");
    settings->resize(settings->width(), 300); // hardly room for two rows
    press("Back Up Now");
    const auto failure = storage::AutomaticBackupService::kFailure;
    workUntilSaid(failure);
    EXPECT_THAT(words(), HasSubstr(std::string("chosen\n") + failure +
                                   "\nThe folder is gone, or another one stands in its place.\n"));
    EXPECT_THAT(words(), Not(HasSubstr("Make it available")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return isInSight(failure); }));

    std::filesystem::rename(folder / "elsewhere", chosen);
    comeBack();
    workUntil([&] { return words().find("The folder is gone") == std::string::npos; });
    EXPECT_THAT(words(), HasSubstr("Automatic backup failed.")) << "none has been made yet";
    auto theirs = defaults.forAnotherThread();
    app::AppPreferences(*theirs, log).setAutomaticBackupLastSuccess(clock.now() + 1);
    preferences.reload();
    EXPECT_THAT(words(), Not(HasSubstr("Automatic backup failed.")));
    std::filesystem::rename(chosen, folder / "elsewhere");
    comeBack();
    workUntilSaid("The folder is gone");
    std::filesystem::rename(folder / "elsewhere", chosen);
    app::AppPreferences(*theirs, log).setAutomaticBackupLastSuccess(clock.now() + 2);
    preferences.reload();
    workUntil([&] { return words().find("The folder is gone") == std::string::npos; });

    const auto history = chosen / storage::historyFolderName(preferences.automaticBackupID());
    std::filesystem::rename(history, folder / "elsewhere");
    std::ofstream(history) << "in its place";
    press("Back Up Now");
    workUntilSaid("Your saved entries have not been changed.\nSomething else stands in the place "
                  "of the folder that the automatic backups are kept in.");
    EXPECT_TRUE(QTest::qWaitFor([&] { return isInSight(failure); }));

    preferences.setAutomaticBackupBookmark(base::Bytes{'n', 'o', 'n', 'e'});
    workUntilSaid("Which folder was chosen is not known any more. Choose it again.");
    EXPECT_THAT(words(), Not(HasSubstr("None has been chosen yet.")));
    EXPECT_FALSE(control<QPushButton>("Back Up Now").isEnabled());
}

TEST_F(AutomaticBackupsPaneTest, WhatIsCancelledSaysSoAndWhatIsNextFollowsTheClock) {
    const auto chosen = folder / "chosen";
    chooseAndBackUp(chosen);
    const auto next = [&] {
        const auto all = words();
        const auto begin = all.find("Next backup\n") + 12;
        return all.substr(begin, all.find('\n', begin) - begin);
    };
    EXPECT_EQ(next(), "Off");
    control<Switch>("Back up every day").click();
    EXPECT_EQ(next(), "Mar 11, 2025, 8:00 AM");
    {
        const tests::ScopedEnvironment zone("TZ", "Asia/Tokyo");
        owner.workspace().dates.renew();
        EXPECT_EQ(next(), "Mar 11, 2025, 5:00 PM");
        EXPECT_THAT(words(), HasSubstr("Mar 10, 2025, 5:00 PM\n2 boards")) << "the history too";
    }
    owner.workspace().dates.renew();
    clock.set(kNow - 60);
    workspace.scheduleClock.refresh();
    EXPECT_EQ(next(), "Due now") << "the clock was set back";
    clock.set(kNow);
    workspace.scheduleClock.refresh();
    EXPECT_EQ(next(), "Mar 11, 2025, 8:00 AM");
    clock.advance(86'400);
    runLoop.advance(86'400);
    EXPECT_EQ(next(), "Due now");

    workUntil([&] {
        const auto isCancelled = words().find("The backup was cancelled. Korvex tries again within "
                                              "a quarter of an hour.") != std::string::npos;
        if (!isCancelled && control<QPushButton>("Back Up Now").isEnabled()) {
            if (next() != "Due now") { // it was made before it could be cancelled
                clock.advance(86'400);
                runLoop.advance(86'400);
            }
            press("Back Up Now");
            press("Cancel");
        }
        return isCancelled;
    });
    press("Back Up Now");
    EXPECT_THAT(words(), Not(HasSubstr("cancelled")));
    workUntil([&] { return next() != "Due now"; });
    EXPECT_THAT(next(), HasSubstr("8:00 AM"));
}

TEST_F(AutomaticBackupsPaneTest, TheHistoryKeepsTheKeyboardWhenItIsAnother) {
    const auto chosen = folder / "chosen";
    chooseAndBackUp(chosen);
    const auto made = storage::backupsIn(chosen).backups.front().file;
    const auto place = [&](int index) {
        return made.parent_path() / ("Korvex-" + std::to_string(index) + ".korvexbackup");
    };
    const auto age = [&](int hours) {
        return std::filesystem::last_write_time(made) - std::chrono::hours(hours);
    };
    for (const auto index : {1, 2}) {
        std::filesystem::copy(made, place(index));
        std::filesystem::last_write_time(place(index), age(index));
    }
    const auto checks = [&] {
        std::vector<QPushButton*> found;
        for (auto* const each : settings->findChildren<QPushButton*>()) {
            if (each->isVisible() && each->text() == QStringLiteral("Check")) {
                found.push_back(each);
            }
        }
        return found;
    };
    const auto come = [&](std::size_t count) {
        comeBack();
        workUntil([&] {
            return checks().size() == count && words().find("Checking…") == std::string::npos;
        });
    };
    come(3);
    checks()[1]->setFocus();
    std::filesystem::remove(made);
    come(2);
    EXPECT_EQ(settings->focusWidget(), checks()[0]) << "at the same backup";
    std::filesystem::remove(place(1));
    come(1);
    EXPECT_EQ(settings->focusWidget(), checks()[0]) << "at the next one";

    std::ofstream(place(2)) << "{";
    checks()[0]->click();
    workUntilSaid("This is not a valid Korvex backup.");
    EXPECT_FALSE(control<QPushButton>("Restore…").isEnabled());
    std::filesystem::remove(place(2));
    come(0);
    EXPECT_TRUE(settings->focusWidget() && settings->focusWidget()->isVisible());
    EXPECT_EQ(settings->focusWidget(), &control<QPushButton>("Back Up Now"));
}

TEST_F(AutomaticBackupsPaneTest, OfAnotherStoreThanTheUsersNoneIsMade) {
    preferences.setAutomaticBackupEnabled(true);
    preferences.setAutomaticBackupLastSuccess(kNow);
    std::filesystem::create_directory(folder / "chosen");
    preferences.setAutomaticBackupBookmark(
        storage::FolderBookmark::make(folder / "chosen").bytes());
    auto surroundings = around(*container);
    surroundings.isUsersOwn = false;
    const WorkspaceOwner another(std::move(surroundings));
    window = std::make_unique<MainWindow>(another.workspace(), theme);
    window->show();
    openSettings(backups);
    EXPECT_THAT(words(), HasSubstr("only. An export makes a backup of this one."));
    EXPECT_THAT(words(), HasSubstr("Last backup\nNone yet\nNext backup\nOff"));
    EXPECT_THAT(words(), HasSubstr("No automatic backups yet."));
    for (const auto* const button : {"Choose…", "Back Up Now"}) {
        EXPECT_FALSE(control<QPushButton>(button).isEnabled()) << button;
    }
    EXPECT_FALSE(control<Switch>("Back up every day").isEnabled());
    const auto program = folder.path().native() + " – Korvex";
    EXPECT_EQ(toUtf8(window->windowTitle()), "Inbox – " + program);
    EXPECT_EQ(toUtf8(settings->windowTitle()), "Settings – " + program);
    window.reset();
}

} // namespace
} // namespace korvex::ui
