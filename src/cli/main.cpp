#include "cli/bus/CommandBus.h"
#include "cli/commands/CommandLine.h"
#include "cli/terminal/HeldErrors.h"

#include "platform/systemd/JournalLog.h"

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

/// A standard stream that whoever started us has closed would give its number to one of the store's
/// files, and results would be written into that. Nothing can be written to what this opens.
void fillClosedStreams() {
    int descriptor = -1;
    do {
        descriptor = ::open("/dev/null", O_RDONLY);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    ::close(descriptor);
}

} // namespace

int main(int argc, char** argv) {
    fillClosedStreams();
    const korvex::base::SystemClock clock;
    korvex::cli::HeldErrors errors;
    korvex::platform::systemd::JournalLog log(errors);
    korvex::cli::CommandBus bus(log);
    korvex::cli::CommandLine commandLine({clock, log, bus, bus, bus});
    const auto status = commandLine.run({argv + 1, argv + argc});
    if (status == korvex::cli::ExitStatus::done) {
        errors.tell();
    }
    // All is saved, told and written. Leaving without taking the records of a large board apart,
    // one by one, saves a tenth of the whole run.
    std::exit(static_cast<int>(status));
}
