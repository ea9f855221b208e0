#include "platform/system/ProgramOutput.h"

#include "base/EnvironmentVariable.h"
#include "platform/system/ProgramFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <sstream>
#include <utility>

namespace korvex::platform::system {

namespace {

constexpr std::chrono::seconds kPatience{5};
constexpr std::size_t kMost = 16 * 1024;

/// Empty where there is none.
std::filesystem::path commandNamed(const std::string& program) {
    std::istringstream folders(base::environmentVariable("PATH").value_or("/usr/bin:/bin"));
    for (std::string folder; std::getline(folders, folder, ':');) {
        auto file = std::filesystem::path(folder) / program;
        if (file.is_absolute() && ::access(file.c_str(), X_OK) == 0) {
            return file;
        }
    }
    return {};
}

} // namespace

ProgramOutput::ProgramOutput(base::RunLoop& runLoop, const std::string& program,
                             const std::vector<std::string>& arguments, Take take)
    : m_take(std::move(take)) {
    std::array<int, 2> pipe{-1, -1};
    const auto file = commandNamed(program);
    if (!file.empty() && ::pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK) == 0) {
        m_output = base::FileDescriptor(pipe[0]);
        const base::FileDescriptor theirs(pipe[1]);
        ::fcntl(theirs.get(), F_SETFL, 0); // programs expect that what they say is taken
        if (startProgram(file, arguments, {}, theirs.get())) {
            m_watch =
                runLoop.watch(m_output.get(), base::RunLoop::Interest::reading, [this] { read(); });
        }
    }
    m_limit = m_watch ? runLoop.callAfter(kPatience, [this] { finish(std::nullopt); })
                      : runLoop.callAfter(std::chrono::seconds(0), [this] { finish(""); });
}

void ProgramOutput::read() {
    std::array<char, 4096> buffer;
    const auto count = ::read(m_output.get(), buffer.data(), buffer.size());
    if (count > 0) {
        m_said.append(buffer.data(), static_cast<std::size_t>(count));
    }
    if (count == 0) {
        finish(std::move(m_said));
    } else if (m_said.size() > kMost || (count < 0 && errno != EAGAIN && errno != EINTR)) {
        finish("");
    }
}

void ProgramOutput::finish(std::optional<std::string> said) {
    m_watch.reset();
    m_limit.reset();
    const auto take = std::exchange(m_take, nullptr); // which may destroy this
    take(said);
}

} // namespace korvex::platform::system
