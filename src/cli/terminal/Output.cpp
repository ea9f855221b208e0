#include "cli/terminal/Output.h"

#include "cli/terminal/CommandLineError.h"
#include "cli/terminal/DisplayText.h"

#include "base/EnvironmentVariable.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <sys/ioctl.h>
#include <unistd.h>

namespace korvex::cli {

namespace {

/// Returns false, with `errno` set, when not everything could be written.
bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const auto written = ::write(descriptor, text.data(), text.size());
        if (written >= 0) {
            text.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

} // namespace

void Output::flush() {
    if (!m_readerIsGone && !writeAll(m_descriptor, m_buffer)) {
        if (errno != EPIPE) {
            const std::string reason = std::strerror(errno);
            m_buffer.clear();
            throw CommandLineError(ExitStatus::unusable,
                                   "The results could not be written: " + reason + ".");
        }
        m_readerIsGone = true;
    }
    m_buffer.clear();
}

Terminal Terminal::of(int descriptor) {
    Terminal terminal;
    terminal.isPresent = ::isatty(descriptor) == 1;
    if (!terminal.isPresent) {
        return terminal;
    }
    const auto* kind = std::getenv("TERM");
    terminal.hasColor =
        !base::environmentVariable("NO_COLOR") && kind && std::string_view(kind) != "dumb";
    winsize size{};
    if (::ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        terminal.width = size.ws_col;
    }
    return terminal;
}

void writeRaw(int descriptor, std::string_view text) {
    writeAll(descriptor, text);
}

void writeMessage(int descriptor, std::string_view message) {
    writeRaw(descriptor, "korvex: " + inLines(message) + "\n");
}

} // namespace korvex::cli
