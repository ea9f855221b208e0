#pragma once

#include "base/FileDescriptor.h"

#include <chrono>
#include <filesystem>

namespace korvex::base {

/// An exclusive `flock` for as long as this lives; the system ends it with the program, however
/// that ends. Any thread.
class FileLock {
public:
    enum class State {
        held,
        /// Somebody else has it, and has kept it for as long as the patience lasted.
        taken,
        /// Nothing can be locked there, as on some network shares: nobody has it.
        impossible,
    };

    /// Locks what is open: a file, or a folder.
    FileLock(FileDescriptor opened, std::chrono::milliseconds patience);
    /// Locks a file that is there for nothing else; it is made where there is none, and stays.
    FileLock(const std::filesystem::path& file, std::chrono::milliseconds patience);

    State state() const { return m_state; }

private:
    FileDescriptor m_opened;
    State m_state;
};

} // namespace korvex::base
