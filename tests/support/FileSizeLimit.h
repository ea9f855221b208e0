#pragma once

#include <sys/resource.h>

#include <csignal>

namespace korvex::tests {

/// As long as it lives, no file of this process grows beyond this size: what a full disk does.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        ::getrlimit(RLIMIT_FSIZE, &m_former);
        const ::rlimit limit{.rlim_cur = bytes, .rlim_max = m_former.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &m_former);
        std::signal(SIGXFSZ, m_handler);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    void (*m_handler)(int);
    ::rlimit m_former{};
};

} // namespace korvex::tests
