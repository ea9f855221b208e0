#include "storage/AutomaticBackupService.h"

#include "app/SettingsFile.h"
#include "storage/AutomaticBackupFixture.h"
#include "support/FakeClock.h"
#include "support/FakeRunLoop.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

namespace korvex::storage {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr double kDay = 86'400;
constexpr double kTenYears = 3650 * kDay;

class AutomaticBackupServiceTest : public tests::AutomaticBackupFixture {
protected:
    void SetUp() override {
        AutomaticBackupFixture::SetUp();
        preferences.setAutomaticBackupEnabled(true);
        service.emplace(surroundings());
        choose(chosen);
    }

    AutomaticBackupService::Surroundings surroundings() {
        return {.store = AutomaticBackupService::Store::usersOwn,
                .preferences = preferences,
                .defaults = defaults,
                .container = *container,
                .threads = threads,
                .clock = clock,
                .runLoop = runLoop,
                .log = log};
    }
    void choose(const fs::path& other) {
        service->chooseFolder(other);
        EXPECT_TRUE(service->isChoosing());
        while (service->isChoosing()) {
            runLoop.waitForPosted();
            runLoop.runPosted();
        }
    }
    /// Until the run that is under way is over.
    void finish() {
        while (service->isRunning()) {
            runLoop.waitForPosted();
            runLoop.runPosted();
        }
    }
    /// Who opens the mark waits until `mark` is let go, as on a share whose server is gone.
    bool holdMark() {
        std::signal(SIGIO, SIG_IGN);
        mark = base::FileDescriptor(
            ::open((chosen / FolderBookmark::kMarkerName).c_str(), O_RDWR | O_CLOEXEC));
        return ::fcntl(mark.get(), F_SETLEASE, F_WRLCK) == 0;
    }
    std::vector<std::string> backups(const fs::path& in) const {
        const auto theirs = in / historyFolderName(preferences.automaticBackupID());
        return fs::exists(theirs) ? namesIn(theirs) : std::vector<std::string>();
    }
    std::vector<std::string> backups() const { return backups(chosen); }

    tests::SettingsFile settings;
    app::FileUserDefaults defaults = settings.open();
    app::AppPreferences preferences{defaults, log};
    tests::FakeClock clock{base::Instant{800'000'000}};
    tests::FakeRunLoop runLoop;
    BackgroundThreads threads;
    base::FileDescriptor mark;
    std::optional<AutomaticBackupService> service;
};

TEST_F(AutomaticBackupServiceTest, OneIsDueADayAfterTheLastOrWhenTheClockWasSetBack) {
    const auto now = clock.now();
    for (const auto& [last, isDue] :
         std::initializer_list<std::pair<std::optional<base::Instant>, bool>>{
             {std::nullopt, true},
             {now, false},
             {now - (kDay - 60), false},
             {now - kDay, true},
             {now - kTenYears, true},
             {now + 1, true},
             {now + kTenYears, true},
         }) {
        preferences.setAutomaticBackupLastSuccess(last);
        EXPECT_EQ(service->nextDue(now), isDue ? now : *last + kDay);
        const auto before = backups().size();
        service->runIfDue(now);
        EXPECT_EQ(service->isRunning(), isDue);
        service->runIfDue(now);
        finish();
        EXPECT_EQ(backups().size(), std::min<std::size_t>(before + (isDue ? 1 : 0), 7));
        EXPECT_EQ(preferences.automaticBackupLastSuccess(), isDue ? now : last);
    }
    preferences.setAutomaticBackupLastSuccess(std::nullopt);
    preferences.setAutomaticBackupEnabled(false);
    EXPECT_EQ(service->nextDue(now), std::nullopt);
    service->runIfDue(now);
    EXPECT_FALSE(service->isRunning());
    service->backUpNow();
    EXPECT_TRUE(service->isRunning()) << "who asks for one gets one";
    finish();
    EXPECT_EQ(preferences.automaticBackupLastSuccess(), now);
}

TEST_F(AutomaticBackupServiceTest, AClockThatIsSetDuringARunMakesTheNextOneDueAndNoFurther) {
    std::size_t made = 0;
    for (const auto step : {-kTenYears, kTenYears}) {
        const auto begun = clock.now();
        preferences.setAutomaticBackupLastSuccess(std::nullopt);
        service->runIfDue(begun);
        clock.advance(step);
        finish();
        EXPECT_EQ(preferences.automaticBackupLastSuccess(), begun);
        service->runIfDue(clock.now());
        EXPECT_TRUE(service->isRunning());
        finish();
        EXPECT_EQ(preferences.automaticBackupLastSuccess(), clock.now());
        service->runIfDue(clock.now());
        EXPECT_FALSE(service->isRunning());
        made += 2;
        EXPECT_THAT(backups(), SizeIs(made));
    }
}

TEST_F(AutomaticBackupServiceTest, LooksAtTheStartAndEveryQuarterOfAnHour) {
    preferences.setAutomaticBackupEnabled(false);
    service->start();
    runLoop.advance(0);
    EXPECT_FALSE(service->isRunning());
    EXPECT_THAT(runLoop.delays(), ElementsAre(900));
    preferences.setAutomaticBackupEnabled(true);
    runLoop.advance(0);
    EXPECT_TRUE(service->isRunning()) << "who has just wanted them need not wait";
    finish();
    EXPECT_THAT(backups(), SizeIs(1));

    runLoop.advance(900);
    EXPECT_FALSE(service->isRunning());
    clock.advance(kDay);
    runLoop.advance(900);
    EXPECT_TRUE(service->isRunning());
    finish();
    EXPECT_THAT(backups(), SizeIs(2));
}

TEST_F(AutomaticBackupServiceTest, AFailureIsSaidUntilOneSucceeds) {
    log.expectError("Backup operation failed: The folder that was chosen for automatic backups is "
                    "not there, or another one stands in its place. Make it available, or choose "
                    "it again. (3)");
    const auto away = folder / "away";
    int changes = 0;
    const auto subscription = service->didChange().connect([&] { ++changes; });
    fs::rename(chosen, away);
    service->runIfDue(clock.now());
    finish();
    EXPECT_EQ(service->errorMessage(),
              "Automatic backup failed. Check the folder is available, or choose it again. Your "
              "saved entries have not been changed.");
    EXPECT_THAT(service->errorReason(), HasSubstr("choose it again"));
    EXPECT_TRUE(service->hasFailedForFolder());
    EXPECT_EQ(service->folderState(), AutomaticBackupService::FolderState::gone);
    EXPECT_EQ(preferences.automaticBackupLastSuccess(), std::nullopt) << "tried again";
    EXPECT_EQ(service->nextDue(clock.now()), clock.now());
    EXPECT_GE(changes, 2);

    fs::rename(away, chosen);
    service->runIfDue(clock.now());
    finish();
    EXPECT_EQ(service->errorMessage(), std::nullopt);
    EXPECT_THAT(service->errorReason(), IsEmpty());
    EXPECT_EQ(service->folderState(), AutomaticBackupService::FolderState::there);
    EXPECT_THAT(backups(), SizeIs(1));

    fs::rename(chosen, away);
    service->backUpNow();
    finish();
    EXPECT_TRUE(service->errorMessage());
    auto theirs = settings.open();
    app::AppPreferences(theirs, log).setAutomaticBackupLastSuccess(clock.now() + 1);
    preferences.reload();
    EXPECT_EQ(service->errorMessage(), std::nullopt) << "another program's is one too";

    service->backUpNow();
    finish();
    EXPECT_TRUE(service->errorMessage());
    fs::rename(away, chosen);
    choose(chosen);
    EXPECT_EQ(service->errorMessage(), std::nullopt) << "a folder was chosen";
}

TEST_F(AutomaticBackupServiceTest, TheFolderIsLookedAtWithoutATry) {
    using State = AutomaticBackupService::FolderState;
    const auto away = folder / "away";
    int changes = 0;
    const auto subscription = service->didChange().connect([&] { ++changes; });
    const auto look = [&] {
        changes = 0;
        service->lookAtFolder();
        runLoop.waitForPosted();
        runLoop.runPosted();
        return service->folderState();
    };
    EXPECT_EQ(service->folderState(), State::there) << "it has just been marked";
    EXPECT_EQ(look(), State::there);
    EXPECT_EQ(changes, 0);
    fs::rename(chosen, away);
    EXPECT_EQ(look(), State::gone);
    EXPECT_EQ(changes, 1);
    fs::rename(away, chosen);
    EXPECT_EQ(look(), State::there);

    preferences.setAutomaticBackupBookmark(base::Bytes{'n', 'o', 'n', 'e'});
    EXPECT_EQ(service->folderState(), State::unknown);
    service->lookAtFolder();
    log.expectError("The settings no longer tell which folder was chosen for automatic backups. "
                    "Choose it again.");
    service->runIfDue(clock.now());
    finish();
    EXPECT_THAT(backups(), IsEmpty());
    preferences.setAutomaticBackupBookmark(std::nullopt);
    EXPECT_EQ(service->folderState(), State::none);
}

TEST_F(AutomaticBackupServiceTest, AFolderChosenDuringARunGetsItsOwn) {
    const auto other = folder / "other";
    fs::create_directory(other);
    service->start();
    runLoop.advance(0);
    ASSERT_TRUE(service->isRunning());
    choose(other);
    EXPECT_EQ(service->folder(), other);
    while (backups(other).empty()) {
        finish();
        runLoop.advance(0);
    }
    finish();
    EXPECT_THAT(backups(other), SizeIs(1));
    EXPECT_EQ(preferences.automaticBackupLastSuccess(), clock.now());

    choose(folder / "none");
    EXPECT_THAT(service->choiceRefusal(), HasSubstr("Could not save access to this backup folder"));
    EXPECT_EQ(service->folder(), other);
    EXPECT_EQ(preferences.automaticBackupLastSuccess(), clock.now());
    choose(other);
    EXPECT_THAT(service->choiceRefusal(), IsEmpty());
    EXPECT_EQ(preferences.automaticBackupLastSuccess(), std::nullopt);
}

/// What it fails for says nothing of the folder that is chosen now.
TEST_F(AutomaticBackupServiceTest, AFailureInTheFolderBeforeIsNoneOfTheChosenOne) {
    if (!holdMark()) {
        GTEST_SKIP() << "no leases here";
    }
    const auto other = folder / "other";
    fs::create_directory(other);
    service->start();
    runLoop.advance(0);
    choose(other);
    runLoop.advance(0);
    ASSERT_TRUE(service->isRunning());
    log.expectError("Backup operation failed: The folder that was chosen for automatic backups is "
                    "not there");
    ASSERT_EQ(::ftruncate(mark.get(), 0), 0);
    mark = {};
    finish();
    EXPECT_EQ(service->errorMessage(), std::nullopt);
    EXPECT_EQ(service->folderState(), AutomaticBackupService::FolderState::there);
    runLoop.advance(0);
    EXPECT_TRUE(service->isRunning()) << "it has none yet";
    finish();
    EXPECT_THAT(backups(other), SizeIs(1));
}

TEST_F(AutomaticBackupServiceTest, WhoAskedForOneGetsItInTheFolderThatWasChosenMeanwhile) {
    if (!holdMark()) {
        GTEST_SKIP() << "no leases here";
    }
    const auto other = folder / "other";
    fs::create_directory(other);
    preferences.setAutomaticBackupEnabled(false);
    service->backUpNow();
    choose(other);
    mark = {};
    finish();
    EXPECT_THAT(backups(other), SizeIs(1));
}

TEST_F(AutomaticBackupServiceTest, OneThatIsStoppedIsNoFailureAndLeavesNothing) {
    log.expectError("The folder that was chosen for automatic backups is not there");
    fs::rename(chosen, folder / "away");
    service->backUpNow();
    finish();
    fs::rename(folder / "away", chosen);
    if (!holdMark()) {
        GTEST_SKIP() << "no leases here";
    }
    service->start();
    runLoop.advance(0);
    service->cancel();
    mark = {};
    finish();
    EXPECT_TRUE(service->wasCancelled());
    EXPECT_EQ(service->errorMessage(), std::nullopt);
    EXPECT_THAT(backups(), IsEmpty());
    runLoop.advance(900);
    EXPECT_TRUE(service->isRunning()) << "it is due as before";
    EXPECT_FALSE(service->wasCancelled());
    finish();
    EXPECT_THAT(backups(), SizeIs(1));
    service->backUpNow();
    service.reset();
    EXPECT_TRUE(threads.waitUntilEnded(std::chrono::hours(1)));
    runLoop.runPosted();
    for (const auto& name : backups()) {
        EXPECT_FALSE(name.starts_with(".")) << name;
    }
}

TEST_F(AutomaticBackupServiceTest, NoneIsMadeOfAnotherStoreThanTheUsers) {
    auto another = surroundings();
    another.store = AutomaticBackupService::Store::another;
    service.emplace(another);
    EXPECT_THAT(service->obstacle().value_or(""),
                HasSubstr("only. An export makes a backup of this one."));
    EXPECT_EQ(service->nextDue(clock.now()), std::nullopt);
    service->start();
    runLoop.advance(900);
    service->runIfDue(clock.now());
    service->backUpNow();
    EXPECT_FALSE(service->isRunning());
    service->chooseFolder(folder / "other");
    EXPECT_FALSE(service->isChoosing());
    EXPECT_THAT(backups(), IsEmpty());
    EXPECT_EQ(service->folder(), chosen);
}

/// Else each look would make one more, until none is left of the days before.
TEST_F(AutomaticBackupServiceTest, WhatSettingsCannotTakeHoldsInThisProgram) {
    fs::remove(settings.path());
    fs::create_directories(settings.path() / "in its place");
    service->start();
    runLoop.advance(0);
    finish();
    EXPECT_EQ(preferences.automaticBackupLastSuccess(), clock.now());
    runLoop.advance(900);
    EXPECT_FALSE(service->isRunning());
    EXPECT_THAT(backups(), SizeIs(1));
}

TEST_F(AutomaticBackupServiceTest, AFolderThatDoesNotAnswerIsSaidAndHoldsNobodyUp) {
    if (!holdMark()) {
        GTEST_SKIP() << "no leases here";
    }
    constexpr double kMinutes = 180;
    log.expectError("Backup operation failed: The folder does not answer.");
    const auto before = preferences.automaticBackupBookmark();
    service->backUpNow();
    runLoop.advance(kMinutes - 1);
    EXPECT_EQ(service->errorMessage(), std::nullopt);
    runLoop.advance(1);
    EXPECT_EQ(service->errorMessage(), AutomaticBackupService::kFailure);
    EXPECT_EQ(service->errorReason(), "The folder does not answer.");
    EXPECT_TRUE(service->isRunning()) << "it may answer yet, and a second one would wait beside it";

    service->chooseFolder(chosen);
    runLoop.advance(kMinutes);
    EXPECT_FALSE(service->isChoosing());
    EXPECT_EQ(service->choiceRefusal(), "The folder does not answer.");
    const auto other = folder / "other";
    fs::create_directory(other);
    choose(other);
    service->backUpNow();
    finish();
    EXPECT_THAT(backups(other), SizeIs(1));
    EXPECT_EQ(service->errorMessage(), std::nullopt);

    // Who has cancelled it is not told that it failed, nor waits for as long.
    preferences.setAutomaticBackupBookmark(before);
    service->backUpNow();
    service->cancel();
    runLoop.advance(9);
    EXPECT_TRUE(service->isRunning()) << "it may end as it was told to";
    runLoop.advance(1);
    EXPECT_FALSE(service->isRunning());
    EXPECT_TRUE(service->wasCancelled());
    EXPECT_EQ(service->errorMessage(), std::nullopt);
    EXPECT_FALSE(threads.waitUntilEnded(std::chrono::milliseconds(0)));
    mark = {};
    EXPECT_TRUE(threads.waitUntilEnded(std::chrono::hours(1)));
    EXPECT_THAT(backups(), IsEmpty());
}

TEST_F(AutomaticBackupServiceTest, OneThatAnotherProgramMakesIsNoFailureUnlessAskedFor) {
    const auto theirs = chosen / historyFolderName(preferences.automaticBackupID());
    fs::create_directory(theirs);
    const base::FileDescriptor other(::open(theirs.c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
    const auto look = [&] {
        service->runIfDue(clock.now());
        finish();
        return service->errorMessage();
    };
    log.expectError("An automatic backup is already being made.");
    for (int looks = 0; looks < 3; ++looks) {
        EXPECT_EQ(look(), std::nullopt);
    }
    EXPECT_EQ(look(), AutomaticBackupService::kFailure) << "it hangs, and none is made";
    EXPECT_EQ(preferences.automaticBackupLastSuccess(), std::nullopt);
    auto defaultsOfOther = settings.open();
    app::AppPreferences(defaultsOfOther, log).setAutomaticBackupLastSuccess(clock.now() - kDay);
    preferences.reload();
    EXPECT_EQ(look(), std::nullopt) << "it has made that one";
    service->backUpNow();
    finish();
    EXPECT_EQ(service->errorMessage(), AutomaticBackupService::kFailure);
}

/// As with settings that two machines keep in step.
TEST_F(AutomaticBackupServiceTest, TheBackupOfAnotherStoreIsNoneOfThisOne) {
    service->runIfDue(clock.now());
    finish();
    auto theirs = settings.open();
    const auto they = [&](base::Instant when) {
        app::setAutomaticBackupLastSuccess(theirs, base::Uuid::random(), when);
        preferences.reload();
    };
    const auto made = clock.now();
    clock.advance(60);
    they(clock.now());
    EXPECT_EQ(service->lastSuccess(), made);
    EXPECT_EQ(service->nextDue(clock.now()), made + kDay) << "they need not take turns";
    clock.advance(kDay);
    they(clock.now());
    EXPECT_EQ(service->nextDue(clock.now()), clock.now());
    const auto only = chosen / historyFolderName(preferences.automaticBackupID()) / backups()[0];
    for (const auto age : {60.0, kDay}) {
        service.emplace(surroundings());
        EXPECT_EQ(service->lastSuccess(), std::nullopt);
        const auto last = clock.now() - age;
        const ::timespec time{.tv_sec = static_cast<::time_t>(last.unixSeconds()), .tv_nsec = 0};
        const ::timespec times[]{time, time};
        ASSERT_EQ(::utimensat(AT_FDCWD, only.c_str(), times, 0), 0);
        log.expectError("Backup operation failed: The folder that was chosen");
        fs::rename(chosen, folder / "elsewhere");
        service->runIfDue(clock.now());
        finish();
        EXPECT_TRUE(service->errorMessage());
        fs::rename(folder / "elsewhere", chosen);
        service->runIfDue(clock.now());
        finish();
        EXPECT_EQ(service->errorMessage(), std::nullopt);
        EXPECT_THAT(backups(), SizeIs(age < kDay ? 1 : 2)) << "a start is no reason for one more";
        EXPECT_EQ(service->nextDue(clock.now()), (age < kDay ? last : clock.now()) + kDay);
    }
}

} // namespace
} // namespace korvex::storage
