#pragma once

#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace korvex::tests {

/// Starts a program that is found as a shell would; -1 where there is none. It has the test's own
/// input, output and open files that are not closed by an exec.
inline pid_t start(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const auto& each : command) {
        arguments.push_back(const_cast<char*>(each.c_str()));
    }
    arguments.push_back(nullptr);
    pid_t process = -1;
    return ::posix_spawnp(&process, arguments.front(), nullptr, nullptr, arguments.data(),
                          environ) == 0
               ? process
               : -1;
}

/// Runs it to its end; its exit status, or -1.
inline int run(const std::vector<std::string>& command) {
    const auto process = start(command);
    int status = 0;
    return process > 0 && ::waitpid(process, &status, 0) == process && WIFEXITED(status)
               ? WEXITSTATUS(status)
               : -1;
}

} // namespace korvex::tests
