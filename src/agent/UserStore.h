#pragma once

#include "base/Log.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>

namespace korvex::agent {

/// The store that the agent looks after. It makes, prepares and upgrades none, and has it open only
/// while it uses it, and a moment longer: who upgrades or repairs a store must be alone with it,
/// and nobody thinks of a program without windows. Main thread; the run loop and the log must
/// outlive it.
class UserStore final {
public:
    UserStore(std::filesystem::path file, base::RunLoop& runLoop, base::LogSink& log);
    ~UserStore();

    struct Opened {
        explicit Opened(std::unique_ptr<store::ModelContainer> itsContainer)
            : container(std::move(itsContainer)), context(*container) {}

        std::unique_ptr<store::ModelContainer> container;
        store::ModelContext context;
    };
    /// The store that is there now; null where nobody has made or prepared one, who says so when
    /// it is done. Valid until the run loop goes on. Throws base::Error where it cannot be opened,
    /// of which nobody may say when it can; each reason is logged once.
    Opened* open();
    /// Lets go of it at once.
    void close();
    /// Emitted with its context when it was opened, and with null before it is closed. `open`
    /// throws what is thrown here, with the store open.
    base::Signal<store::ModelContext*>& changed() { return m_changed; }

    const std::filesystem::path& file() const { return m_file; }

private:
    struct Identity {
        dev_t device = 0;
        ino_t number = 0;
        bool operator==(const Identity&) const = default;
    };
    /// Nothing where there is none. Throws StoreError where nobody can say.
    Identity fileThere() const;
    void openFile();

    std::filesystem::path m_file;
    base::RunLoop& m_runLoop;
    base::LogSink& m_sink;
    base::Logger m_log;
    std::unique_ptr<Opened> m_opened;
    Identity m_identity;
    /// Why it could not be opened when that was said last.
    std::string m_failure;
    std::unique_ptr<base::RunLoop::Timer> m_closing;
    base::Signal<store::ModelContext*> m_changed;
};

} // namespace korvex::agent
