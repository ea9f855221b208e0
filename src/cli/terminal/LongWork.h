#pragma once

#include "storage/Work.h"

#include <array>
#include <csignal>

namespace korvex::cli {

/// While one lives, a command does something that may take long: a line of the terminal behind the
/// descriptor, if there is one, says how far it is, and Ctrl+C (SIGINT, SIGTERM, SIGHUP) asks it to
/// stop at the next good place; a second one ends the program. One at a time.
class LongWork {
public:
    explicit LongWork(int errorDescriptor);
    ~LongWork();
    LongWork(const LongWork&) = delete;
    LongWork& operator=(const LongWork&) = delete;

    storage::Work& work() { return m_work; }

private:
    static constexpr std::array kEndingSignals{SIGINT, SIGTERM, SIGHUP};

    void tell(const storage::Progress& progress);

    std::array<struct sigaction, kEndingSignals.size()> m_before;
    int m_descriptor;
    bool m_hasTerminal;
    bool m_hasLine = false;
    storage::Work m_work;
};

} // namespace korvex::cli
