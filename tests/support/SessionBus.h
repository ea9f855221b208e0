#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

namespace korvex::tests {

/// A real session bus of its own, on a socket that the test chooses, so that it can be stopped,
/// hung and started again.
class SessionBus {
public:
    /// It knows the services of the machine, or only those of a folder, which may be empty.
    explicit SessionBus(const std::filesystem::path& socket,
                        const std::optional<std::filesystem::path>& services = std::nullopt)
        : m_address("unix:path=" + socket.string()) {
        const auto configuration = services
                                       ? "--config-file=" + configurationWith(socket, *services)
                                       : std::string("--session");
        int ready[2];
        if (::pipe2(ready, O_CLOEXEC) != 0) {
            throw std::system_error(errno, std::generic_category(), "pipe2");
        }
        const auto addressArgument = "--address=" + m_address;
        m_process = ::fork();
        if (m_process == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL); // a test that is killed leaves nothing behind
            ::dup2(ready[1], STDOUT_FILENO);
            ::execlp("dbus-daemon", "dbus-daemon", configuration.c_str(), "--nofork", "--nopidfile",
                     "--print-address", addressArgument.c_str(), nullptr);
            ::_exit(127);
        }
        ::close(ready[1]);
        // The daemon prints its address once it listens.
        char first = 0;
        const bool isListening = ::read(ready[0], &first, 1) == 1;
        ::close(ready[0]);
        if (!isListening) {
            stop();
            throw std::runtime_error("dbus-daemon does not start");
        }
    }
    ~SessionBus() { stop(); }
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    const std::string& address() const { return m_address; }

    /// It keeps its connections, but answers nothing.
    void hang() const { ::kill(m_process, SIGSTOP); }
    void wake() const { ::kill(m_process, SIGCONT); }

    void stop() {
        if (m_process > 0) {
            ::kill(m_process, SIGKILL);
            ::waitpid(m_process, nullptr, 0);
            m_process = -1;
        }
    }

private:
    static std::string configurationWith(const std::filesystem::path& socket,
                                         const std::filesystem::path& services) {
        const auto file = socket.string() + ".conf";
        std::ofstream(file)
            << "<!DOCTYPE busconfig PUBLIC \"-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN\" "
               "\"http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd\">"
               "<busconfig><type>session</type><listen>unix:path="
            << socket.string() << "</listen><servicedir>" << services.string()
            << "</servicedir><policy context=\"default\"><allow send_destination=\"*\"/>"
               "<allow receive_type=\"*\"/><allow own=\"*\"/></policy></busconfig>";
        return file;
    }

    std::string m_address;
    pid_t m_process = -1;
};

} // namespace korvex::tests
