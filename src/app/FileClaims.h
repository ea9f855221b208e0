#pragma once

#include "base/FileDescriptor.h"

#include <filesystem>
#include <map>

namespace korvex::app {

/// Files that belong to this process for as long as it lives, so that no other one takes them for
/// left behind. A claim is an exclusive `flock` on a file beside, which the system gives up when
/// the process ends, however it does. Main thread.
class FileClaims {
public:
    enum class Claim {
        ours,
        /// Another living process has it.
        theirs,
        /// No such file can be made or locked there; nobody else can have one then.
        impossible,
    };

    /// Claims the file, which need not be there yet, in a folder that is.
    Claim claim(const std::filesystem::path& file);
    /// Gives it up; nothing is left beside it.
    void release(const std::filesystem::path& file);

    static constexpr const char* kExtension = ".lock";

private:
    static std::filesystem::path lockOf(const std::filesystem::path& file);

    std::map<std::filesystem::path, base::FileDescriptor> m_held;
};

} // namespace korvex::app
