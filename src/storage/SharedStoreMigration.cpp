#include "storage/SharedStoreMigration.h"

#include "app/StoreLocation.h"
#include "base/FileDescriptor.h"
#include "base/FileReplacement.h"
#include "base/Uuid.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreError.h"
#include "storage/StoreAdvice.h"
#include "storage/StoreMarkers.h"
#include "store/JournalRemains.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"
#include "store/StoreLock.h"
#include "store/salvage/MendedCopy.h"

#include <SQLiteCpp/SQLiteCpp.h>

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

/// What cannot be looked at is left to whoever opens it, with the reason.
bool isThere(const fs::file_status& status) {
    return status.type() != fs::file_type::not_found;
}

/// As to a disk that is not there now.
bool isLinkToNowhere(const fs::path& path) {
    std::error_code failure;
    return fs::is_symlink(fs::symlink_status(path, failure)) && !isThere(fs::status(path, failure));
}

/// What the lock of the older programs says of their store; absent where it says nothing or may
/// only be read.
std::optional<store::StoreLock::Record> recordOf(const store::StoreFile& legacy) {
    std::error_code failure;
    if (!fs::exists(legacy.lockFile(), failure)) {
        return std::nullopt; // to take it would make one
    }
    try {
        store::StoreLock lock(legacy.lockFile(), kPatience);
        const store::StoreLock::Guard guard(&lock);
        return lock.record();
    } catch (const store::StoreError& error) {
        if (error.which() == store::StoreErrorCase::busy) {
            throw;
        }
        return std::nullopt;
    }
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
    case store::StoreErrorCase::incomplete:
        return true;
    case store::StoreErrorCase::missing:
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
    if (!open.isOpen()) {
        return true; // it is not that
    }
    constexpr std::size_t kPiece = 1 << 20;
    std::vector<char> piece(kPiece);
    ssize_t size = 0;
    do {
        size = ::read(open.get(), piece.data(), piece.size());
    } while (size > 0 || (size < 0 && errno == EINTR));
    return size == 0;
}

/// Whether a copy of the legacy store fails so for what that is, and a salvage may read it.
bool isDamageOf(const fs::path& legacy, const store::StoreError& error) {
    if (error.which() != store::StoreErrorCase::inputOutput) {
        return store::isDamage(error);
    }
    return !isGivenBackByItsDisk(legacy) ||
           !isGivenBackByItsDisk(store::StoreFile(legacy).journal());
}

/// The files of a store as they are, for a salvage. Whether the disk gave all of them.
bool copyFiles(const fs::path& store, const fs::path& copy) {
    const store::SalvageWatch nobody;
    const store::Ticker ticker(nobody);
    auto isWhole = true;
    for (const auto* suffix : {"", store::StoreFile::kJournal, store::StoreFile::kRollback}) {
        const auto of = store.native() + suffix;
        const base::FileDescriptor file(::open(of.c_str(), O_RDONLY | O_CLOEXEC));
        if (file.isOpen()) {
            isWhole = store::copyReadable(file, copy.native() + suffix, ticker) && isWhole;
        } else if (errno != ENOENT) {
            store::throwSystemError(errno);
        }
    }
    return isWhole;
}

[[noreturn]] void refuseDamaged(const store::StoreError& error, const fs::path& legacy,
                                const fs::path& store) {
    // The store's own words advise a repair, or to try again.
    throw LegacyStoreError(base::Error(error.domain(), error.code(),
                                       error.which() == store::StoreErrorCase::notAStore
                                           ? error.errorDescription()
                                           : "The store is damaged and cannot be copied."),
                           legacy,
                           "To take over what can be read of it, run this in a terminal: " +
                               repairCommand(store));
}

[[noreturn]] void refuseGone(const fs::path& legacy, store::StoreErrorCase reason,
                             const std::string& words) {
    const store::StoreError error(reason);
    throw LegacyStoreError::ofGone(base::Error(error.domain(), error.code(), words), legacy);
}

/// What there is to move away is named: the file is not.
[[noreturn]] void refuseWithoutFile(const fs::path& legacy) {
    const store::StoreFile file(legacy);
    std::string left;
    for (const auto& each : {file.journal(), file.lockFile()}) {
        std::error_code unknown;
        if (fs::exists(each, unknown)) {
            left += (left.empty() ? "" : ", ") + each.filename().string();
        }
    }
    refuseGone(legacy, store::StoreErrorCase::incomplete,
               "The store of an older Korvex, " + legacy.string() +
                   ", is gone, but what belongs to it is still there: " + left +
                   ". Nothing has been changed. Put the store back, or move that away to start "
                   "anew.");
}

/// Of a copy that is one file.
bool isBehind(const fs::path& copy, const store::StoreLock::Record& record) {
    try {
        const SQLite::Database database(store::StoreFile(copy).readingUri() + "&immutable=1",
                                        SQLite::OPEN_READONLY | SQLite::OPEN_URI);
        const auto found = store::newestOf(database.getHandle());
        return found.storeID == record.storeID && found.revision < record.revision;
    } catch (const SQLite::Exception&) {
        return false; // what is wrong with it, who reads all of it says
    } catch (const store::StoreError&) {
        return false;
    }
}

/// Where the newest changes stood in a journal that the legacy store has no more.
std::string noticeOnMissing(const fs::path& legacy) {
    return "The newest changes in the store of an older Korvex are missing: its journal was cut or "
           "removed outside Korvex. That store has been left as it is: " +
           legacy.string();
}

} // namespace

SharedStoreMigration::SharedStoreMigration(base::LogSink& log)
    : m_sink(&log), m_log(log, "SharedStore") {}

bool SharedStoreMigration::isLeft(const fs::path& legacy) {
    std::error_code failure;
    if (isThere(fs::symlink_status(legacy, failure)) || isLinkToNowhere(legacy.parent_path())) {
        return true;
    }
    const store::StoreFile file(legacy);
    const auto record = recordOf(file);
    return file.hasJournal() || (record && record->revision > 0);
}

std::vector<std::string> SharedStoreMigration::prepare(const std::optional<fs::path>& legacyURL,
                                                       const fs::path& directory) const {
    return makePlaceOrSay(legacyURL, directory, Damaged::refused).notices;
}

SharedStoreMigration::TakenOver SharedStoreMigration::takeOver(const fs::path& legacy,
                                                               const fs::path& directory) const {
    return makePlaceOrSay(legacy, directory, Damaged::salvaged);
}

SharedStoreMigration::TakenOver
SharedStoreMigration::makePlaceOrSay(const std::optional<fs::path>& legacyURL,
                                     const fs::path& directory, Damaged whenDamaged) const {
    try {
        return makePlace(legacyURL, app::storeFile(directory), whenDamaged);
    } catch (const base::Error& error) {
        // Who called tells the user.
        m_log.warning(std::string("Migration failed; original untouched: ") + error.what() + " (" +
                      std::to_string(error.code()) + ")");
        throw;
    }
}

SharedStoreMigration::TakenOver
SharedStoreMigration::makePlace(const std::optional<fs::path>& legacyURL, const fs::path& store,
                                Damaged whenDamaged) const {
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
    TakenOver taken;
    auto isCarriedOver = false;
    if (file.exists()) {
        SharedModelContainer::checkThatItIsAStore(store, *m_sink);
    } else if (file.isGone(lock)) {
        // Nothing takes the place of a store that was here and that somebody may put back.
        throw SharedStoreError(SharedStoreErrorCase::incompleteStore);
    } else if (legacyURL && isLeft(*legacyURL)) {
        taken = carryOver(*legacyURL, store, whenDamaged);
        isCarriedOver = true;
    } else {
        file.removeStaging();
        file.create(SharedModelContainer::schema());
    }
    // After the store: a kill in between leaves a store that the next start finds and marks, while
    // a marker without one would say that the user's data is gone. So does a disk that is full.
    try {
        storeMarkers::set(store, storeMarkers::kPrepared);
    } catch (const store::StoreError& error) {
        m_log.warning(std::string("The store could not be marked as prepared: ") + error.what());
    }
    if (isCarriedOver) {
        m_log.info("Published the shared store");
    }
    return taken;
}

SharedStoreMigration::TakenOver SharedStoreMigration::carryOver(const fs::path& legacy,
                                                                const fs::path& store,
                                                                Damaged whenDamaged) const {
    if (isLinkToNowhere(legacy.parent_path())) {
        refuseGone(legacy, store::StoreErrorCase::missing,
                   "The folder of the store of an older Korvex, " + legacy.parent_path().string() +
                       ", is a link to a place that is not there. Make its place available, or "
                       "remove the link to start anew.");
    }
    const StagingFolder staging(store.parent_path());
    const auto staged = staging.path() / store.filename();
    TakenOver taken;
    try {
        const store::StoreFile file(legacy);
        if (!file.isThere()) { // what is no file is refused before it is read
            refuseWithoutFile(legacy);
        }
        // Before the copy, which then holds no less.
        const auto record = recordOf(file);
        if (whenDamaged == Damaged::salvaged) {
            taken.notices.push_back("The store of an older Korvex was taken over. It has been left "
                                    "as it is: " +
                                    legacy.string());
        }
        try {
            file.copyTo(staged);
            // Before an upgrade, which is a revision too.
            if (record && isBehind(staged, *record)) {
                taken.notices.push_back(noticeOnMissing(legacy));
                m_log.warning(taken.notices.back());
            }
            validateStore(staged);
            m_log.info("Verified a snapshot of the legacy store; original retained");
        } catch (const store::StoreError& error) {
            if (!isDamageOf(legacy, error)) {
                throw;
            }
            if (whenDamaged == Damaged::refused) {
                refuseDamaged(error, legacy, store);
            }
            taken.salvage = salvage(staged, legacy, record);
            taken.notices.insert(taken.notices.end(), taken.salvage->notices.begin(),
                                 taken.salvage->notices.end());
            validateStore(staged);
        }
    } catch (const store::StoreError& error) {
        if (isOfTheStore(error.which())) {
            throw LegacyStoreError(error, legacy);
        }
        throw;
    }
    if (const auto failure = base::moveToNew(staged, store)) {
        store::throwSystemError(failure.value());
    }
    return taken;
}

store::SalvageReport
SharedStoreMigration::salvage(const fs::path& staged, const fs::path& legacy,
                              const std::optional<store::StoreLock::Record>& record) const {
    std::error_code isNone;
    const auto wasCopied = fs::exists(staged, isNone);
    const auto isWhole = wasCopied || copyFiles(legacy, staged);
    if (record && !wasCopied) {
        // So that the salvage, which reads the journal, sees what that has no more.
        store::StoreLock lock(store::StoreFile(staged).lockFile(), kPatience);
        const store::StoreLock::Guard guard(&lock);
        lock.setRecord(*record);
    }
    auto report = store::salvageStore(staged, SharedModelContainer::schema(), kPatience, *m_sink);
    if (report.saved == 0) { // then it is the user who gives it up
        throw store::StoreError(store::StoreErrorCase::nothingReadable);
    }
    report.mayMissMore = report.mayMissMore || !isWhole;
    report.kept = legacy;
    report.formerStores.clear(); // of its upgrade here, if any: the legacy store is that
    if (!report.notices.empty()) {
        // Its own words name the copy's files.
        report.notices = {noticeOnMissing(legacy)};
        m_log.warning(report.notices.front());
    }
    return report;
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
