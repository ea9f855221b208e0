#include "agent/UserStore.h"

#include "base/Error.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreError.h"

#include <sys/stat.h>

#include <exception>
#include <utility>

namespace korvex::agent {

UserStore::UserStore(std::filesystem::path file, schedule::NotificationScheduling& client,
                     const base::Clock& clock, base::RunLoop& runLoop, base::LogSink& log)
    : m_file(std::move(file)),
      m_client(client),
      m_clock(clock),
      m_runLoop(runLoop),
      m_sink(log),
      m_log(log, "UserStore") {}

bool UserStore::look() {
    const auto wasOpen = m_opened != nullptr;
    if (m_opened && fileThere() != m_identity) {
        m_opened.reset();
    }
    if (m_opened) {
        return false;
    }
    open();
    return wasOpen || m_opened;
}

void UserStore::open() {
    // What is opened is this file or a newer one, which the next look finds.
    m_identity = fileThere();
    if (m_identity == Identity{}) {
        return; // nobody has made one yet
    }
    try {
        m_opened =
            std::make_unique<Opened>(storage::SharedModelContainer::make(
                                         {.storeURL = m_file, .existingStoreOnly = true}, m_sink),
                                     m_client, m_clock, m_runLoop, m_sink);
        m_failure.clear();
    } catch (const storage::SharedStoreError&) {
        // It is made or upgraded just now, by a program that says so when it is done.
    } catch (const base::Error& error) {
        if (std::exchange(m_failure, error.errorDescription()) != error.errorDescription()) {
            m_log.warning("The store cannot be opened: " + error.errorDescription());
        }
    }
}

UserStore::Identity UserStore::fileThere() const {
    struct stat status {};
    return ::stat(m_file.c_str(), &status) == 0 ? Identity{status.st_dev, status.st_ino}
                                                : Identity{};
}

} // namespace korvex::agent
