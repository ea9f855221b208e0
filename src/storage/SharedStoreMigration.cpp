#include "storage/SharedStoreMigration.h"

#include "app/StoreLocation.h"
#include "base/FileDescriptor.h"
#include "base/Uuid.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreError.h"
#include "storage/StoreMarkers.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"
#include "store/StoreLock.h"
#include "store/StoreSalvage.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstdio>

namespace korvex::storage {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kStagingPrefix = ".migration-";

/// Of whoever comes second, for the first one: to carry a store over takes as long as to copy it
/// some times.
constexpr std::chrono::minutes kPatience{1};

/// A folder to work in. The store's write lock must be held as long as there is one, so that any
/// other is known to be left behind.
class StagingFolder {
public:
    explicit StagingFolder(const fs::path& parent)
        : m_path(parent / (std::string(kStagingPrefix) + base::Uuid::random().text())) {
        if (::mkdir(m_path.c_str(), S_IRWXU) != 0) {
            store::throwSystemError(errno);
        }
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
                std::error_code failure;
                fs::remove_all(at->path(), failure);
            }
        }
    }

private:
    fs::path m_path;
};

/// Moves a store that is closed and synced to where none is.
void publish(const fs::path& staged, const fs::path& store) {
    if (::renameat2(AT_FDCWD, staged.c_str(), AT_FDCWD, store.c_str(), RENAME_NOREPLACE) != 0) {
        store::throwSystemError(errno);
    }
    const base::FileDescriptor folder(
        ::open(store.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (::fsync(folder.get()) != 0) {
        store::throwSystemError(errno);
    }
}

bool isThere(const fs::path& file) {
    std::error_code failure;
    // What cannot be looked at is left to whoever opens it, with the reason.
    return fs::status(file, failure).type() != fs::file_type::not_found;
}

/// What is to be said of a legacy store of which not everything could be carried over.
std::string noticeOf(const store::SalvageReport& salvage, const fs::path& legacy) {
    std::size_t missing = 0;
    for (const auto& loss : salvage.losses) {
        missing += loss.missing;
    }
    return "The store of an older Korvex is damaged. " + std::to_string(salvage.saved) +
           " records could be taken over" +
           (missing > 0 ? ", " + std::to_string(missing) + " are missing" : std::string()) +
           (salvage.mayMissMore ? ", and maybe more than can be told. " : ". ") +
           "It has been left as it is: " + legacy.string();
}

} // namespace

SharedStoreMigration::SharedStoreMigration(base::LogSink& log)
    : m_sink(&log), m_log(log, "SharedStore") {}

std::vector<std::string> SharedStoreMigration::prepare(const std::optional<fs::path>& legacyURL,
                                                       const fs::path& directory) const {
    try {
        return makePlace(legacyURL, app::storeFile(directory));
    } catch (const base::Error& error) {
        // Who called tells the user.
        m_log.warning("Migration failed; original untouched: " + error.errorDescription() + " (" +
                      std::to_string(error.code()) + ")");
        throw;
    }
}

std::vector<std::string> SharedStoreMigration::makePlace(const std::optional<fs::path>& legacyURL,
                                                         const fs::path& store) const {
    const auto directory = store.parent_path();
    const auto isPrepared = [&] { return storeMarkers::isSet(store, storeMarkers::kPrepared); };
    storeMarkers::checkThatNothingIsGone(store);
    if (isPrepared()) {
        StagingFolder::removeLeftovers(directory);
        return {};
    }
    const store::StoreFile file(store);
    if (file.exists() && !file.isWritable()) {
        return {};
    }
    file.makeFolder();
    store::StoreLock lock(file.lockFile(), kPatience);
    const store::StoreLock::Guard guard(&lock);
    if (isPrepared()) {
        return {}; // another program was faster
    }
    StagingFolder::removeLeftovers(directory);
    std::vector<std::string> notices;
    auto isCarriedOver = false;
    if (file.exists()) {
        SharedModelContainer::checkThatItIsAStore(store, *m_sink);
    } else if (file.isGone(lock)) {
        // Nothing takes the place of a store that was here and that somebody may put back.
        throw SharedStoreError(SharedStoreErrorCase::incompleteStore);
    } else if (legacyURL && isThere(*legacyURL)) {
        notices = carryOver(*legacyURL, store);
        isCarriedOver = true;
    } else {
        file.removeStaging();
        file.create(SharedModelContainer::schema());
    }
    // After the store: a kill in between leaves a store that the next start finds and marks, while
    // a marker without one would say that the user's data is gone.
    storeMarkers::set(store, storeMarkers::kPrepared);
    if (isCarriedOver) {
        m_log.info("Published the shared store");
    }
    return notices;
}

std::vector<std::string> SharedStoreMigration::carryOver(const fs::path& legacy,
                                                         const fs::path& store) const {
    const StagingFolder staging(store.parent_path());
    const auto staged = staging.path() / store.filename();
    store::StoreFile(legacy).copyTo(staged);
    std::vector<std::string> notices;
    try {
        validateStore(staged);
        m_log.info("Verified a snapshot of the legacy store; original retained");
    } catch (const store::StoreError& error) {
        if (error.which() != store::StoreErrorCase::damaged) {
            throw;
        }
        notices.push_back(noticeOf(
            store::salvageStore(staged, SharedModelContainer::schema(), kPatience, *m_sink),
            legacy));
        m_log.warning(notices.back());
        validateStore(staged);
    }
    publish(staged, store);
    return notices;
}

void SharedStoreMigration::validateStore(const fs::path& at) const {
    const auto container =
        SharedModelContainer::openExisting(at, store::ModelConfiguration::Older::upgrade, *m_sink);
    const auto report = container->check();
    for (const auto& problem : report.problems) {
        m_log.warning(problem);
    }
    if (report.isDamaged) {
        throw store::StoreError(store::StoreErrorCase::damaged);
    }
    // The file alone is the store then.
    container->checkpoint();
}

} // namespace korvex::storage
