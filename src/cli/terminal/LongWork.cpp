#include "cli/terminal/LongWork.h"

#include "cli/terminal/Output.h"

#include <string>
#include <string_view>

namespace korvex::cli {

namespace {

/// A handler of signals can reach nothing else.
volatile std::sig_atomic_t isInterrupted = 0;

void noteInterruption(int) {
    isInterrupted = 1;
}

std::string_view titleOf(storage::Stage stage) {
    switch (stage) {
    case storage::Stage::reading:
        return "Reading";
    case storage::Stage::checking:
        return "Checking";
    case storage::Stage::writing:
        return "Writing";
    case storage::Stage::verifying:
        return "Verifying";
    case storage::Stage::replacing:
        return "Replacing";
    }
    return {};
}

} // namespace

LongWork::LongWork(int errorDescriptor)
    : m_descriptor(errorDescriptor),
      m_hasTerminal(Terminal::of(errorDescriptor).isPresent),
      m_work([this](const storage::Progress& progress) { tell(progress); },
             [] { return isInterrupted != 0; }) {
    isInterrupted = 0;
    struct sigaction noting {};
    noting.sa_handler = noteInterruption;
    // The second one does what it always does.
    noting.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
    for (std::size_t i = 0; i < kEndingSignals.size(); ++i) {
        ::sigaction(kEndingSignals[i], nullptr, &m_before[i]);
        if (m_before[i].sa_handler != SIG_IGN) {
            ::sigaction(kEndingSignals[i], &noting, nullptr);
        }
    }
}

LongWork::~LongWork() {
    for (std::size_t i = 0; i < kEndingSignals.size(); ++i) {
        ::sigaction(kEndingSignals[i], &m_before[i], nullptr);
    }
    if (m_hasLine) {
        writeRaw(m_descriptor, "\r\x1b[K");
    }
}

void LongWork::tell(const storage::Progress& progress) {
    if (m_hasTerminal) {
        const auto percent = static_cast<int>(progress.fraction * 100);
        writeRaw(m_descriptor, "\r\x1b[K" + std::string(titleOf(progress.stage)) + " " +
                                   std::to_string(percent) + " %");
        m_hasLine = true;
    }
}

} // namespace korvex::cli
