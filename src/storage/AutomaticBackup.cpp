#include "storage/AutomaticBackup.h"

#include "app/StoreLocation.h"
#include "base/FileLock.h"
#include "storage/BackupHistory.h"
#include "storage/BackupService.h"
#include "storage/ErrorsOnly.h"
#include "storage/FolderBookmark.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace korvex::storage {

namespace {

namespace fs = std::filesystem;

AutomaticBackupError refusal(AutomaticBackupErrorCase which) {
    return AutomaticBackupError(which);
}

/// The backups' own folder in the chosen one. What they hold is the user's alone.
HeldFolder historyFolder(const HeldFolder& chosen, const std::string& name) {
    if (::mkdirat(chosen.descriptor(), name.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
        throw fs::filesystem_error("mkdir", name, {errno, std::generic_category()});
    }
    // Also where it is there: who made it may have been killed before this.
    chosen.sync();
    try {
        return {chosen, name};
    } catch (const fs::filesystem_error& error) {
        if (error.code() == std::errc::not_a_directory ||
            error.code() == std::errc::too_many_symbolic_link_levels) {
            throw refusal(AutomaticBackupErrorCase::historyIsNoFolder);
        }
        throw;
    }
}

/// Two programs of one installation would each remove what the other is about to keep.
base::FileLock exclusively(const HeldFolder& history) {
    base::FileDescriptor folder(
        ::openat(history.descriptor(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.isOpen()) {
        throw fs::filesystem_error("open", {errno, std::generic_category()});
    }
    base::FileLock lock(std::move(folder), std::chrono::milliseconds::zero());
    if (lock.state() == base::FileLock::State::taken) {
        throw refusal(AutomaticBackupErrorCase::running);
    }
    return lock;
}

/// The settings tell from now on when it was made, unless another folder was chosen meanwhile,
/// which has none.
void record(const AutomaticBackup& backup, const base::Uuid& store, app::UserDefaults& defaults) {
    const auto isChosen = [&] {
        defaults.refresh();
        return app::automaticBackupBookmark(defaults) == backup.bookmark;
    };
    if (isChosen()) {
        app::setAutomaticBackupLastSuccess(defaults, store, backup.now);
        if (!isChosen()) { // another one was at this very moment
            app::setAutomaticBackupLastSuccess(defaults, store, std::nullopt);
        }
    }
}

AutomaticBackupResult makeIn(const HeldFolder& chosen, const FolderBookmark& bookmark,
                             const AutomaticBackup& backup, app::UserDefaults& defaults,
                             base::LogSink& log, Work& work) {
    // First: where there is nothing to be backed up, nothing is made in the folder.
    const auto container = openForReading(backup.storeFile, log);
    const auto& store = container->storeID();
    const auto folderName =
        historyFolderName(app::settleAutomaticBackupID(defaults, backup.installation, store));
    const auto history = historyFolder(chosen, folderName);
    const auto lock = exclusively(history);
    const auto name = newBackupName();
    AutomaticBackupResult result{
        .file = bookmark.path() / folderName / name,
        .summary = exportBackup(*container, history.path() / name, backup.now, log, work)};
    // Where it was removed or unmounted by now, nobody would find the backup.
    if (const auto there = bookmark.open();
        !there.is(chosen) || !HeldFolder(there, folderName).is(history)) {
        throw refusal(AutomaticBackupErrorCase::chooseAgain);
    }
    record(backup, store, defaults);
    try {
        // What a power cut brings back goes with the next one.
        withErrorsOnly([&] { prune(history, backup.keeping, name); })();
    } catch (const base::Error&) {
        result.pruningFailure = std::current_exception();
    }
    return result;
}

} // namespace

std::string descriptionOf(AutomaticBackupErrorCase which) {
    switch (which) {
    case AutomaticBackupErrorCase::anotherStore:
        return "Automatic backups are made of the store in " +
               app::dataDirectory(std::nullopt).string() +
               " only. An export makes a backup of this one.";
    case AutomaticBackupErrorCase::noFolder:
        return "No folder for automatic backups has been chosen yet. Choose one in the settings of "
               "Korvex.";
    case AutomaticBackupErrorCase::notSaved:
        return "Could not save access to this backup folder. Choose another folder and try again.";
    case AutomaticBackupErrorCase::chooseAgain:
        return "The folder that was chosen for automatic backups is not there, or another one "
               "stands in its place. Make it available, or choose it again.";
    case AutomaticBackupErrorCase::unknownFolder:
        return "The settings no longer tell which folder was chosen for automatic backups. Choose "
               "it again.";
    case AutomaticBackupErrorCase::historyIsNoFolder:
        return "Something else stands in the place of the folder that the automatic backups are "
               "kept in.";
    case AutomaticBackupErrorCase::running:
        return "An automatic backup is already being made.";
    case AutomaticBackupErrorCase::noAnswer:
        return "The folder does not answer.";
    }
    return {};
}

std::string domainOf(AutomaticBackupErrorCase) {
    return "Korvex.AutomaticBackup";
}

AutomaticBackup automaticBackup(const app::AppPreferences& preferences, fs::path storeFile,
                                base::Instant now) {
    return {.storeFile = std::move(storeFile),
            .bookmark = preferences.automaticBackupBookmark(),
            .installation = preferences.automaticBackupID(),
            .keeping = static_cast<std::size_t>(preferences.automaticBackupRetention()),
            .now = now};
}

AutomaticBackupResult makeAutomaticBackup(const AutomaticBackup& backup,
                                          app::UserDefaults& defaults, base::LogSink& log,
                                          Work& work) {
    if (!backup.bookmark) {
        throw refusal(AutomaticBackupErrorCase::noFolder);
    }
    const auto bookmark = FolderBookmark::read(*backup.bookmark);
    try {
        return makeIn(bookmark.open(), bookmark, backup, defaults, log, work);
    } catch (const fs::filesystem_error& error) {
        throw FileError(
            "The folder for automatic backups could not be used: " + error.code().message() + ".");
    }
}

} // namespace korvex::storage
