#include "agent/ReminderAgent.h"
#include "agent/TimeSources.h"

#include "app/StoreLocation.h"
#include "app/UserFolders.h"
#include "base/Clock.h"
#include "base/EnvironmentVariable.h"
#include "platform/bus/AgentProtocol.h"
#include "platform/bus/NameClaim.h"
#include "platform/system/ProgramFile.h"
#include "platform/system/TerminationWatcher.h"
#include "platform/systemd/JournalLog.h"
#include "platform/systemd/SdEventRunLoop.h"
#include "store/StoreError.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <map>
#include <optional>
#include <string>

using namespace korvex;
using platform::bus::Bus;
using platform::bus::NameClaim;

namespace {

enum class End { none, done, replaced, failed };

/// What systemd takes for a failure after which a service is started again.
constexpr int kStartMeAgain = 75;

/// Whether systemd watches this very process, rather than one of those above it, and as our own
/// unit, which starts it again: what it makes of an autostart file does not.
bool isOurUnit() {
    return base::environmentVariable("KORVEX_AGENT_UNIT") &&
           base::environmentVariable("SYSTEMD_EXEC_PID") == std::to_string(::getpid());
}

bool startDesktop(const std::string& link, const std::string& token) {
    std::map<std::string, std::string> environment;
    if (!token.empty()) {
        environment = {{"XDG_ACTIVATION_TOKEN", token}, {"DESKTOP_STARTUP_ID", token}};
    }
    return platform::system::startBeside("korvex-desktop", {"--", link}, environment);
}

/// Until the session ends, or another agent is there or is to be.
End run(base::LogSink& log) {
    const base::Logger logger(log, "Agent");
    platform::systemd::SdEventRunLoop runLoop;
    auto end = End::none;
    const auto finish = [&](End how) {
        end = how;
        runLoop.quit();
    };
    platform::system::TerminationWatcher termination(runLoop);
    const auto terminating = termination.requested().connect([&] { finish(End::done); });
    const base::SystemClock clock;
    Bus bus(platform::bus::WhichBus::session, runLoop, log);
    // Asked for before all else is made ready, since who has started us waits for it.
    NameClaim name(bus, platform::bus::kAgentName);
    std::optional<agent::ReminderAgent> reminders;
    auto isReplaced = false;
    const auto endWhenQuiet = [&] {
        if (isReplaced && (!reminders || reminders->isQuiet())) {
            finish(End::replaced);
        }
    };
    base::Subscription pauses;
    const auto begin = [&] {
        reminders.emplace(agent::ReminderAgent::Surroundings{
            .bus = bus,
            .runLoop = runLoop,
            .clock = clock,
            .log = log,
            .storeFile = app::storeFile(app::dataDirectory({})),
            .tableFile = app::reminderFile(app::userFolder("XDG_STATE_HOME", ".local/state"),
                                           app::dataDirectory({})),
            .settings = app::userFolder("XDG_CONFIG_HOME", ".config"),
            .version = KORVEX_VERSION,
            .startDesktop = startDesktop});
        pauses = reminders->becameQuiet().connect(endWhenQuiet);
    };
    const auto states = bus.stateChanged().connect([&](Bus::State state) {
        if (state == Bus::State::connected) {
            if (!reminders) {
                begin(); // before anything is heard: who sees the name finds the agent
            }
        } else if (state == Bus::State::waiting) { // it lives as long as that bus's session
            finish(reminders ? End::done : End::failed);
        }
    });
    std::optional<agent::TimeSources> timeSources;
    base::Subscription timeChanges;
    const auto claims = name.changed().connect([&](NameClaim::State state) {
        if (state == NameClaim::State::owned && reminders) {
            reminders->begin();
            timeSources.emplace(runLoop, log);
            timeChanges = timeSources->changed().connect([&] { reminders->timeChanged(); });
        } else if (state == NameClaim::State::refused || state == NameClaim::State::taken) {
            logger.info("Another agent has the name: " + name.owner());
            finish(End::done);
        }
    });
    platform::system::ProgramWatcher program(runLoop);
    const auto replacements = program.replaced().connect([&] {
        isReplaced = true;
        endWhenQuiet();
    });
    bus.start();
    if (end == End::none) {
        runLoop.run();
    }
    if (!reminders) {
        logger.warning("There is no session bus.");
    }
    return end;
}

} // namespace

int main(int, char* argv[]) {
    base::StandardErrorLog standardError(base::LogLevel::warning);
    platform::systemd::JournalLog log(standardError);
    const base::Logger logger(log, "Agent");
    auto end = End::failed;
    try {
        end = run(log);
    } catch (const store::StoreError& error) {
        if (error.which() != store::StoreErrorCase::busy) {
            logger.error(std::string("The file of reminders cannot be used: ") + error.what());
        } else {
            logger.info("Another agent has the reminders of this store.");
            end = End::done;
        }
    } catch (const std::exception& error) {
        logger.error(error.what());
    }
    if (end == End::replaced) {
        logger.info("Another version is installed, and goes on.");
        if (!isOurUnit()) {
            ::execv(platform::system::ownProgram().c_str(), argv);
        }
        return kStartMeAgain;
    }
    return end == End::done ? EXIT_SUCCESS : EXIT_FAILURE;
}
