#include "base/FileReplacement.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace korvex::base {

namespace {

namespace fs = std::filesystem;

std::error_code lastError() {
    return {errno, std::generic_category()};
}

std::error_code writeAll(int descriptor, std::string_view contents) {
    while (!contents.empty()) {
        const auto written = ::write(descriptor, contents.data(), contents.size());
        if (written < 0 && errno != EINTR) {
            return lastError();
        }
        contents.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return {};
}

/// The staging file of mkstemp is for its owner alone; what it replaces may have been for others
/// too.
void takePermissions(int descriptor, const fs::path& target) {
    struct stat old {};
    if (::stat(target.c_str(), &old) == 0) {
        ::fchmod(descriptor, old.st_mode & 07777);
    }
}

/// The names of all staging files of a target are a dot, this much of its own name, this, and six
/// characters: room for all that in a name of 255 bytes. Whose name is cut may share with others;
/// what is theirs and in use is locked.
constexpr std::size_t kLongestName = 240;
constexpr std::string_view kStaged = ".new-";
constexpr std::size_t kRandomCharacters = 6;

std::string stagedName(const fs::path& target) {
    return target.filename().native().substr(0, kLongestName);
}

/// Of which target a staging file is; empty for what is none.
std::string_view targetOf(std::string_view name) {
    const auto rest = kStaged.size() + kRandomCharacters;
    if (name.size() <= rest + 1 || name.front() != '.' ||
        name.substr(name.size() - rest, kStaged.size()) != kStaged) {
        return {};
    }
    return name.substr(1, name.size() - rest - 1);
}

/// Fails where the file is there already.
int renameToNew(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    // Not every file system knows that.
    return errno == EINVAL && ::link(from.c_str(), to.c_str()) == 0 ? ::unlink(from.c_str()) : -1;
}

} // namespace

std::error_code syncFile(const fs::path& file) {
    const FileDescriptor descriptor(::open(file.c_str(), O_RDWR | O_CLOEXEC));
    return descriptor.isOpen() && ::fsync(descriptor.get()) == 0 ? std::error_code() : lastError();
}

std::error_code syncFolder(const fs::path& folder) {
    const FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Not every file system has folders that can be synced.
    return descriptor.isOpen() && (::fsync(descriptor.get()) == 0 || errno == EINVAL)
               ? std::error_code()
               : lastError();
}

std::error_code followLinks(fs::path& file) {
    constexpr int kLongestChain = 40;
    std::error_code error;
    for (int link = 0; fs::is_symlink(fs::symlink_status(file, error)); ++link) {
        if (link == kLongestChain) {
            return std::make_error_code(std::errc::too_many_symbolic_link_levels);
        }
        file = file.parent_path() / fs::read_symlink(file, error);
    }
    return {};
}

std::error_code makeFolders(const fs::path& folder, mode_t mode) {
    std::error_code error;
    if (fs::is_directory(folder, error) || folder == folder.root_path()) {
        return {};
    }
    if (error = makeFolders(folder.parent_path(), mode); error) {
        return error;
    }
    if (::mkdir(folder.c_str(), mode) != 0) {
        const auto failure = lastError();
        if (failure != std::errc::file_exists) {
            return failure;
        }
        // Another program was quicker, or something else stands there.
        return fs::is_directory(folder, error) ? std::error_code()
                                               : std::make_error_code(std::errc::not_a_directory);
    }
    return syncFolder(folder.parent_path());
}

StagedFile::~StagedFile() {
    if (!m_staged.empty()) {
        ::unlink(m_staged.c_str());
    }
}

std::error_code StagedFile::open(const fs::path& file, std::optional<mode_t> folderMode) {
    m_target = fs::absolute(file);
    if (const auto error = followLinks(m_target)) {
        return error;
    }
    std::error_code ignored;
    if (fs::is_directory(m_target, ignored)) {
        return std::make_error_code(std::errc::is_a_directory);
    }
    const auto folder = m_target.parent_path();
    if (folderMode) {
        if (const auto error = makeFolders(folder, *folderMode)) {
            return error;
        }
    }
    removeLeftBehind(
        folder, [name = stagedName(m_target)](std::string_view target) { return target == name; });
    const auto isTaken = [this] { // by another program, for left behind
        struct stat status {};
        // Where a file system knows no locks, one of two that write the same file at once may fail
        // at its end.
        return (::flock(m_file.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK) ||
               (::fstat(m_file.get(), &status) == 0 && status.st_nlink == 0);
    };
    do {
        auto staged =
            (folder / ("." + stagedName(m_target) + std::string(kStaged) + "XXXXXX")).string();
        m_file = FileDescriptor(::mkostemp(staged.data(), O_CLOEXEC));
        if (!m_file.isOpen()) {
            return lastError();
        }
        m_staged = staged;
    } while (isTaken());
    return {};
}

std::error_code StagedFile::write(std::string_view contents) {
    // The disk is to work while more is written, and not only at the end.
    constexpr off_t kAtOnce = 4 * 1024 * 1024;
    if (const auto error = writeAll(m_file.get(), contents)) {
        return error;
    }
    m_written += static_cast<off_t>(contents.size());
    if (m_written - m_started >= kAtOnce) {
        ::sync_file_range(m_file.get(), m_started, m_written - m_started, SYNC_FILE_RANGE_WRITE);
        m_started = m_written;
    }
    return {};
}

std::error_code StagedFile::sync() {
    if (::fsync(m_file.get()) != 0) {
        return lastError();
    }
    ::posix_fadvise(m_file.get(), 0, 0, POSIX_FADV_DONTNEED);
    return {};
}

std::error_code StagedFile::commit(Existing existing) {
    takePermissions(m_file.get(), m_target);
    const auto place = [&] {
        return existing == Existing::replace ? ::rename(m_staged.c_str(), m_target.c_str())
                                             : renameToNew(m_staged, m_target);
    };
    if (::fsync(m_file.get()) != 0 || place() != 0) {
        return lastError();
    }
    m_staged.clear();
    return syncFolder(m_target.parent_path());
}

std::error_code replaceFile(const fs::path& file, std::string_view contents) {
    StagedFile staged;
    auto error = staged.open(file);
    error = error ? error : staged.write(contents);
    return error ? error : staged.commit();
}

std::error_code moveFile(const fs::path& from, const fs::path& to) {
    if (::rename(from.c_str(), to.c_str()) != 0) {
        return lastError();
    }
    return syncFolder(fs::absolute(to).parent_path());
}

std::error_code moveToNew(const fs::path& from, const fs::path& to) {
    if (renameToNew(from, to) != 0) {
        return lastError();
    }
    return syncFolder(fs::absolute(to).parent_path());
}

std::error_code keepUnder(const fs::path& file, const fs::path& name) {
    if (::link(file.c_str(), name.c_str()) != 0) {
        if (errno == ENOENT || errno == EEXIST || renameToNew(file, name) != 0) {
            return lastError();
        }
    }
    return syncFolder(fs::absolute(name).parent_path());
}

void removeLeftBehind(const fs::path& folder,
                      const std::function<bool(std::string_view target)>& isMeant) {
    std::error_code error;
    for (fs::directory_iterator each(folder, error), end; !error && each != end;
         each.increment(error)) {
        const auto name = each->path().filename();
        const auto target = targetOf(name.native());
        if (target.empty() || !isMeant(target)) {
            continue;
        }
        // For writing: else it cannot be locked on a network share. Whatever has such a name is
        // opened without waiting for anybody.
        const auto open = [&](int access) {
            return FileDescriptor(::open(each->path().c_str(),
                                         access | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY));
        };
        auto file = open(O_RDWR);
        if (!file.isOpen() && errno == EACCES) {
            file = open(O_RDONLY); // it took the permissions of one that may only be read
        }
        struct stat status {};
        if (file.isOpen() && ::fstat(file.get(), &status) == 0 && S_ISREG(status.st_mode) &&
            ::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
            ::unlink(each->path().c_str());
        }
    }
}

} // namespace korvex::base
