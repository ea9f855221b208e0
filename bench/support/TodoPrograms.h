#pragma once

#include "support/ChildProcess.h"
#include "support/Scratch.h"

#include <cstddef>
#include <string>
#include <vector>

namespace korvex::bench {

/// `korvex` on a store of its own with `count` open todos in the Inbox.
class KorvexProgram {
public:
    explicit KorvexProgram(std::size_t count);

    /// Runs one command to its end.
    ChildProcess::Result run(std::vector<std::string> arguments) const;
    /// The folder for `--data-dir`.
    std::string dataDirectory() const { return m_scratch.path().string(); }

private:
    Scratch m_scratch;
};

/// Debian's taskwarrior on data of its own with `count` pending tasks of the same texts.
class TaskProgram {
public:
    explicit TaskProgram(std::size_t count);

    ChildProcess::Result run(std::vector<std::string> arguments) const;

private:
    Environment environment() const;

    Scratch m_scratch;
};

} // namespace korvex::bench
