#include "storage/RecoveryFolder.h"

#include "backup/BackupFileIO.h"
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

/// Absent where there is no such file. Throws FileError and BackupError.
std::optional<base::Bytes> contentsOf(const fs::path& file, Work& work) {
    struct stat status {};
    if (::lstat(file.c_str(), &status) != 0 && errno == ENOENT) {
        return std::nullopt;
    }
    return readBackupBytes(file, work);
}

bool isThere(const fs::path& file) {
    struct stat status {};
    return ::lstat(file.c_str(), &status) == 0 || errno != ENOENT;
}

/// The same of the file that is named, absent for any other. What is no file, or too large for a
/// backup, is another one.
std::optional<base::Bytes> contentsIfNamed(const fs::path& file, const std::string& named,
                                           Work& work) {
    try {
        auto contents = contentsOf(file, work);
        return contents && RecoveryFolder::identity(*contents) == named ? std::move(contents)
                                                                        : std::nullopt;
    } catch (const backup::BackupError&) {
        return std::nullopt;
    }
}

bool isNamed(const fs::path& file, const std::string& named, Work& work) {
    return contentsIfNamed(file, named, work).has_value();
}

} // namespace

std::string RecoveryFolder::identity(std::span<const std::uint8_t> contents) {
    return std::to_string(contents.size()) + "-" + std::to_string(base::checksum(contents));
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

backup::BackupDocument RecoveryFolder::read(const Named& named, Work& work) const {
    // Where the store names none, the former one is what stood there before an import that failed.
    for (const auto& file : {named ? m_file : m_former, named ? m_former : m_file}) {
        if (const auto contents =
                named ? contentsIfNamed(file, *named, work) : contentsOf(file, work)) {
            return backup::BackupFileIO::decode(
                *contents, [&work](std::size_t bytes) { work.advance(bytes); });
        }
    }
    throw RestoreError(isThere(m_file) || isThere(m_former) ? RestoreErrorCase::snapshotIsGone
                                                            : RestoreErrorCase::nothingToTakeBack);
}

std::optional<fs::path> RecoveryFolder::fileToRead(const Named& named, Work& work) const {
    if (!isThere(m_former)) {
        return isThere(m_file) ? std::optional(m_file) : std::nullopt;
    }
    return !named || !isNamed(m_file, *named, work) ? m_former : m_file;
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
