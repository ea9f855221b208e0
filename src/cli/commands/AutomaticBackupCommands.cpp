#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/Options.h"
#include "cli/output/BackupText.h"
#include "cli/session/Session.h"
#include "cli/terminal/LongWork.h"

#include "app/FileUserDefaults.h"
#include "app/StoreLocation.h"
#include "storage/AutomaticBackup.h"
#include "storage/BackupHistory.h"
#include "storage/FolderBookmark.h"

#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace korvex::cli {

namespace {

struct ListOptions {
    std::vector<std::string> folder;
};

void requireUsersOwnStore(const Session& session) {
    if (!app::isUsersOwn(session.storeFile().parent_path())) {
        throw storage::AutomaticBackupError(storage::AutomaticBackupErrorCase::anotherStore);
    }
}

storage::BackupList listed(Session& session, const ListOptions& options) {
    if (!options.folder.empty()) {
        return storage::backupsIn(options.folder.front());
    }
    requireUsersOwnStore(session);
    const auto& preferences = session.preferences();
    if (!preferences.automaticBackupBookmark()) {
        throw storage::AutomaticBackupError(storage::AutomaticBackupErrorCase::noFolder);
    }
    return storage::automaticBackups(
        storage::FolderBookmark::read(*preferences.automaticBackupBookmark()),
        preferences.automaticBackupID());
}

BackupState stateFor(backup::BackupErrorCase error) {
    using Case = backup::BackupErrorCase;
    return error == Case::unsupportedVersion ? BackupState::unsupported
           : error == Case::tooLarge         ? BackupState::tooLarge
                                             : BackupState::damaged;
}

std::vector<ReadBackup> read(Session& session, std::vector<storage::ListedBackup> backups) {
    LongWork longWork(session.environment().errorDescriptor);
    std::vector<ReadBackup> result;
    for (auto& each : backups) {
        ReadBackup one{.listed = std::move(each)};
        try {
            one.summary =
                storage::checkBackup(one.listed, session.environment().log, longWork.work());
        } catch (const storage::Cancelled&) {
            throw;
        } catch (const backup::BackupError& error) {
            one.state = stateFor(error.which());
            one.problem = error.errorDescription();
        } catch (const base::Error& error) {
            one.state = BackupState::unreadable;
            one.problem = error.errorDescription();
        }
        result.push_back(std::move(one));
    }
    return result;
}

ExitStatus list(Session& session, const ListOptions& options) {
    auto found = listed(session, options);
    const auto backups = read(session, std::move(found.backups));
    printBackups(session, backups, found.unreadable);
    if (backups.empty() && found.unreadable.empty() && !session.wantsJson()) {
        session.remark(options.folder.empty()
                           ? "There are no automatic backups yet."
                           : "There are no backups in " + options.folder.front() + ".");
    }
    auto status = ExitStatus::done;
    for (const auto& each : found.unreadable) {
        status = ExitStatus::refused;
        if (!session.wantsJson()) {
            session.remark(each);
        }
    }
    for (const auto& each : backups) {
        if (!each.summary) {
            status = ExitStatus::refused;
            if (!session.wantsJson()) {
                session.remark(each.listed.file.filename().string() + ": " + each.problem);
            }
        }
    }
    return status;
}

ExitStatus now(Session& session, const NoOptions&) {
    requireUsersOwnStore(session);
    const auto backup =
        storage::automaticBackup(session.preferences(), session.storeFile(), session.now());
    app::FileUserDefaults defaults(app::FileUserDefaults::defaultFile());
    const auto made = [&] {
        LongWork longWork(session.environment().errorDescriptor);
        return storage::makeAutomaticBackup(backup, defaults, session.environment().log,
                                            longWork.work());
    }();
    printBackup(session, "Backup made: " + made.file.string(), made.file, made.summary);
    if (made.pruningFailure) {
        try {
            std::rethrow_exception(made.pruningFailure);
        } catch (const base::Error& error) {
            session.remark(error.errorDescription());
        }
    }
    return ExitStatus::done;
}

} // namespace

void addAutomaticBackupCommands(CLI::App& backupCommands, Action& chosen) {
    const auto listing =
        addCommand(backupCommands, "list", "Reads the automatic backups and says what each holds",
                   chosen, list);
    addFiles(listing.parser, "FOLDER", listing.options->folder,
             "Another folder, and those of automatic backups in it")
        ->expected(1)
        ->required(false);
    listing.parser.footer(
        "Ends with 1 when one of them could not be imported, or not all could be read.");
    addCommand(backupCommands, "now",
               "Makes an automatic backup at once, in the folder that was chosen in the window",
               chosen, now)
        .parser.footer("Also where daily backups are off. Those that are too many are removed.");
}

} // namespace korvex::cli
