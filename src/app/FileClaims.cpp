#include "app/FileClaims.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace korvex::app {

namespace fs = std::filesystem;

namespace {

/// Each that fails is another program's that was just given up; more would be a file system that
/// counts no names.
constexpr int kMostTries = 100;

bool hasName(const base::FileDescriptor& file) {
    struct stat status {};
    return ::fstat(file.get(), &status) == 0 && status.st_nlink > 0;
}

} // namespace

FileClaims::Claim FileClaims::claim(const fs::path& file) {
    if (m_held.contains(file)) {
        return Claim::ours;
    }
    for (int i = 0; i < kMostTries; ++i) {
        base::FileDescriptor lock(
            ::open(lockOf(file).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR));
        if (!lock.isOpen()) {
            return Claim::impossible;
        }
        if (::flock(lock.get(), LOCK_EX | LOCK_NB) != 0) {
            return errno == EWOULDBLOCK ? Claim::theirs : Claim::impossible;
        }
        // Who had it may have removed it since it was opened: a lock on that excludes nobody.
        if (hasName(lock)) {
            m_held.emplace(file, std::move(lock));
            return Claim::ours;
        }
    }
    return Claim::theirs;
}

void FileClaims::release(const fs::path& file) {
    if (const auto held = m_held.find(file); held != m_held.end()) {
        // While it is still locked, so that nobody's claim is taken away.
        std::error_code ignored;
        fs::remove(lockOf(file), ignored);
        m_held.erase(held);
    }
}

fs::path FileClaims::lockOf(const fs::path& file) {
    auto lock = file;
    return lock.replace_extension(kExtension);
}

} // namespace korvex::app
