#include "storage/BackupHistory.h"

#include "backup/BackupDocument.h"
#include "base/FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
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

std::string unreadable(const fs::path& what, const std::error_code& error) {
    return what.string() + " could not be read: " + error.message() + ".";
}

ListedBackup listed(fs::path file, const struct stat& status) {
    const auto modified = static_cast<double>(status.st_mtim.tv_sec) +
                          static_cast<double>(status.st_mtim.tv_nsec) / 1e9;
    return {.file = std::move(file),
            .modifiedAt = base::Instant::fromUnixSeconds(modified),
            .bytes = static_cast<std::uintmax_t>(status.st_size),
            .device = status.st_dev};
}

/// The folder's regular files whose names are meant, in no order; of anything else of such a name
/// is told that it is none. They are told of as standing in `named`. Throws
/// std::filesystem::filesystem_error where the folder itself cannot be read.
template <typename IsMeant>
BackupList filesIn(const HeldFolder& folder, const fs::path& named, IsMeant isMeant) {
    BackupList found;
    const auto held = folder.path();
    std::error_code error;
    for (fs::directory_iterator each(held, error), end; !error && each != end;
         each.increment(error)) {
        const auto name = each->path().filename();
        struct stat status {};
        if (!isMeant(name)) {
            continue;
        }
        if (::fstatat(folder.descriptor(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            if (errno != ENOENT) { // what is gone by now is none
                found.unreadable.push_back(
                    unreadable(named / name, {errno, std::generic_category()}));
            }
        } else if (S_ISREG(status.st_mode)) {
            found.backups.push_back(listed(named / name, status));
        } else {
            found.unreadable.push_back((named / name).string() +
                                       (S_ISLNK(status.st_mode)
                                            ? " is a symbolic link, which is not followed."
                                            : " is not a file."));
        }
    }
    if (error) {
        throw fs::filesystem_error("readdir", named, error);
    }
    return found;
}

bool isNewer(const ListedBackup& left, const ListedBackup& right) {
    return left.modifiedAt != right.modifiedAt
               ? left.modifiedAt > right.modifiedAt
               : left.file.filename().native() < right.file.filename().native();
}

/// For somebody who is shown them.
BackupList sorted(BackupList found) {
    std::sort(found.backups.begin(), found.backups.end(), isNewer);
    std::sort(found.unreadable.begin(), found.unreadable.end());
    return found;
}

/// The folders of histories.
std::vector<fs::path> historiesIn(const HeldFolder& folder) {
    std::vector<fs::path> names;
    for (const auto& each : fs::directory_iterator(folder.path())) {
        std::error_code unknown; // then it is told of when it is opened
        if (each.path().filename().native().starts_with(kHistoryPrefix) &&
            (each.symlink_status(unknown).type() == fs::file_type::directory || unknown)) {
            names.push_back(each.path().filename());
        }
    }
    return names;
}

/// Whether somebody could read backups there.
bool holdsBackups(const HeldFolder& folder, const fs::path& history) {
    try {
        return !filesIn(HeldFolder(folder, history), history, isBackupName).backups.empty();
    } catch (const fs::filesystem_error&) {
        return false;
    }
}

bool hasForeign(const HeldFolder& folder, const fs::path& own) {
    const auto names = historiesIn(folder);
    return std::any_of(names.begin(), names.end(), [&](const fs::path& name) {
        return name != own && holdsBackups(folder, name);
    });
}

void requireSame(const ListedBackup& backup) {
    struct stat status {};
    if (::stat(backup.file.c_str(), &status) == 0 && listed(backup.file, status) != backup) {
        throw FileError(backup.file.string() +
                        " was replaced by another file meanwhile. Try again.");
    }
}

} // namespace

std::string historyFolderName(const base::Uuid& history) {
    return std::string(kHistoryPrefix) + history.text();
}

std::string newBackupName() {
    return std::string(kNamePrefix) + base::Uuid::random().text() + std::string(kExtension);
}

BackupList automaticBackups(const FolderBookmark& bookmark, const base::Uuid& history) {
    const auto name = historyFolderName(history);
    const auto named = bookmark.path() / name;
    const auto chosen = bookmark.open();
    BackupList list;
    try {
        list = sorted(filesIn(HeldFolder(chosen, name), named, isAutomaticName));
    } catch (const fs::filesystem_error& failure) {
        if (failure.code() != std::errc::no_such_file_or_directory) {
            throw FileError(unreadable(named, failure.code()));
        }
    }
    try {
        list.hasForeign = hasForeign(chosen, name);
    } catch (const fs::filesystem_error&) {
        list.hasForeign = false; // nor could anybody find them there
    }
    return list;
}

BackupList backupsIn(const fs::path& folder) {
    try {
        const HeldFolder held(folder);
        auto found = filesIn(held, folder, isBackupName);
        for (const auto& name : historiesIn(held)) {
            try {
                auto more = filesIn(HeldFolder(held, name), folder / name, isBackupName);
                std::move(more.backups.begin(), more.backups.end(),
                          std::back_inserter(found.backups));
                std::move(more.unreadable.begin(), more.unreadable.end(),
                          std::back_inserter(found.unreadable));
            } catch (const fs::filesystem_error& failure) {
                found.unreadable.push_back(unreadable(folder / name, failure.code()));
            }
        }
        return sorted(std::move(found));
    } catch (const fs::filesystem_error& failure) {
        throw FileError(unreadable(folder, failure.code()));
    }
}

BackupSummary checkBackup(const ListedBackup& backup, base::LogSink& log, Work& work) {
    requireSame(backup);
    const auto document = readBackup(backup.file, work);
    requireSame(backup); // else who knows which one was read
    work.begin(Stage::checking);
    backup::validate(document, log);
    return {.exportedAt = document.exportedAt,
            .boards = document.boards.size(),
            .entries = document.entries.size(),
            .bytes = backup.bytes};
}

void removeUnfinished(const fs::path& folder) {
    base::removeLeftBehind(folder, isBackupName);
}

void prune(const HeldFolder& folder, std::size_t keeping, std::string_view newest) {
    try {
        auto candidates = filesIn(folder, folder.path(), isAutomaticName).backups;
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
