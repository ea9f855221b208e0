#include "agent/UserStore.h"

#include "base/Error.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreError.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"
#include "store/StoreLock.h"

#include <sys/stat.h>

#include <cerrno>
#include <chrono>

namespace korvex::agent {

namespace {

/// What one program changes comes in several steps, and to open a store costs some milliseconds.
constexpr std::chrono::seconds kLinger{1};
/// For a program that writes. Reminders wait meanwhile, too.
constexpr std::chrono::milliseconds kPatience{2000};
/// Where it was in vain the last time: each event would wait anew.
constexpr std::chrono::milliseconds kShortPatience{100};

} // namespace

UserStore::UserStore(std::filesystem::path file, base::RunLoop& runLoop, base::LogSink& log)
    : m_file(std::move(file)), m_runLoop(runLoop), m_sink(log), m_log(log, "UserStore") {}

UserStore::~UserStore() = default;

UserStore::Opened* UserStore::open() {
    if (m_opened && fileThere() != m_identity) {
        close(); // another one is in its place
    }
    const auto isOther = !m_opened;
    if (isOther) {
        openFile();
    }
    if (m_opened) {
        // First: it must not stay open where somebody who is told of it fails.
        m_closing = m_runLoop.callAfter(kLinger, [this] { close(); });
        if (isOther) {
            m_changed.emit(&m_opened->context);
        }
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
    try {
        // What is opened is this file or a newer one, which is noticed the next time.
        m_identity = fileThere();
        if (m_identity == Identity{}) {
            return; // nobody has made one yet
        }
        if (store::SoleRequest::stands(store::StoreFile(m_file).lockFile())) {
            // It is upgraded or repaired: whoever does that says so when it is done.
            throw store::StoreError(store::StoreErrorCase::busy);
        }
        m_opened = std::make_unique<Opened>(storage::SharedModelContainer::make(
            {.storeURL = m_file,
             .existingStoreOnly = true,
             .lockTimeout = m_failure.empty() ? kPatience : kShortPatience},
            m_sink));
        m_opened->container->setPatience(kPatience);
        m_failure.clear();
    } catch (const storage::SharedStoreError&) {
        // It is made or upgraded just now, by a program that says so when it is done.
    } catch (const base::Error& error) {
        if (std::exchange(m_failure, error.errorDescription()) != error.errorDescription()) {
            m_log.warning(std::string("The store cannot be opened: ") + error.what());
        }
        throw;
    }
}

UserStore::Identity UserStore::fileThere() const {
    struct stat status {};
    if (::stat(m_file.c_str(), &status) == 0) {
        return {status.st_dev, status.st_ino};
    }
    if (errno != ENOENT && errno != ENOTDIR) {
        store::throwSystemError(errno, m_file.string());
    }
    return {};
}

} // namespace korvex::agent
