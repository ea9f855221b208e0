#include "support/ChildProcess.h"

#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <stdexcept>

namespace korvex::bench {

namespace {

constexpr std::int64_t kKibibyte = 1024;
constexpr std::chrono::minutes kPatience{1};

std::vector<std::string> merged(Environment environment) {
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        const auto equals = text.find('=');
        environment.emplace(text.substr(0, equals), text.substr(equals + 1));
    }
    std::vector<std::string> result;
    for (const auto& [name, value] : environment) {
        result.push_back(name + "=" + value);
    }
    return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (auto& text : texts) {
        result.push_back(text.data());
    }
    result.push_back(nullptr);
    return result;
}

/// A child shares our memory until it begins its own program, so what we had at most counts as its
/// own: let it be what we still have.
void forgetOwnPeak() {
    ::malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, const Environment& environment,
                           Output output) {
    forgetOwnPeak();
    int ends[2] = {-1, -1};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (output == Output::watched) {
        if (::pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error(std::strerror(errno));
        }
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    } else {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    }
    auto words = command;
    auto variables = merged(environment);
    const int error = ::posix_spawnp(&m_process, words.front().c_str(), &actions, nullptr,
                                     pointers(words).data(), pointers(variables).data());
    posix_spawn_file_actions_destroy(&actions);
    if (output == Output::watched) {
        ::close(ends[1]);
        m_output = ends[0];
    }
    if (error != 0) {
        m_process = 0;
        throw std::runtime_error(command.front() + ": " + std::strerror(error));
    }
}

ChildProcess::~ChildProcess() {
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        ::waitpid(m_process, nullptr, 0);
    }
    if (m_output >= 0) {
        ::close(m_output);
    }
}

std::string ChildProcess::waitForLine(const std::string& text) {
    while (true) {
        for (auto end = m_read.find('\n'); end != std::string::npos; end = m_read.find('\n')) {
            const auto line = m_read.substr(0, end);
            m_read.erase(0, end + 1);
            if (line.find(text) != std::string::npos) {
                return line;
            }
        }
        if (!hasOutput(kPatience)) {
            throw std::runtime_error("does not say \"" + text + "\": " + m_read);
        }
        char buffer[4096];
        const auto count = ::read(m_output, buffer, sizeof buffer);
        if (count <= 0) {
            throw std::runtime_error("ended without saying \"" + text + "\": " + m_read);
        }
        m_read.append(buffer, static_cast<std::size_t>(count));
    }
}

void ChildProcess::forgetOutput() {
    char buffer[4096];
    while (hasOutput(std::chrono::milliseconds(0)) && ::read(m_output, buffer, sizeof buffer) > 0) {
    }
    m_read.clear();
}

bool ChildProcess::hasOutput(std::chrono::milliseconds patience) const {
    pollfd reading{.fd = m_output, .events = POLLIN, .revents = 0};
    return ::poll(&reading, 1, static_cast<int>(patience.count())) > 0;
}

std::int64_t ChildProcess::proportionalMemory() const {
    std::ifstream rollup("/proc/" + std::to_string(m_process) + "/smaps_rollup");
    for (std::string word; rollup >> word;) {
        if (word == "Pss:") {
            std::int64_t kibibytes = 0;
            rollup >> kibibytes;
            return kibibytes * kKibibyte;
        }
    }
    throw std::runtime_error("no memory figures of process " + std::to_string(m_process));
}

ChildProcess::Result ChildProcess::wait() {
    int status = 0;
    rusage usage{};
    if (::wait4(m_process, &status, 0, &usage) < 0) {
        throw std::runtime_error(std::strerror(errno));
    }
    m_process = 0;
    return {.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1,
            .peakMemory = usage.ru_maxrss * kKibibyte};
}

ChildProcess::Result runToEnd(const std::vector<std::string>& command,
                              const Environment& environment) {
    ChildProcess process(command, environment, ChildProcess::Output::dropped);
    const auto result = process.wait();
    if (result.status != 0) {
        throw std::runtime_error(command.front() + " failed");
    }
    return result;
}

} // namespace korvex::bench
