#pragma once

#include <sys/resource.h>

#include <array>
#include <csignal>

namespace korvex::tests {

/// As long as it lives, no file of this process is written: SQLite takes that for a failure of the
/// disk (`inputOutput`), as it does a quota. What is read is read all the same.
class NothingCanGrow {
public:
    NothingCanGrow() {
        ::getrlimit(RLIMIT_FSIZE, &m_former);
        ::setrlimit(RLIMIT_FSIZE, std::array{rlimit{0, m_former.rlim_max}}.data());
    }
    ~NothingCanGrow() {
        ::setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_handler);
    }
    NothingCanGrow(const NothingCanGrow&) = delete;
    NothingCanGrow& operator=(const NothingCanGrow&) = delete;

private:
    rlimit m_former{};
    void (*m_handler)(int) = std::signal(SIGXFSZ, SIG_IGN);
};

} // namespace korvex::tests
