#include "storage/SharedStoreMigration.h"

#include "app/StoreLocation.h"
#include "base/CountText.h"
#include "base/FileDescriptor.h"
#include "base/FileReplacement.h"
#include "base/Uuid.h"
#include "storage/SalvageSentences.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreError.h"
#include "storage/StoreMarkers.h"
#include "store/ModelContext.h"
#include "store/SoleHold.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"
#include "store/StoreLock.h"
#include "store/salvage/StoreSalvage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <string_view>
#include <vector>

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
            const auto name = at->path().filename().string();
            if (name.starts_with(kStagingPrefix) &&
                base::Uuid::parse(std::string_view(name).substr(kStagingPrefix.size()))) {
                std::error_code failure;
                fs::remove_all(at->path(), failure);
            }
        }
    }

private:
    fs::path m_path;
};

bool isThere(const fs::path& file) {
    std::error_code failure;
    // What cannot be looked at is left to whoever opens it, with the reason.
    return fs::status(file, failure).type() != fs::file_type::not_found;
}

/// Whether a store that fails so is refused for what it is, at every try.
bool isOfTheStore(store::StoreErrorCase reason) {
    switch (reason) {
    case store::StoreErrorCase::damaged:
    case store::StoreErrorCase::notAStore:
    case store::StoreErrorCase::newerVersion:
    case store::StoreErrorCase::olderVersion:
    case store::StoreErrorCase::symbolicLink:
    case store::StoreErrorCase::unreadable:
    case store::StoreErrorCase::nothingReadable:
        return true;
    case store::StoreErrorCase::missing:
    case store::StoreErrorCase::incomplete:
    case store::StoreErrorCase::needsUpgrade:
    case store::StoreErrorCase::upgradeNeedsWriting:
    case store::StoreErrorCase::noFolder:
    case store::StoreErrorCase::readOnly:
    case store::StoreErrorCase::busy:
    case store::StoreErrorCase::full:
    case store::StoreErrorCase::inputOutput:
    case store::StoreErrorCase::conflict:
    case store::StoreErrorCase::changesMissing:
    case store::StoreErrorCase::invalidRecord:
    case store::StoreErrorCase::other:
        return false;
    }
    return false;
}

/// A disk that fails may be this one's or that of the new store.
bool isGivenBackByItsDisk(const fs::path& file) {
    const base::FileDescriptor open(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    constexpr std::size_t kPiece = 1 << 20;
    std::vector<char> piece(kPiece);
    ssize_t size = 0;
    do {
        size = ::read(open.get(), piece.data(), piece.size());
    } while (size > 0 || (size < 0 && errno == EINTR));
    return size == 0;
}

/// Whether a salvage may read what another reader refused for this.
bool mayBeSalvaged(store::StoreErrorCase reason) {
    return reason == store::StoreErrorCase::damaged || reason == store::StoreErrorCase::notAStore;
}

/// Of a store that does not open: its files as they are.
void copyFiles(const fs::path& store, const fs::path& copy) {
    const auto open = [](const fs::path& file) {
        return base::FileDescriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC));
    };
    store::copyFile(open(store), copy);
    for (const auto* suffix : store::StoreFile::kJournals) {
        const auto journal = open(store.native() + suffix);
        if (journal.isOpen() || errno != ENOENT) {
            store::copyFile(journal, copy.native() + suffix);
        }
    }
}

[[noreturn]] void refuse(const store::StoreError& error, const fs::path& legacy) {
    if (error.which() == store::StoreErrorCase::damaged) {
        // Its own words advise a repair, which is for the store of this folder.
        throw LegacyStoreError(
            base::Error(error.domain(), error.code(), "The store is damaged and cannot be copied."),
            legacy);
    }
    throw LegacyStoreError(error, legacy);
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
    storeMarkers::removeLeftBehind(store);
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
    std::vector<std::string> notices;
    try {
        if (copyWhole(legacy, staged)) {
            m_log.info("Verified a snapshot of the legacy store; original retained");
        } else {
            notices.push_back(salvage(staged, legacy));
            m_log.warning(notices.back());
            validateStore(staged);
        }
    } catch (const store::StoreError& error) {
        if (isOfTheStore(error.which()) || (error.which() == store::StoreErrorCase::inputOutput &&
                                            !isGivenBackByItsDisk(legacy))) {
            refuse(error, legacy);
        }
        throw;
    }
    if (const auto failure = base::moveToNew(staged, store)) {
        store::throwSystemError(failure.value());
    }
    return notices;
}

bool SharedStoreMigration::copyWhole(const fs::path& legacy, const fs::path& staged) const {
    const store::StoreFile file(legacy);
    static_cast<void>(file.isThere()); // what is no file is refused before it is read
    try {
        file.copyTo(staged);
    } catch (const store::StoreError& error) {
        if (!mayBeSalvaged(error.which())) {
            throw;
        }
        copyFiles(legacy, staged);
        return false;
    }
    try {
        validateStore(staged);
        return true;
    } catch (const store::StoreError& error) {
        if (error.which() != store::StoreErrorCase::damaged) {
            throw;
        }
        return false;
    }
}

std::string SharedStoreMigration::salvage(const fs::path& staged, const fs::path& legacy) const {
    const auto& schema = SharedModelContainer::schema();
    const auto report = store::salvageStore(staged, schema, kPatience, *m_sink);
    if (report.saved == 0) { // then it is the user who gives it up
        throw store::StoreError(store::StoreErrorCase::nothingReadable);
    }
    const auto container = SharedModelContainer::openExisting(
        staged, store::ModelConfiguration::Older::refuse, *m_sink);
    store::ModelContext context(*container);
    auto notice = "The store of an older Korvex is damaged. What could be read was taken over: " +
                  base::countText(report.saved, "record", "records") + ".";
    for (const auto& sentence : lossSentences(report, boardNamesOf(report, context))) {
        notice += " " + sentence;
    }
    return notice + " The older store has been left as it is: " + legacy.string();
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
    if (store::StoreFile(at).hasJournal()) {
        throw store::StoreError(store::StoreErrorCase::busy);
    }
}

} // namespace korvex::storage
