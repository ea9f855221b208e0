#include "agent/UserStore.h"

#include "base/Error.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreError.h"

#include <sys/stat.h>

#include <chrono>

namespace korvex::agent {

namespace {

/// What one program changes comes in several steps, and to open a store costs some milliseconds.
constexpr std::chrono::seconds kLinger{1};
/// For a program that writes. Reminders wait meanwhile, too.
constexpr std::chrono::seconds kPatience{2};

} // namespace

UserStore::UserStore(std::filesystem::path file, base::RunLoop& runLoop, base::LogSink& log)
    : m_file(std::move(file)), m_runLoop(runLoop), m_sink(log), m_log(log, "UserStore") {}

UserStore::~UserStore() = default;

UserStore::Opened* UserStore::open() {
    if (m_opened && fileThere() != m_identity) {
        close(); // another one is in its place
    }
    if (!m_opened) {
        openFile();
        if (m_opened) {
            m_changed.emit(&m_opened->context);
        }
    }
    if (m_opened) {
        m_closing = m_runLoop.callAfter(kLinger, [this] { close(); });
    }
    return m_opened.get();
}

void UserStore::close() {
    m_closing.reset();
    if (m_opened) {
        m_changed.emit(nullptr);
        m_opened.reset();
    }
}

void UserStore::openFile() {
    // What is opened is this file or a newer one, which is noticed the next time.
    m_identity = fileThere();
    if (m_identity == Identity{}) {
        return; // nobody has made one yet
    }
    try {
        m_opened = std::make_unique<Opened>(storage::SharedModelContainer::make(
            {.storeURL = m_file, .existingStoreOnly = true, .lockTimeout = kPatience}, m_sink));
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
