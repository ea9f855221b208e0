#include "cli/commands/Commands.h"

#include "cli/commands/CommandDefinition.h"
#include "cli/commands/LoggedOperation.h"
#include "cli/commands/Options.h"
#include "cli/output/BackupText.h"
#include "cli/session/Session.h"
#include "cli/terminal/LongWork.h"

#include "app/FileUserDefaults.h"
#include "app/StoreLocation.h"
#include "storage/AutomaticBackup.h"
#include "storage/BackupHistory.h"
#include "storage/BackupService.h"
#include "storage/FolderBookmark.h"
#include "store/StoreError.h"

#include <algorithm>
#include <exception>
#include <span>
#include <string>
#include <utility>
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

/// Also where what the store holds cannot be read any more: this is when backups are asked for.
base::Uuid history(Session& session) {
    const auto& preferences = session.preferences();
    try {
        const auto store = storage::openForReading(session.storeFile(), session.environment().log);
        return preferences.automaticBackupID(store->storeID());
    } catch (const store::StoreError&) {
        const auto last = preferences.automaticBackupLastStoreID();
        return last ? preferences.automaticBackupID(*last) : preferences.automaticBackupID();
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
        storage::FolderBookmark::read(*preferences.automaticBackupBookmark()), history(session));
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

/// Each with the files that have it: many a folder has many of one kind.
std::vector<std::pair<std::string, std::string>> problemsOf(std::span<const ReadBackup> backups) {
    std::vector<std::pair<std::string, std::string>> problems;
    for (const auto& each : backups) {
        if (each.summary) {
            continue;
        }
        const auto name = each.listed.file.filename().string();
        const auto known = std::find_if(problems.begin(), problems.end(),
                                        [&](const auto& one) { return one.first == each.problem; });
        if (known == problems.end()) {
            problems.emplace_back(each.problem, name);
        } else {
            known->second += ", " + name;
        }
    }
    return problems;
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
    if (found.hasForeign && !session.wantsJson()) {
        session.remark(
            storage::FolderBookmark::read(*session.preferences().automaticBackupBookmark())
                .path()
                .string() +
            " also holds backups of another store or installation, or of this one before its "
            "settings were lost; named behind \"backup list\", it is listed whole.");
    }
    auto status = ExitStatus::done;
    for (const auto& each : found.unreadable) {
        status = ExitStatus::refused;
        if (!session.wantsJson()) {
            session.remark(each);
        }
    }
    for (const auto& [problem, files] : problemsOf(backups)) {
        status = ExitStatus::refused;
        if (!session.wantsJson()) {
            session.remark(std::string(files).append(": ").append(problem));
        }
    }
    return status;
}

ExitStatus now(Session& session, const NoOptions&) {
    requireUsersOwnStore(session);
    auto areSettingsKept = true;
    const auto made = logged(session, [&] {
        // Prepared as by any command, which tells what it finds.
        static_cast<void>(session.existing());
        base::Subscription keeping;
        app::FileUserDefaults defaults(app::FileUserDefaults::defaultFile());
        // Some say so only at their end.
        keeping = defaults.keptChanged().connect([&] { areSettingsKept = defaults.isKept(); });
        LongWork longWork(session.environment().errorDescriptor);
        return storage::makeAutomaticBackup(
            storage::automaticBackup(session.preferences(), session.storeFile(), session.now()),
            defaults, session.environment().log, longWork.work());
    });
    printBackup(session, "Backup made.", made.file, made.summary);
    if (made.pruningFailure) {
        try {
            logged(session, [&] { std::rethrow_exception(made.pruningFailure); });
        } catch (const base::Error& error) {
            session.remark(error.errorDescription());
        }
    }
    if (!areSettingsKept) {
        session.remark("The settings could not be written: Korvex does not know of this backup, "
                       "and makes another one.");
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
