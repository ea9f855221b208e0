#include "storage/AutomaticBackup.h"

#include "app/SettingsFile.h"
#include "storage/AutomaticBackupFixture.h"
#include "storage/BackupService.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <barrier>
#include <functional>
#include <future>

namespace korvex::storage {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;

class AutomaticBackupTest : public tests::AutomaticBackupFixture {
protected:
    AutomaticBackupResult make(Work&& work = Work()) {
        auto defaults = settings.open();
        return makeAutomaticBackup(
            {.storeFile = storeFile.value_or(container->configuration().file),
             .bookmark = bookmark,
             .installation = installation,
             .keeping = keeping,
             .now = kNow},
            defaults, log, work);
    }
    /// What it is refused with; the case itself, so that a test says which.
    std::optional<AutomaticBackupErrorCase> refusal(Work&& work = Work()) {
        try {
            make(std::move(work));
            return std::nullopt;
        } catch (const AutomaticBackupError& error) {
            return error.which();
        }
    }

    tests::SettingsFile settings;
    std::optional<fs::path> storeFile; ///< else the one that is there
    std::optional<base::Bytes> bookmark;
    std::size_t keeping = 7;
};

TEST_F(AutomaticBackupTest, HoldsTheStoreAndIsListedWithoutBeingRead) {
    EXPECT_EQ(refusal(), AutomaticBackupErrorCase::noFolder);
    bookmark = FolderBookmark::make(chosen).bytes();
    const auto known = *FolderBookmark::ofBytes(*bookmark);
    EXPECT_THAT(automaticBackups(known, installation).backups, IsEmpty());
    const auto made = make();
    EXPECT_EQ(made.file.parent_path(), history());
    EXPECT_FALSE(made.pruningFailure);
    EXPECT_EQ(fs::status(history()).permissions(), fs::perms::owner_all);

    Work work;
    EXPECT_EQ(readBackup(made.file, work), createBackup(*container, kNow, work).document);
    setAge(made.file, 1);
    const auto second = make();
    put(history() / "Korvex-damaged.korvexbackup");
    setAge(history() / "Korvex-damaged.korvexbackup", 2);
    put(history() / "notes.korvexbackup");
    const auto listed = automaticBackups(known, installation).backups;
    ASSERT_THAT(listed, SizeIs(3));
    EXPECT_EQ(listed[0].file, second.file);
    EXPECT_EQ(listed[1].file, made.file);
    EXPECT_EQ(checkBackup(listed[1], log, work), made.summary);
    EXPECT_THROW(checkBackup(listed[2], log, work), backup::BackupError);
    // Some file systems number their files anew each time.
    const auto again = folder / "again";
    fs::copy_file(made.file, again);
    fs::last_write_time(again, fs::last_write_time(made.file));
    fs::rename(again, made.file);
    EXPECT_EQ(checkBackup(listed[1], log, work), made.summary);
    const auto foreign = chosen / historyFolderName(base::Uuid::random());
    fs::create_directory(foreign);
    EXPECT_FALSE(automaticBackups(known, installation).hasForeign) << "it is empty";
    put(foreign / "Korvex-theirs.korvexbackup");
    EXPECT_TRUE(automaticBackups(known, installation).hasForeign);
    const auto none = automaticBackups(known, base::Uuid::random());
    EXPECT_TRUE(none.hasForeign && none.backups.empty());
    fs::remove_all(foreign);
    put(chosen / "exported by hand.korvexbackup");
    ASSERT_EQ(::mkfifo((chosen / "pipe.korvexbackup").c_str(), S_IRWXU), 0);
    fs::create_symlink(made.file, chosen / "link.korvexbackup");
    EXPECT_THAT(backupsIn(chosen).backups, SizeIs(5));
    EXPECT_THAT(backupsIn(chosen).unreadable,
                ElementsAre((chosen / "link.korvexbackup").string() +
                                " is a symbolic link, which is not followed.",
                            (chosen / "pipe.korvexbackup").string() + " is not a file."));
    EXPECT_THAT(backupsIn(history()).backups, SizeIs(4));
    EXPECT_THROW(backupsIn(chosen / "none"), FileError);

    // Another folder in its place has none of them, whatever stands there.
    fs::rename(chosen, folder / "away");
    fs::create_directory(chosen);
    fs::copy(folder / "away" / history().filename(), history());
    EXPECT_THROW(automaticBackups(known, installation), AutomaticBackupError);
    try {
        checkBackup(listed[1], log, work);
        ADD_FAILURE() << "another one was read";
    } catch (const FileError& error) {
        EXPECT_EQ(error.errorDescription(), made.file.string() +
                                                " was replaced by another file meanwhile. Try "
                                                "again.");
    }
}

TEST_F(AutomaticBackupTest, ABookmarkKnowsItsFolderAgain) {
    const auto other = folder / "other";
    const auto away = folder / "away";
    fs::create_directory(other);
    const auto marker = chosen / FolderBookmark::kMarkerName;
    using Happening = std::function<void()>;
    const Happening vanish = [&] { fs::rename(chosen, away); };
    const Happening unmount = [&] {
        vanish();
        fs::create_directory(chosen);
    };
    const Happening replace = [&] {
        vanish();
        FolderBookmark::make(other);
        fs::rename(other, chosen);
    };
    const Happening becomeAFile = [&] {
        vanish();
        put(chosen);
    };
    const Happening loseItsMark = [&] { fs::remove(marker); };
    const Happening damageItsMark = [&] { put(marker, "none"); };
    for (const auto& happening :
         {vanish, unmount, replace, becomeAFile, loseItsMark, damageItsMark}) {
        fs::remove_all(chosen);
        fs::remove_all(away);
        fs::create_directories(other);
        fs::create_directory(chosen);
        bookmark = FolderBookmark::make(chosen).bytes();
        EXPECT_EQ(refusal(), std::nullopt);
        const auto before = namesIn(history());
        happening();
        const auto left = fs::is_directory(chosen) ? namesIn(chosen) : std::vector<std::string>();
        EXPECT_EQ(refusal(), AutomaticBackupErrorCase::chooseAgain);
        EXPECT_EQ(fs::is_directory(chosen) ? namesIn(chosen) : std::vector<std::string>(), left)
            << "nothing is written where another folder stands";
    }

    // Whoever chooses a folder that another installation has chosen shares its mark.
    fs::remove_all(chosen);
    fs::create_directory(chosen);
    bookmark = FolderBookmark::make(chosen).bytes();
    EXPECT_EQ(FolderBookmark::make(folder / "." / "chosen").bytes(), bookmark);
    fs::rename(chosen, away);
    fs::create_directory_symlink(away, chosen);
    EXPECT_EQ(refusal(), std::nullopt) << "the same folder, by whatever way";
    EXPECT_THROW(FolderBookmark::make(folder / "none"), AutomaticBackupError);
    bookmark = base::Bytes{'n', 'o', 'n', 'e'};
    EXPECT_EQ(refusal(), AutomaticBackupErrorCase::unknownFolder);
    for (const std::string bytes : {"", "KVXFLDR1", "KVXFLDR1 no path of it", "/a path"}) {
        EXPECT_EQ(FolderBookmark::ofBytes(base::Bytes(bytes.begin(), bytes.end())).has_value(),
                  bytes.size() > 24)
            << bytes;
    }
}

TEST_F(AutomaticBackupTest, WhoeverChoosesAFolderAtOnceGetsTheSameMark) {
    constexpr int kRounds = 20;
    for (int round = 0; round < kRounds; ++round) {
        fs::remove_all(chosen);
        fs::create_directory(chosen);
        std::barrier together(4);
        std::vector<std::future<base::Bytes>> choices;
        for (int i = 0; i < 4; ++i) {
            choices.push_back(std::async(std::launch::async, [&] {
                together.arrive_and_wait();
                return FolderBookmark::make(chosen).bytes();
            }));
        }
        const auto mark = choices.front().get();
        for (auto other = choices.begin() + 1; other != choices.end(); ++other) {
            EXPECT_EQ(other->get(), mark);
        }
        EXPECT_NO_THROW(FolderBookmark::read(mark).open());
        EXPECT_THAT(namesIn(chosen), ElementsAre(FolderBookmark::kMarkerName));
    }
}

/// Right before each stage of a run, the folder goes and an empty one stands there.
TEST_F(AutomaticBackupTest, WritesIntoNoOtherFolderWhateverHappensMeanwhile) {
    const auto away = folder / "away";
    for (const auto stage : {Stage::reading, Stage::writing, Stage::verifying}) {
        for (const auto isRemoved : {false, true}) {
            fs::remove_all(away);
            fs::remove_all(chosen);
            fs::create_directory(chosen);
            bookmark = FolderBookmark::make(chosen).bytes();
            Work work([&](const Progress& progress) {
                if (progress.stage == stage && !fs::exists(away)) {
                    fs::rename(chosen, away);
                    fs::create_directory(chosen);
                    if (isRemoved) {
                        fs::remove_all(away);
                        fs::create_directory(away);
                    }
                }
            });
            EXPECT_THROW(make(std::move(work)), base::Error);
            EXPECT_THAT(namesIn(chosen), IsEmpty());
        }
    }
}

TEST_F(AutomaticBackupTest, OneWhoseOwnFolderIsMovedAwayIsNoSuccess) {
    bookmark = FolderBookmark::make(chosen).bytes();
    Work work([&](const Progress& progress) {
        if (progress.stage == Stage::verifying && fs::exists(history())) {
            fs::rename(history(), folder / "away");
        }
    });
    EXPECT_THROW(make(std::move(work)), base::Error);
    auto defaults = settings.open();
    EXPECT_EQ(app::AppPreferences(defaults, log).automaticBackupLastSuccess(), std::nullopt);
    EXPECT_EQ(fs::status(chosen / FolderBookmark::kMarkerName).permissions() &
                  fs::perms::others_read,
              fs::perms::others_read);
}

TEST_F(AutomaticBackupTest, NothingIsLeftOfOneThatIsCancelledOrKilled) {
    bookmark = FolderBookmark::make(chosen).bytes();
    for (const auto stage : {Stage::reading, Stage::checking, Stage::writing, Stage::verifying}) {
        std::stop_source stop;
        Work work(
            [&](const Progress& progress) {
                if (progress.stage == stage) {
                    stop.request_stop();
                }
            },
            stop.get_token());
        EXPECT_THROW(make(std::move(work)), Cancelled);
        EXPECT_THAT(namesIn(history()), IsEmpty());
    }
    const auto killed = newBackupName();
    put(history() / ("." + killed + ".new-Ab12Cd"));
    put(history() / ".notes.txt.new-Ab12Cd");
    const auto inUse = "." + newBackupName() + ".new-123456";
    put(history() / inUse);
    const base::FileDescriptor writer(::open((history() / inUse).c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(writer.get(), LOCK_EX), 0);
    Work failing([&](const Progress&) {
        EXPECT_FALSE(fs::exists(history() / ("." + killed + ".new-Ab12Cd")))
            << "on a full disk there is room only without it";
        throw Cancelled();
    });
    EXPECT_THROW(make(std::move(failing)), Cancelled);
    const auto made = make().file.filename().string();
    EXPECT_THAT(namesIn(history()), UnorderedElementsAre(made, inUse, ".notes.txt.new-Ab12Cd"));
}

TEST_F(AutomaticBackupTest, TheirFolderMustBeOneAndIsUsedByOneProgramAtATime) {
    bookmark = FolderBookmark::make(chosen).bytes();
    for (const std::function<void()>& make : std::initializer_list<std::function<void()>>{
             [&] { put(history()); },
             [&] { fs::create_directory_symlink(folder.path(), history()); },
             [&] { fs::create_symlink("nowhere", history()); }}) {
        make();
        const auto before = namesIn(folder.path());
        EXPECT_EQ(refusal(), AutomaticBackupErrorCase::historyIsNoFolder);
        EXPECT_EQ(namesIn(folder.path()), before);
        fs::remove(history());
    }
    fs::create_directory(history());
    const base::FileDescriptor other(::open(history().c_str(), O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(::flock(other.get(), LOCK_EX), 0);
    EXPECT_EQ(refusal(), AutomaticBackupErrorCase::running);
    EXPECT_THAT(namesIn(history()), IsEmpty());
}

/// As after another data folder was tried out, the store was begun anew, or the settings are kept
/// in step with another machine.
TEST_F(AutomaticBackupTest, StoresOfOneInstallationNeverRemoveEachOthersBackups) {
    auto defaults = settings.open();
    app::AppPreferences preferences(defaults, log);
    bookmark = FolderBookmark::make(chosen).bytes();
    preferences.setAutomaticBackupBookmark(bookmark);
    const auto other = store::ModelContainer::open(
        model::currentSchema(), {.file = folder / "other" / "Primary.store"}, log);
    keeping = 1;
    std::optional<fs::path> ours;
    std::optional<fs::path> theirs;
    for (int turn = 0; turn < 3; ++turn) {
        storeFile.reset();
        ours = make().file;
        storeFile = other->configuration().file;
        theirs = make().file;
        EXPECT_TRUE(fs::exists(*ours)) << "turn " << turn;
        preferences.reload();
        EXPECT_EQ(preferences.automaticBackupLastStoreID(), other->storeID());
    }
    EXPECT_EQ(ours->parent_path(), history()) << "the first one has that of the installation";
    const auto known = FolderBookmark::read(*bookmark);
    for (const auto& [of, file] : {std::pair(container.get(), ours), {other.get(), theirs}}) {
        app::setAutomaticBackupLastSuccess(defaults, of->storeID(), kNow);
        const auto id = app::settleAutomaticBackupID(defaults, installation, of->storeID());
        const auto listed = automaticBackups(known, id).backups;
        ASSERT_THAT(listed, SizeIs(1)) << "of its own the oldest went";
        EXPECT_EQ(listed.front().file, *file);
    }
    EXPECT_THAT(namesIn(chosen), SizeIs(3)) << "the mark and two histories";
}

TEST_F(AutomaticBackupTest, PruningKeepsTheMostRecentAndWhatIsNotItsOwn) {
    struct Case {
        std::size_t keeping;
        std::vector<std::string> kept;
    };
    for (const auto& each : {
             Case{0, {"Korvex-new"}},
             Case{1, {"Korvex-new"}},
             Case{2, {"Korvex-future", "Korvex-new"}},
             Case{4, {"Korvex-future", "Korvex-new", "Korvex-young", "Korvex-a"}},
             Case{5, {"Korvex-future", "Korvex-new", "Korvex-young", "Korvex-a", "Korvex-b"}},
             Case{7,
                  {"Korvex-future", "Korvex-new", "Korvex-young", "Korvex-a", "Korvex-b",
                   "Korvex-old"}},
         }) {
        fs::remove_all(chosen);
        const std::vector<std::string> foreign{"notes.korvexbackup", "korvex-a.korvexbackup",
                                               "Korvex-a.korvexbackup.bak", "Korvex-a.KORVEXBACKUP",
                                               "Korvex-.txt"};
        for (const auto& name : foreign) {
            put(chosen / name);
            setAge(chosen / name, 10'000);
        }
        fs::create_symlink("notes.korvexbackup", chosen / "Korvex-link.korvexbackup");
        fs::create_directories(chosen / "Korvex-folder.korvexbackup" / "x");
        const auto now = fs::file_time_type::clock::now();
        // The clock was ten years ahead once, and is an hour back now.
        for (const auto& [name, age] :
             {std::pair("Korvex-new", 1), std::pair("Korvex-young", 0), std::pair("Korvex-b", 24),
              std::pair("Korvex-a", 24), std::pair("Korvex-old", 48),
              std::pair("Korvex-future", -87'600)}) {
            const auto file = chosen / (std::string(name) + ".korvexbackup");
            put(file);
            fs::last_write_time(file, now - std::chrono::hours(age));
        }
        prune(HeldFolder(chosen), each.keeping, "Korvex-new.korvexbackup");
        auto expected = foreign;
        expected.insert(expected.end(), {"Korvex-link.korvexbackup", "Korvex-folder.korvexbackup"});
        for (const auto& name : each.kept) {
            expected.push_back(name + ".korvexbackup");
        }
        EXPECT_THAT(namesIn(chosen), ::testing::UnorderedElementsAreArray(expected))
            << each.keeping;
    }
    const HeldFolder held(chosen);
    const auto before = namesIn(chosen);
    fs::permissions(chosen, fs::perms::owner_read | fs::perms::owner_exec);
    const auto isRoot = ::geteuid() == 0 && ::seteuid(65'534) == 0; // who is held up by nothing
    try {
        prune(held, 1, "");
        ADD_FAILURE();
    } catch (const FileError& error) {
        EXPECT_THAT(error.errorDescription(),
                    HasSubstr("The backup was made; old ones could not be removed: "));
    }
    EXPECT_TRUE(!isRoot || ::seteuid(0) == 0);
    fs::permissions(chosen, fs::perms::owner_all);
    EXPECT_EQ(namesIn(chosen), before);
}

TEST_F(AutomaticBackupTest, WhatTheDiskGivesBackOtherwiseOrCannotBeReadIsNoBackup) {
    bookmark = FolderBookmark::make(chosen).bytes();
    Work work([&](const Progress& progress) {
        if (progress.stage == Stage::verifying) {
            std::fstream(history() / namesIn(history()).front()).put('[');
        }
    });
    try {
        make(std::move(work));
        FAIL();
    } catch (const FileError& error) {
        EXPECT_THAT(error.errorDescription(), HasSubstr("not what the disk gives back"));
    }
    EXPECT_THAT(namesIn(history()), IsEmpty());
    auto defaults = settings.open();
    EXPECT_EQ(app::AppPreferences(defaults, log).automaticBackupLastSuccess(), std::nullopt);

    fs::remove(history());
    storeFile = folder / "no store";
    put(*storeFile, "something else");
    EXPECT_THROW(make(), base::Error);
    EXPECT_THAT(namesIn(chosen), ElementsAre(FolderBookmark::kMarkerName));
}

/// Killed in between, the next start need not make one more.
TEST_F(AutomaticBackupTest, TheSettingsTellOfItBeforeOldOnesGo) {
    bookmark = FolderBookmark::make(chosen).bytes();
    auto defaults = settings.open();
    app::AppPreferences(defaults, log).setAutomaticBackupBookmark(bookmark);
    keeping = 1;
    const auto first = make().file.filename().string();
    setAge(history() / first, 1);
    app::AppPreferences preferences(defaults, log);
    preferences.setAutomaticBackupLastSuccess(std::nullopt);

    const base::FileDescriptor happenings(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    ASSERT_GE(::inotify_add_watch(happenings.get(), history().c_str(), IN_DELETE), 0);
    ASSERT_GE(
        ::inotify_add_watch(happenings.get(), settings.path().parent_path().c_str(), IN_MOVED_TO),
        0);
    make();
    std::string seen(4096, '\0');
    const auto size = ::read(happenings.get(), seen.data(), seen.size());
    ASSERT_GT(size, 0);
    seen.resize(static_cast<std::size_t>(size));
    EXPECT_LT(seen.find("settings.json"), seen.find(first));
    EXPECT_NE(seen.find(first), std::string::npos);
    preferences.reload();
    EXPECT_EQ(preferences.automaticBackupLastSuccess(), kNow);
}

} // namespace
} // namespace korvex::storage
