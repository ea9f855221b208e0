#pragma once

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace korvex::tests {

/// One run of the real `korvex`, with its standard output in a pipe.
class KorvexProcess {
public:
    explicit KorvexProcess(std::vector<std::string> arguments) {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) {
            throw std::runtime_error("no pipe");
        }
        posix_spawn_file_actions_t actions;
        ::posix_spawn_file_actions_init(&actions);
        ::posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
        std::string program = KORVEX_PROGRAM;
        std::vector<char*> vector{program.data()};
        for (auto& argument : arguments) {
            vector.push_back(argument.data());
        }
        vector.push_back(nullptr);
        // Neither a session bus nor anything else of who runs the test.
        char* noEnvironment[] = {nullptr};
        const auto failed =
            ::posix_spawn(&m_id, program.c_str(), &actions, nullptr, vector.data(), noEnvironment);
        ::posix_spawn_file_actions_destroy(&actions);
        ::close(ends[1]);
        m_output = ends[0];
        if (failed != 0) {
            throw std::runtime_error("cannot start korvex");
        }
    }
    ~KorvexProcess() { ::close(m_output); }
    KorvexProcess(const KorvexProcess&) = delete;
    KorvexProcess& operator=(const KorvexProcess&) = delete;

    void kill() const { ::kill(m_id, SIGKILL); }

    struct End {
        /// -1 when a signal ended it.
        int status;
        std::string output;
    };
    End wait() const {
        End end{-1, {}};
        char buffer[65536];
        for (;;) {
            const auto count = ::read(m_output, buffer, sizeof buffer);
            if (count <= 0) {
                break;
            }
            end.output.append(buffer, static_cast<std::size_t>(count));
        }
        int status = 0;
        ::waitpid(m_id, &status, 0);
        if (WIFEXITED(status)) {
            end.status = WEXITSTATUS(status);
        }
        return end;
    }

private:
    pid_t m_id = 0;
    int m_output = -1;
};

} // namespace korvex::tests
