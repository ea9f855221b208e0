#pragma once

#include "base/Clock.h"
#include "base/Log.h"
#include "base/RunLoop.h"
#include "schedule/NotificationScheduling.h"
#include "schedule/ReminderScheduler.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace korvex::agent {

/// The store that the agent looks after, for as long as it is there: it makes, prepares and
/// upgrades none, and waits until another program has. Main thread; all that it is given must
/// outlive it.
class UserStore final {
public:
    UserStore(std::filesystem::path file, schedule::NotificationScheduling& client,
              const base::Clock& clock, base::RunLoop& runLoop, base::LogSink& log);

    /// What is open, and the one scheduler of its reminders.
    struct Opened {
        Opened(std::unique_ptr<store::ModelContainer> itsContainer,
               schedule::NotificationScheduling& client, const base::Clock& clock,
               base::RunLoop& runLoop, base::LogSink& log)
            : container(std::move(itsContainer)),
              context(*container),
              scheduler(client, clock, runLoop, log) {}

        std::unique_ptr<store::ModelContainer> container;
        store::ModelContext context;
        schedule::ReminderScheduler scheduler;
    };
    /// Null where there is none that can be used.
    Opened* opened() { return m_opened.get(); }

    /// Opens the store where there is one now, and lets go of one that has gone or been replaced.
    /// To be called on every hint. True when it is another one than before, or none.
    bool look();
    /// Lets go of it, so that `look` opens it anew: what is wrong with it may be wrong with what is
    /// open only.
    void close() { m_opened.reset(); }

    const std::filesystem::path& file() const { return m_file; }

private:
    struct Identity {
        dev_t device = 0;
        ino_t number = 0;
        bool operator==(const Identity&) const = default;
    };
    Identity fileThere() const;
    void open();

    std::filesystem::path m_file;
    schedule::NotificationScheduling& m_client;
    const base::Clock& m_clock;
    base::RunLoop& m_runLoop;
    base::LogSink& m_sink;
    base::Logger m_log;
    std::unique_ptr<Opened> m_opened;
    Identity m_identity;
    /// Why it could not be opened when that was said last.
    std::string m_failure;
};

} // namespace korvex::agent
