#pragma once

#include "app/AppPreferences.h"
#include "base/Clock.h"
#include "base/Log.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "storage/AutomaticBackup.h"
#include "storage/BackgroundTask.h"
#include "storage/BackgroundThreads.h"
#include "storage/FolderBookmark.h"
#include "store/ModelContainer.h"

#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace korvex::storage {

/// Backs the store up once a day into the folder that the user chose, while the program runs; what
/// fell due before is made at the start. One a program; main thread; all that it is given must
/// outlive it. It touches the chosen folder on other threads only, for that may be on a share that
/// does not answer. With it ends a run, soon, and nothing is left of that.
class AutomaticBackupService {
public:
    /// What a run that failed is told by; the reason is beside it.
    static constexpr const char* kFailure =
        "Automatic backup failed. Check the folder is available, or choose it again. Your saved "
        "entries have not been changed.";

    /// Settings are the user's: they tell of one folder and one last backup, those of the store in
    /// the user's own data folder. Of another store none is made, and none of what is below does
    /// anything.
    enum class Store { another, usersOwn };

    struct Surroundings {
        Store store;
        app::AppPreferences& preferences;
        /// What the preferences stand in.
        const app::UserDefaults& defaults;
        const store::ModelContainer& container;
        BackgroundThreads& threads;
        const base::Clock& clock;
        base::RunLoop& runLoop;
        base::LogSink& log;
    };
    explicit AutomaticBackupService(const Surroundings& surroundings);

    /// Looks now and every quarter of an hour from now on whether a backup is due.
    void start();
    /// Starts one if it is due, automatic backups are on, and none is under way.
    void runIfDue(base::Instant now);
    /// Starts one unless one is under way, also where automatic backups are off.
    void backUpNow();
    /// Ends one that is under way, soon; nothing is left of it. One whose folder does not answer is
    /// waited for some seconds, or no longer where that is known.
    void cancel();

    /// Automatic backups go there as soon as the folder is marked, the first at the next look; all
    /// stays as it was where it cannot be. Does nothing while another one is being marked.
    void chooseFolder(const std::filesystem::path& folder);
    bool isChoosing() const { return m_choice != nullptr; }
    /// Why the folder that was chosen last could not be, until one is; else empty.
    const std::string& choiceRefusal() const { return m_choiceRefusal; }
    /// The chosen folder, there or not; absent: none was chosen, or which one is not known any
    /// more.
    std::optional<std::filesystem::path> folder() const;

    enum class FolderState {
        none,        ///< was chosen
        unknown,     ///< which one was chosen: what the settings hold of it cannot be read
        notLookedAt, ///< since it was chosen
        there,
        gone, ///< or another one stands in its place
    };
    /// As it was seen last, by a look or by a run.
    FolderState folderState() const;
    /// Whether the chosen one is gone, or not known any more.
    bool isFolderLost() const;
    /// Looks whether the folder is there, on another thread; `didChange` tells if it is otherwise
    /// than it was.
    void lookAtFolder();

    bool isRunning() const { return m_run != nullptr; }
    /// How far it is.
    const Progress& progress() const { return m_progress; }
    /// That one is under way that has not advanced for minutes.
    bool isSilent() const { return m_run && !m_advance; }
    /// That the last run was cancelled. It counts as none: where one is due it still is, and the
    /// next look makes it.
    bool wasCancelled() const { return m_wasCancelled; }

    /// That the last run failed, until one succeeds, also one of another program, or is cancelled,
    /// or a folder is chosen; the reason in its own words, else empty.
    const std::optional<std::string>& errorMessage() const { return m_errorMessage; }
    const std::string& errorReason() const { return m_errorReason; }
    /// Whether that is the folder, which is gone or not known any more.
    bool hasFailedForFolder() const { return m_errorMessage && m_hasFailedForFolder; }

    /// Why none is ever made of this store, as its user is told; absent where they are.
    std::optional<std::string> obstacle() const;

    /// Whether one is due when the last one was made at `last`: after a day, or when the clock was
    /// set back behind it.
    static bool isDue(std::optional<base::Instant> last, base::Instant now);
    /// When the last one of this store was made, as far as is known.
    std::optional<base::Instant> lastSuccess() const;
    /// When the next one is due; `now` where it is already, absent where none will be made.
    std::optional<base::Instant> nextDue(base::Instant now) const;

    /// Emitted when a run begins, advances or ends, or has not advanced for minutes; when a folder
    /// is being marked, and when it is or cannot be; when the chosen one is gone or there again;
    /// and when another setting or success makes the next one due at another time.
    base::Signal<>& didChange() { return m_didChange; }

private:
    enum class AskedBy { clock, user };

    void look();
    void lookSoon();
    void run(base::Instant now, AskedBy asked);
    void expectAdvance();
    /// What a run comes to: a backup, or the moment of one that is recent enough.
    using Outcome = std::variant<AutomaticBackupResult, base::Instant>;
    void finish(std::future<Outcome> result, const AutomaticBackup& request, AskedBy asked);
    void take(std::future<Outcome> result, const AutomaticBackup& request, AskedBy asked);
    /// What is to follow.
    enum class Next { none, inChosenFolder };
    Next takeFormer(std::future<Outcome> result);
    void succeed(const AutomaticBackup& request);
    void forgetFailure();
    void noteCancelled();
    void fail(const base::Error& failure, AskedBy asked);
    void log(const base::Error& failure) const;
    bool isOfChosenFolder(const AutomaticBackup& request) const;
    bool tellsOfAnotherStore() const;
    void seeFolder(std::future<void> isThere);
    std::optional<FolderBookmark> bookmark() const;
    void leave();
    void choose(std::future<base::Bytes> bookmark);
    void settingChanged(app::AppPreferences::Property property);

    Surroundings m_surroundings;
    base::Logger m_log;
    std::optional<std::string> m_errorMessage;
    std::string m_errorReason;
    bool m_hasFailedForFolder = false;
    bool m_wasCancelled = false;
    /// How many looks in a row have found somebody else making one.
    int m_quietLooks = 0;
    /// Of this store in the chosen folder, made by this program or found there: where another store
    /// of these settings is backed up too, they tell of the last one of either.
    std::optional<base::Instant> m_ownSuccess;
    Progress m_progress;
    base::Signal<> m_didChange;
    base::Subscription m_settings;
    /// Null before `start`.
    std::unique_ptr<base::RunLoop::Timer> m_timer;
    /// Null where none is under way.
    std::unique_ptr<BackgroundTask> m_run;
    bool m_isCancelling = false;
    /// Fires when that has not advanced for too long; null from then on, until it advances.
    std::unique_ptr<base::RunLoop::Timer> m_advance;
    /// Marks a folder; null where none is being chosen.
    std::unique_ptr<BackgroundTask> m_choice;
    std::unique_ptr<base::RunLoop::Timer> m_choiceAnswer;
    std::string m_choiceRefusal;
    /// Says nothing where which folder was chosen is not known.
    FolderState m_seen = FolderState::notLookedAt;
    /// Null where nobody is looking.
    std::unique_ptr<BackgroundTask> m_folderLook;
    /// Somebody asked while one was under way, which may have begun before what they saw.
    bool m_looksAgain = false;
};

} // namespace korvex::storage
