#include "base/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <thread>

namespace korvex::base {

namespace {

constexpr std::chrono::milliseconds kWait{1};

FileLock::State lock(const FileDescriptor& opened, std::chrono::milliseconds patience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (::flock(opened.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            return FileLock::State::impossible;
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return FileLock::State::taken;
        }
        std::this_thread::sleep_for(kWait);
    }
    return FileLock::State::held;
}

} // namespace

FileLock::FileLock(FileDescriptor opened, std::chrono::milliseconds patience)
    : m_opened(std::move(opened)), m_state(lock(m_opened, patience)) {}

FileLock::FileLock(const std::filesystem::path& file, std::chrono::milliseconds patience)
    : FileLock(
          FileDescriptor(::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR)),
          patience) {}

} // namespace korvex::base
