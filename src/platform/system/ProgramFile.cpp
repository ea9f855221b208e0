#include "platform/system/ProgramFile.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <system_error>
#include <utility>

namespace korvex::platform::system {

namespace {

/// Whoever installs a program writes it for a moment, and sets its rights.
constexpr std::chrono::seconds kWritten{1};
constexpr const char* kOwnProgram = "/proc/self/exe";
constexpr std::string_view kRemoved = " (deleted)";

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (auto& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& changes) {
    std::vector<std::string> result;
    for (char** each = environ; *each; ++each) {
        const std::string variable = *each;
        if (!changes.contains(variable.substr(0, variable.find('=')))) {
            result.push_back(variable);
        }
    }
    for (const auto& [name, value] : changes) {
        result.push_back(std::string(name).append("=").append(value));
    }
    return result;
}

/// In the process that becomes the program. Other threads may have held any lock when it was made,
/// so it calls the system and nothing else.
[[noreturn]] void become(const char* file, char* const* arguments, char* const* environment,
                         int output) {
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    const int nowhere = ::open("/dev/null", O_RDWR);
    for (int stream = 0; stream <= STDERR_FILENO; ++stream) {
        ::dup2(stream == STDOUT_FILENO && output >= 0 ? output : nowhere, stream);
    }
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    ::execve(file, arguments, environment);
    ::_exit(127);
}

} // namespace

std::filesystem::path ownProgram() {
    std::error_code failed;
    auto path = std::filesystem::read_symlink(kOwnProgram, failed).string();
    if (path.ends_with(kRemoved)) {
        path.resize(path.size() - kRemoved.size());
    }
    return path;
}

bool startBeside(const std::string& name, const std::vector<std::string>& arguments,
                 const std::map<std::string, std::string>& environment) {
    return startProgram(ownProgram().parent_path() / name, arguments, environment);
}

bool startProgram(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const std::map<std::string, std::string>& environment, int output) {
    const auto file = program.string();
    if (::access(file.c_str(), X_OK) != 0) {
        return false;
    }
    std::vector<std::string> command{file};
    command.insert(command.end(), arguments.begin(), arguments.end());
    auto variables = environmentWith(environment);
    const auto commandPointers = pointersTo(command);
    const auto variablePointers = pointersTo(variables);
    const auto child = ::fork();
    if (child == 0) {
        // It ends at once and leaves the program to the system, so nobody has to wait for that.
        ::setsid();
        const auto second = ::fork();
        if (second == 0) {
            become(file.c_str(), commandPointers.data(), variablePointers.data(), output);
        }
        ::_exit(second > 0 ? 0 : 1);
    }
    int status = 0;
    return child > 0 && ::waitpid(child, &status, 0) == child && status == 0;
}

ProgramWatcher::ProgramWatcher(base::RunLoop& runLoop, std::filesystem::path program)
    : m_runLoop(runLoop),
      m_program(std::move(program)),
      // It may have been replaced since it was started.
      m_own(identityOf(m_program == ownProgram() ? kOwnProgram : m_program)),
      m_folder(runLoop, m_program.parent_path(), {m_program.filename().string()}) {
    m_changes = m_folder.changed().connect([this] { lookAgainSoon(); });
}

void ProgramWatcher::lookAgainSoon() {
    m_pause = m_runLoop.callAfter(kWritten, [this] { look(); });
}

void ProgramWatcher::look() {
    const auto now = identityOf(m_program);
    if (now != Identity{} && now != m_own && ::access(m_program.c_str(), X_OK) == 0) {
        m_own = now;
        m_replaced.emit();
    }
}

ProgramWatcher::Identity ProgramWatcher::identityOf(const std::filesystem::path& program) {
    struct stat status {};
    return ::stat(program.c_str(), &status) == 0 ? Identity{status.st_dev, status.st_ino}
                                                 : Identity{};
}

} // namespace korvex::platform::system
