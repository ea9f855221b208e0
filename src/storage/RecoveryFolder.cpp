#include "storage/RecoveryFolder.h"

#include "backup/BackupDocument.h"
#include "base/Digest.h"
#include "base/FileReplacement.h"
#include "storage/BackupFile.h"
#include "storage/RestoreError.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>
#include <vector>

namespace korvex::storage {

namespace {

namespace fs = std::filesystem;

constexpr const char* kBesideName = "BeforeUndo.korvexbackup";
constexpr const char* kFormerName = "BeforeLastRestore.korvexbackup";

base::FileDescriptor openFolder(const fs::path& folder) {
    return base::FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

base::FileDescriptor opened(const fs::path& folder, RecoveryFolder::Missing missing) {
    if (missing == RecoveryFolder::Missing::make) {
        requireWritten(folder.string(), base::makeFolders(folder, S_IRWXU));
    }
    auto descriptor = openFolder(folder);
    if (!descriptor.isOpen()) {
        if (errno == ENOENT) {
            throw RestoreError(RestoreErrorCase::nothingToTakeBack);
        }
        throw FileError(folder.string() +
                        " could not be read: " + std::generic_category().message(errno) + ".");
    }
    return descriptor;
}

bool isThere(const fs::path& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 || errno != ENOENT;
}

/// Not open for one that is not there, or is another one by its kind or size: neither has to be
/// readable. Throws FileError.
base::FileDescriptor openIfFits(const fs::path& file, const std::string& named) {
    struct stat status {};
    const auto fits =
        ::stat(file.c_str(), &status) != 0
            ? errno != ENOENT
            : S_ISREG(status.st_mode) && named.starts_with(std::to_string(status.st_size) + "-");
    return fits ? openBackup(file) : base::FileDescriptor();
}

/// Absent for another one, as is what is no file, or too large for a backup.
std::optional<base::Bytes> contentsIfNamed(const base::FileDescriptor& open, const fs::path& file,
                                           const std::string& named, Work& work) {
    try {
        auto contents = readBackupBytes(open, file, work);
        return RecoveryFolder::identity(contents) == named ? std::optional(std::move(contents))
                                                           : std::nullopt;
    } catch (const backup::BackupError&) {
        return std::nullopt;
    }
}

bool isNamed(const fs::path& file, const std::string& named, Work& work) {
    const auto open = openIfFits(file, named);
    return open.isOpen() && contentsIfNamed(open, file, named, work).has_value();
}

} // namespace

std::string RecoveryFolder::identity(std::span<const std::uint8_t> contents) {
    return std::to_string(contents.size()) + "-" + std::to_string(base::checksum(contents));
}

std::optional<RecoveryFolder::Kept> RecoveryFolder::find(const fs::path& file, const Named& named,
                                                         Work& work) {
    if (!named) {
        return std::nullopt;
    }
    // All are opened before one is read, in the order in which a file goes from name to name: who
    // moves it meanwhile moves it to one that is still to come.
    std::vector<std::pair<fs::path, base::FileDescriptor>> files;
    std::optional<FileError> unopened;
    for (const auto& each :
         {file.parent_path() / kBesideName, file, file.parent_path() / kFormerName}) {
        try {
            if (auto open = openIfFits(each, *named); open.isOpen()) {
                files.emplace_back(each, std::move(open));
            }
        } catch (const FileError& error) {
            unopened = error; // another one may be the right one
        }
    }
    for (const auto& [each, open] : files) {
        if (auto contents = contentsIfNamed(open, each, *named, work)) {
            return Kept{.file = each, .contents = std::move(*contents)};
        }
    }
    if (unopened) {
        throw FileError(*unopened);
    }
    return std::nullopt;
}

RecoveryFolder::RecoveryFolder(const fs::path& file, Missing missing,
                               std::chrono::milliseconds patience)
    : m_file(file),
      m_beside(file.parent_path() / kBesideName),
      m_former(file.parent_path() / kFormerName),
      m_lock(opened(file.parent_path(), missing), patience) {
    if (m_lock.state() == base::FileLock::State::taken) {
        throw RestoreError(RestoreErrorCase::running);
    }
    base::removeLeftBehind(file.parent_path(), [&](std::string_view target) {
        return target == m_file.filename().native() || target == kBesideName;
    });
}

RecoveryFolder::~RecoveryFolder() {
    if (m_isOurs) {
        ::unlink(m_beside.c_str());
    }
}

void RecoveryFolder::settle(const Named& named, Work& work) {
    // One that is not named stays until the next replacement: a save that failed may still turn out
    // to have happened, after a power cut.
    if (named && isNamed(m_beside, *named, work)) {
        requireWritten(m_file.string(), base::moveFile(m_beside, m_file));
    }
}

const fs::path& RecoveryFolder::makeRoom(const Named& named, Work& work) {
    m_isBeside = false;
    if (isThere(m_former)) {
        if (!named || !isNamed(m_file, *named, work)) {
            return m_file; // what stands there is of an import that failed
        }
        requireWritten(m_former.string(), ::unlink(m_former.c_str()) == 0
                                              ? std::error_code()
                                              : std::error_code(errno, std::generic_category()));
    }
    if (const auto error = base::keepUnder(m_file, m_former);
        error != std::errc::no_such_file_or_directory) {
        requireWritten(m_former.string(), error);
    }
    return m_file;
}

const fs::path& RecoveryFolder::makeRoomBeside() {
    m_isBeside = true;
    m_wasBeside = isThere(m_beside);
    return m_beside;
}

fs::path RecoveryFolder::saved(const base::Logger& log) {
    if (m_isBeside) {
        if (const auto error = base::moveFile(m_beside, m_file); error && isThere(m_beside)) {
            log.warning("The recovery snapshot is not in its place: " + error.message());
            return m_beside; // the next restore finds it
        }
    }
    for (const auto& other : {m_beside, m_former}) {
        if (::unlink(other.c_str()) != 0 && errno != ENOENT) {
            log.warning("A former recovery snapshot could not be removed: " +
                        std::generic_category().message(errno));
        }
    }
    return m_file;
}

} // namespace korvex::storage
