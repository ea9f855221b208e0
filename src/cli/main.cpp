#include "cli/CommandLine.h"

#include "platform/systemd/JournalLog.h"
#include "platform/systemd/SdBusStoreChangeBroadcaster.h"

int main(int argc, char** argv) {
    const korvex::base::SystemClock clock;
    // A refusal is told as the command's own error: only what failed is worth a line beside it.
    korvex::base::StandardErrorLog standardError(korvex::base::LogLevel::error);
    korvex::platform::systemd::JournalLog log(standardError);
    korvex::platform::systemd::SdBusStoreChangeBroadcaster broadcaster;
    const auto status =
        korvex::cli::runCommandLine({argv + 1, argv + argc}, {clock, log, broadcaster});
    return static_cast<int>(status);
}
