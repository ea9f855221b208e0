#pragma once

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace korvex::tests {

/// Runs `work` in a child process, for which this folder is a file system of its own with that much
/// room ("256k"). What it returns, or absent where no file system can be mounted. The folder must
/// be there.
inline std::optional<int> onSmallDisk(const std::filesystem::path& folder, const std::string& size,
                                      const std::function<int()>& work) {
    constexpr int kCannotMount = 177;
    const auto write = [](const char* file, const std::string& line) {
        const auto descriptor = ::open(file, O_WRONLY | O_CLOEXEC);
        const auto isWritten =
            ::write(descriptor, line.data(), line.size()) == static_cast<ssize_t>(line.size());
        ::close(descriptor);
        return isWritten;
    };
    const auto user = "0 " + std::to_string(::geteuid()) + " 1";
    const auto group = "0 " + std::to_string(::getegid()) + " 1";
    const auto child = ::fork();
    if (child == 0) {
        // In namespaces of its own the child may mount, and nobody else sees it.
        const auto options = "size=" + size;
        const auto isMounted =
            ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0 && write("/proc/self/uid_map", user) &&
            write("/proc/self/setgroups", "deny") && write("/proc/self/gid_map", group) &&
            ::mount("tmpfs", folder.c_str(), "tmpfs", 0, options.c_str()) == 0;
        ::_exit(isMounted ? work() : kCannotMount);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    const auto result = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result == kCannotMount ? std::nullopt : std::optional(result);
}

} // namespace korvex::tests
