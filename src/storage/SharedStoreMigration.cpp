#include "storage/SharedStoreMigration.h"

#include "app/StoreLocation.h"
#include "base/FileDescriptor.h"
#include "base/Uuid.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreError.h"
#include "storage/StoreMarkers.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

namespace korvex::storage {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kStagingPrefix = ".migration-";

[[noreturn]] void throwSystemError(int error) {
    throw store::StoreError(error == ENOSPC || error == EDQUOT ? store::StoreErrorCase::full
                                                               : store::StoreErrorCase::inputOutput,
                            std::strerror(error));
}

base::FileDescriptor openFolder(const fs::path& folder) {
    return base::FileDescriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

/// A folder to work in, locked as long as it is in use, so that nobody takes it for left behind.
class StagingFolder {
public:
    explicit StagingFolder(const fs::path& parent)
        : m_path(parent / (std::string(kStagingPrefix) + base::Uuid::random().text())) {
        std::error_code failure;
        fs::create_directories(parent, failure);
        if (failure) {
            throw store::StoreError(store::StoreErrorCase::noFolder,
                                    parent.string() + ": " + failure.message());
        }
        if (::mkdir(m_path.c_str(), S_IRWXU) != 0) {
            throwSystemError(errno);
        }
        m_lock = openFolder(m_path);
        ::flock(m_lock.get(), LOCK_EX | LOCK_NB);
    }
    ~StagingFolder() {
        std::error_code ignored;
        fs::remove_all(m_path, ignored);
    }
    StagingFolder(const StagingFolder&) = delete;
    StagingFolder& operator=(const StagingFolder&) = delete;

    const fs::path& path() const { return m_path; }

    static void removeLeftovers(const fs::path& parent) {
        std::error_code ignored;
        for (fs::directory_iterator at(parent, ignored), end; !ignored && at != end;
             at.increment(ignored)) {
            if (at->path().filename().string().starts_with(kStagingPrefix)) {
                const auto folder = openFolder(at->path());
                if (folder.isOpen() && ::flock(folder.get(), LOCK_EX | LOCK_NB) == 0) {
                    std::error_code failure;
                    fs::remove_all(at->path(), failure);
                }
            }
        }
    }

private:
    fs::path m_path;
    base::FileDescriptor m_lock;
};

/// Moves a store that is closed and synced; true also where another program was faster.
void publish(const fs::path& staged, const fs::path& store) {
    if (::renameat2(AT_FDCWD, staged.c_str(), AT_FDCWD, store.c_str(), RENAME_NOREPLACE) != 0 &&
        errno != EEXIST) {
        throwSystemError(errno);
    }
    const auto folder = openFolder(store.parent_path());
    if (::fsync(folder.get()) != 0) {
        throwSystemError(errno);
    }
}

bool isThere(const fs::path& file) {
    std::error_code failure;
    const auto status = fs::status(file, failure);
    // What cannot be looked at is left to whoever opens it, with the reason.
    return status.type() != fs::file_type::not_found;
}

/// Of whatever version. Throws StoreError.
void checkThatItIsAStore(const fs::path& file, base::LogSink& log) {
    try {
        store::ModelContainer::open(SharedModelContainer::schema(),
                                    {.file = file, .allowsSave = false}, log);
    } catch (const store::StoreError& error) {
        if (error.which() != store::StoreErrorCase::needsUpgrade) {
            throw;
        }
    }
}

} // namespace

SharedStoreMigration::SharedStoreMigration(base::LogSink& log)
    : m_sink(&log), m_log(log, "SharedStore") {}

void SharedStoreMigration::prepare(const std::optional<fs::path>& legacyURL,
                                   const fs::path& directory) const {
    const auto store = app::storeFile(directory);
    if (storeMarkers::isSet(store, storeMarkers::kPrepared)) {
        if (!isThere(store)) {
            throw SharedStoreError(SharedStoreErrorCase::incompleteStore);
        }
        StagingFolder::removeLeftovers(directory);
        return;
    }
    StagingFolder::removeLeftovers(directory);
    if (isThere(store)) {
        if (::access(directory.c_str(), W_OK) != 0) {
            return;
        }
        checkThatItIsAStore(store, *m_sink);
    } else if (legacyURL && isThere(*legacyURL)) {
        try {
            carryOver(*legacyURL, store);
        } catch (const base::Error& error) {
            m_log.error("Migration failed; original untouched: " + error.errorDescription() + " (" +
                        std::to_string(error.code()) + ")");
            throw;
        }
    } else {
        store::ModelContainer::open(SharedModelContainer::schema(), {.file = store}, *m_sink);
    }
    storeMarkers::set(store, storeMarkers::kPrepared);
}

void SharedStoreMigration::carryOver(const fs::path& legacy, const fs::path& store) const {
    // Another store's journal would be taken for one of the store that is published here.
    if (isThere(store.string() + "-wal")) {
        throw SharedStoreError(SharedStoreErrorCase::incompleteStore);
    }
    const StagingFolder staging(store.parent_path());
    const auto staged = staging.path() / store.filename();
    store::StoreFile(legacy).copyTo(staged);
    validateStore(staged);
    m_log.info("Verified a snapshot of the legacy store; original retained");
    publish(staged, store);
    m_log.info("Published the shared store");
}

void SharedStoreMigration::validateStore(const fs::path& at) const {
    const auto container =
        store::ModelContainer::open(SharedModelContainer::schema(),
                                    {.file = at,
                                     .whenMissing = store::ModelConfiguration::Missing::refuse,
                                     .whenOlder = store::ModelConfiguration::Older::upgrade},
                                    *m_sink);
    for (const auto& problem : container->check().problems) {
        m_log.warning(problem);
    }
    // The file alone is the store then.
    container->checkpoint();
}

} // namespace korvex::storage
