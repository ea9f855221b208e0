#include "storage/BackupHistory.h"

#include "backup/BackupDocument.h"
#include "base/FileReplacement.h"

#include <sys/stat.h>

#include <algorithm>
#include <system_error>

namespace korvex::storage {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kHistoryPrefix = "Korvex Automatic Backups ";
constexpr std::string_view kNamePrefix = "Korvex-";
constexpr std::string_view kExtension = ".korvexbackup";

bool isBackupName(const fs::path& name) {
    return name.extension() == kExtension;
}

bool isAutomaticName(const fs::path& name) {
    return isBackupName(name) && name.stem().native().starts_with(kNamePrefix);
}

/// The folder's regular files whose names are meant, in no order; no symbolic links. Throws
/// std::filesystem::filesystem_error.
template <typename IsMeant>
std::vector<ListedBackup> filesIn(const fs::path& folder, IsMeant isMeant) {
    std::vector<ListedBackup> found;
    std::error_code error;
    for (fs::directory_iterator each(folder, error), end; !error && each != end;
         each.increment(error)) {
        struct stat status {};
        // What is gone by now is none.
        if (!isMeant(each->path().filename()) || ::lstat(each->path().c_str(), &status) != 0 ||
            !S_ISREG(status.st_mode)) {
            continue;
        }
        const auto modified = static_cast<double>(status.st_mtim.tv_sec) +
                              static_cast<double>(status.st_mtim.tv_nsec) / 1e9;
        found.push_back({.file = each->path(),
                         .modifiedAt = base::Instant::fromUnixSeconds(modified),
                         .bytes = static_cast<std::uintmax_t>(status.st_size)});
    }
    if (error) {
        throw fs::filesystem_error("readdir", folder, error);
    }
    return found;
}

bool isNewer(const ListedBackup& left, const ListedBackup& right) {
    return left.modifiedAt != right.modifiedAt
               ? left.modifiedAt > right.modifiedAt
               : left.file.filename().native() < right.file.filename().native();
}

/// Of a folder that is shown to somebody; the newest first.
std::vector<ListedBackup> sorted(std::vector<ListedBackup> found) {
    std::sort(found.begin(), found.end(), isNewer);
    return found;
}

FileError unreadable(const fs::path& folder, const fs::filesystem_error& error) {
    return FileError(folder.string() + " could not be read: " + error.code().message() + ".");
}

} // namespace

std::string historyFolderName(const base::Uuid& installation) {
    return std::string(kHistoryPrefix) + installation.text();
}

std::string newBackupName() {
    return std::string(kNamePrefix) + base::Uuid::random().text() + std::string(kExtension);
}

std::vector<ListedBackup> automaticBackups(const FolderBookmark& bookmark,
                                           const base::Uuid& installation) {
    const auto held = bookmark.open();
    const auto folder = bookmark.path() / historyFolderName(installation);
    std::error_code error;
    if (fs::symlink_status(folder, error).type() == fs::file_type::not_found) {
        return {};
    }
    try {
        return sorted(filesIn(folder, isAutomaticName));
    } catch (const fs::filesystem_error& failure) {
        throw unreadable(folder, failure);
    }
}

std::vector<ListedBackup> backupsIn(const fs::path& folder) {
    try {
        auto found = filesIn(folder, isBackupName);
        for (const auto& each : fs::directory_iterator(folder)) {
            if (each.path().filename().native().starts_with(kHistoryPrefix) &&
                each.symlink_status().type() == fs::file_type::directory) {
                const auto ofInstallation = filesIn(each.path(), isBackupName);
                found.insert(found.end(), ofInstallation.begin(), ofInstallation.end());
            }
        }
        return sorted(std::move(found));
    } catch (const fs::filesystem_error& failure) {
        throw unreadable(folder, failure);
    }
}

BackupSummary checkBackup(const ListedBackup& backup, base::LogSink& log, Work& work) {
    const auto document = readBackup(backup.file, work);
    work.begin(Stage::checking);
    backup::validate(document, log);
    return {.exportedAt = document.exportedAt,
            .boards = document.boards.size(),
            .entries = document.entries.size(),
            .bytes = backup.bytes};
}

void removeUnfinished(const fs::path& folder) {
    base::removeLeftBehind(folder, isAutomaticName);
}

void prune(const fs::path& folder, std::size_t keeping, std::string_view newest) {
    try {
        auto candidates = filesIn(folder, isAutomaticName);
        std::sort(candidates.begin(), candidates.end(), [&](const auto& left, const auto& right) {
            const auto leftIsNewest = left.file.filename() == newest;
            const auto rightIsNewest = right.file.filename() == newest;
            return leftIsNewest != rightIsNewest ? leftIsNewest : isNewer(left, right);
        });
        for (const auto kept = std::max<std::size_t>(keeping, 1); candidates.size() > kept;
             candidates.pop_back()) {
            fs::remove(candidates.back().file);
        }
    } catch (const fs::filesystem_error& failure) {
        throw FileError("The backup was made; old ones could not be removed: " +
                        failure.code().message() + ".");
    }
}

} // namespace korvex::storage
