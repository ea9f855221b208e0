#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace korvex::bench {

using Environment = std::map<std::string, std::string>;

/// A program started with this environment on top of ours. Throws std::runtime_error when it cannot
/// be started. One that still runs is ended with its object.
class ChildProcess {
public:
    /// What becomes of its standard output and error.
    enum class Output { dropped, watched };

    ChildProcess(const std::vector<std::string>& command, const Environment& environment,
                 Output output);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Reads watched output until a line contains `text`, and returns that line; throws when the
    /// program ends before it has said so, or says nothing for a minute.
    std::string waitForLine(const std::string& text);
    /// What it has said until now does not count for `waitForLine`.
    void forgetOutput();
    pid_t id() const { return m_process; }
    /// Proportional set size now, in bytes: its share of what it has in memory.
    std::int64_t proportionalMemory() const;

    struct Result {
        int status;
        /// The most that it had resident, in bytes.
        std::int64_t peakMemory;
    };
    /// Waits for its end.
    Result wait();

private:
    bool hasOutput(std::chrono::milliseconds patience) const;

    pid_t m_process = 0;
    int m_output = -1;
    std::string m_read;
};

/// Runs a program to its end and insists on its success.
ChildProcess::Result runToEnd(const std::vector<std::string>& command,
                              const Environment& environment = {});

} // namespace korvex::bench
