#include "store/StoreConnection.h"

#include "store/OlderTable.h"
#include "store/StoreError.h"
#include "store/StoreUpgrade.h"
#include "store/TableSql.h"

#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

namespace korvex::store {

namespace {

/// A journal longer than this is moved into the store file after a commit.
constexpr int kLongJournalPages = 1000;
/// And is then begun anew in the same file, unless it is longer than this.
constexpr int kLongestReusedJournalPages = 1200;
/// In bytes: the head of the journal, and that of each page in it.
constexpr std::int64_t kJournalHead = 32;
constexpr std::int64_t kFrameHead = 24;
/// One of more bytes is moved and cut at the start, where it was left so: every start reads all of
/// it.
constexpr std::uintmax_t kLongJournalBytes =
    std::uintmax_t{4096 + kFrameHead} * kLongestReusedJournalPages;
/// A journal of more bytes than this is not left behind: who copies the store file alone then
/// misses little.
constexpr std::uintmax_t kLongestLeftJournal = 256 * 1024;
/// How long whoever is about to end waits for other programs' steps.
constexpr std::chrono::milliseconds kPatienceAtTheEnd{100};

/// A connection belongs to one thread, so its calls need no mutex; there is one for every value
/// read.
constexpr int kNoMutex = SQLITE_OPEN_NOMUTEX;

std::uint64_t inode(const std::filesystem::path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

} // namespace

TypeStatements::TypeStatements(sqlite3* database, const RecordType& recordType)
    : type(recordType),
      codec(recordType),
      selectByRowid(database, tableSql::select(type) + " WHERE rowid = ?"),
      selectByIdentifier(database, tableSql::select(type) + " WHERE " +
                                       tableSql::quoted(type.fields[0].name) + " = ?"),
      countByIdentifier(database, "SELECT count(*) FROM " + tableSql::quoted(type.name) +
                                      " WHERE " + tableSql::quoted(type.fields[0].name) + " = ?"),
      insert(database, tableSql::insert(type)),
      remove(database, "DELETE FROM " + tableSql::quoted(type.name) + " WHERE rowid = ?") {
    for (std::size_t i = 0; i < type.fields.size(); ++i) {
        if (type.fields[i].kind == FieldKind::externalBytes) {
            const auto table = tableSql::externalTable(type, type.fields[i]);
            externals.push_back(
                {i, Statement(database, "SELECT bytes FROM " + table + " WHERE owner = ?"),
                 Statement(database, "INSERT OR REPLACE INTO " + table +
                                         "(owner, checksum, bytes) VALUES(?, ?, ?)"),
                 Statement(database, "DELETE FROM " + table + " WHERE owner = ?")});
        }
    }
}

Statement& TypeStatements::updateOf(sqlite3* database, const std::vector<std::size_t>& fields) {
    const auto found = updates.find(fields);
    if (found != updates.end()) {
        return found->second;
    }
    return updates.emplace(fields, Statement(database, tableSql::update(type, fields)))
        .first->second;
}

StoreConnection::StoreConnection(const Schema& schema, const ModelConfiguration& configuration,
                                 base::LogSink& log)
    : m_schema(schema),
      m_configuration(configuration),
      m_busyTimeout(configuration.lockTimeout),
      m_log(log, "Store"),
      m_file(configuration.file),
      m_allowsSave(configuration.allowsSave) {
    try {
        openDatabase();
        m_begin.emplace(handle(), "BEGIN IMMEDIATE");
        m_beginRead.emplace(handle(), "BEGIN");
        m_commit.emplace(handle(), "COMMIT");
        m_rollback.emplace(handle(), "ROLLBACK");
        m_dataVersion.emplace(handle(), "PRAGMA data_version");
        m_changeLog = std::make_unique<ChangeLog>(handle());
        for (const auto* type : m_schema.types) {
            m_types.push_back(std::make_unique<TypeStatements>(handle(), *type));
        }
    } catch (const SQLite::Exception& error) {
        throwSqliteError(nullptr, error.getExtendedErrorCode());
    } catch (const StoreError& error) {
        // A table or column under another name is known by what cannot be asked for: to look at
        // each before would cost every start.
        if (error.which() == StoreErrorCase::other && m_database && !hasItsTables()) {
            throw StoreError(StoreErrorCase::damaged);
        }
        throw;
    }
    StoreLock::Guard guard(lock());
    revision();
    compareWithRecord();
    if (m_lock && m_file.journalSize() > kLongJournalBytes) {
        emptyJournal(Emptied::cut);
    }
}

StoreConnection::~StoreConnection() {
    shortenJournal();
    // Statements before their database.
    m_types.clear();
    m_changeLog.reset();
    m_dataVersion.reset();
    m_begin.reset();
    m_beginRead.reset();
    m_commit.reset();
    m_rollback.reset();
}

bool StoreConnection::hasItsTables() const {
    return hasTables(handle(), olderTables(m_schema, StoreFile::version(handle(), m_schema)));
}

void StoreConnection::openDatabase() {
    if (m_configuration.isInMemory()) {
        m_database = std::make_unique<SQLite::Database>(
            ":memory:", SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE | kNoMutex);
        for (const auto& sql : tableSql::createAllStatements(m_schema.types)) {
            m_database->exec(sql);
        }
        return;
    }
    const auto exists = m_file.exists();
    if (!exists &&
        (!m_allowsSave || m_configuration.whenMissing == ModelConfiguration::Missing::refuse)) {
        throw StoreError(m_file.hasJournal() ? StoreErrorCase::incomplete
                                             : StoreErrorCase::missing);
    }
    if (exists && m_allowsSave && !m_file.isWritable()) {
        m_allowsSave = false;
    }
    if (!m_allowsSave) {
        m_database = std::make_unique<SQLite::Database>(
            m_file.readingUri(), SQLite::OPEN_READONLY | SQLite::OPEN_URI | kNoMutex);
        try {
            configure();
        } catch (const StoreError& error) {
            if (error.which() != StoreErrorCase::needsUpgrade || !m_configuration.allowsSave ||
                m_configuration.whenOlder == ModelConfiguration::Older::refuse) {
                throw;
            }
            // Who asks for an upgrade is not to be told to ask for one.
            throw StoreError(StoreErrorCase::upgradeNeedsWriting);
        }
        return;
    }
    m_file.makeFolder();
    m_lock.emplace(m_file.lockFile(), m_configuration.lockTimeout);
    StoreLock::Guard guard(&*m_lock);
    m_file.removeStaging();
    if (m_file.isGone(*m_lock)) {
        throw StoreError(StoreErrorCase::incomplete);
    }
    if (!m_file.exists()) {
        m_file.create(m_schema);
    }
    const auto openFile = [&] {
        m_database = std::make_unique<SQLite::Database>(m_file.path().string(),
                                                        SQLite::OPEN_READWRITE | kNoMutex);
        configure();
    };
    try {
        openFile();
    } catch (const StoreError& error) {
        if (error.which() != StoreErrorCase::needsUpgrade ||
            m_configuration.whenOlder == ModelConfiguration::Older::refuse) {
            throw;
        }
        // Before the upgrade, which leaves no journal.
        const auto found = newestOf(handle());
        const auto missing = noticeMissingChanges(found);
        const auto record = [&](std::int64_t upgrades) {
            return !missing || m_lock->setRecord({.storeID = found.storeID,
                                                  .revision = missing->recorded + upgrades});
        };
        const auto former = inode(m_file.path());
        m_database.reset();
        // The upgrade is a revision, and no less is missing since. Recorded before it: to whoever
        // finds it killed rather one too many is missing than one too few.
        if (!record(1)) {
            throw StoreError(StoreErrorCase::inputOutput, "what is missing cannot be recorded");
        }
        try {
            upgradeStore(m_file, m_schema, m_configuration.lockTimeout, m_log);
        } catch (...) {
            // It may fail with the upgraded store in place, which has the revision.
            if (inode(m_file.path()) == former) {
                record(0);
            }
            throw;
        }
        m_wasUpgraded = true;
        openFile();
    }
    probeWriting();
}

void StoreConnection::probeWriting() {
    // Where a file of the store cannot be opened for writing, SQLite opens it for reading and says
    // so at the first write only: by then somebody has typed something.
    if (sqlite3_db_readonly(handle(), "main") == 1) {
        throw StoreError(StoreErrorCase::inputOutput, "not open for writing");
    }
    try {
        Statement(handle(), "BEGIN IMMEDIATE").run();
        Statement(handle(), "ROLLBACK").run();
    } catch (const StoreError& error) {
        throw StoreError(error.which() == StoreErrorCase::readOnly ? StoreErrorCase::inputOutput
                                                                   : error.which(),
                         "not open for writing");
    }
}

void StoreConnection::configure() {
    applyBusyTimeout();
    // The last connection to close would checkpoint, and nothing may checkpoint outside our lock.
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    m_file.checkHeader(handle());
    if (StoreFile::version(handle(), m_schema) < m_schema.version.number) {
        throw StoreError(StoreErrorCase::needsUpgrade);
    }
    if (m_allowsSave) {
        m_database->exec("PRAGMA journal_mode = WAL");
        m_database->exec("PRAGMA synchronous = FULL");
        m_database->exec("PRAGMA wal_autocheckpoint = 0");
        sqlite3_wal_hook(
            handle(),
            [](void* connection, sqlite3*, const char*, int pages) {
                static_cast<StoreConnection*>(connection)->m_journalPages = pages;
                return SQLITE_OK;
            },
            this);
    }
    Statement identity(handle(), "SELECT storeID FROM StoreInfo");
    while (identity.step()) {
        m_storeID = identity.uuid(0);
    }
    m_journalInode = inode(m_file.journal());
}

void StoreConnection::applyBusyTimeout() {
    sqlite3_busy_timeout(handle(), static_cast<int>(m_busyTimeout.count()));
}

void StoreConnection::setPatience(std::chrono::milliseconds patience) {
    m_busyTimeout = patience;
    applyBusyTimeout();
    if (m_lock) {
        m_lock->setTimeout(patience);
    }
}

std::optional<MissingChanges>
StoreConnection::noticeMissingChanges(const StoreLock::Record& found) {
    auto missing = findMissingChanges(found, m_file, *m_lock);
    if (missing && m_notices.empty()) {
        m_notices.push_back(missing->notice);
        m_log.warning(m_notices.back()); // whoever opens the store tells the user
    }
    return missing;
}

void StoreConnection::compareWithRecord() {
    if (!m_lock) {
        return;
    }
    noticeMissingChanges({.storeID = m_storeID, .revision = m_knownRevision});
    const auto record = m_lock->record();
    m_isFromElsewhere =
        !record || record->storeID != m_storeID || record->revision != m_knownRevision;
    if (m_knownRevision == 0 && m_notices.empty()) {
        adopt(); // nobody has ever written to it
    }
}

void StoreConnection::adopt() {
    if (m_lock && m_isFromElsewhere) {
        const StoreLock::Guard guard(lock());
        m_isFromElsewhere = false;
        recordRevision(revision());
    }
}

void StoreConnection::recordRevision(std::int64_t newest) {
    // Until the store is adopted every opener is to see that it has come from elsewhere: the record
    // is then of no store, but is written all the same, for whoever watches the file.
    m_lock->setRecord(
        {.storeID = m_isFromElsewhere ? base::Uuid() : m_storeID, .revision = newest});
}

void StoreConnection::checkFilesAreInPlace() const {
    if (!m_lock) {
        return;
    }
    int hasMoved = 0;
    sqlite3_file_control(handle(), "main", SQLITE_FCNTL_HAS_MOVED, &hasMoved);
    if (hasMoved) {
        throw StoreError(StoreErrorCase::incomplete);
    }
    if (m_journalInode != 0 && inode(m_file.journal()) != m_journalInode) {
        throw StoreError(StoreErrorCase::changesMissing);
    }
}

std::int64_t StoreConnection::dataVersion() {
    std::int64_t version = 0;
    while (m_dataVersion->step()) {
        version = m_dataVersion->integer(0);
    }
    return version;
}

std::int64_t StoreConnection::revision() {
    if (const auto version = dataVersion(); version != m_knownDataVersion) {
        m_knownRevision = m_changeLog->newestRevision();
        m_knownDataVersion = version;
    }
    return m_knownRevision;
}

StoreConnection::ReadScope::ReadScope(StoreConnection& connection)
    : m_connection(connection), m_isOwn(sqlite3_get_autocommit(connection.handle()) != 0) {
    if (m_isOwn) {
        connection.m_beginRead->run();
    }
}

StoreConnection::ReadScope::~ReadScope() {
    if (m_isOwn) {
        m_connection.rollback();
    }
}

void StoreConnection::begin() {
    if (sqlite3_get_autocommit(handle()) != 0) {
        m_begin->run();
        if (m_lock) {
            m_journalAtBegin = m_file.journalSize();
        }
    }
}

void StoreConnection::commit(std::int64_t newRevision) {
    m_commit->run();
    m_journalAtBegin.reset();
    m_knownRevision = newRevision;
    if (m_lock) {
        recordRevision(newRevision);
        if (m_journalInode == 0) {
            m_journalInode = inode(m_file.journal());
        }
        if (m_journalPages > kLongJournalPages) {
            emptyJournal(m_journalPages > kLongestReusedJournalPages ? Emptied::cut
                                                                     : Emptied::begunAnew);
        }
    }
}

void StoreConnection::rollback() noexcept {
    endTransaction();
    // A long one writes to the journal before it ends: what was to be saved fills the disk then.
    const auto before = std::exchange(m_journalAtBegin, std::nullopt);
    try {
        if (before && m_file.journalSize() > *before + kLongestLeftJournal) {
            emptyJournal(Emptied::cut);
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): it stays as long as it is until the next save
    }
}

void StoreConnection::endTransaction() noexcept {
    if (sqlite3_get_autocommit(handle()) == 0) {
        try {
            m_rollback->run();
        } catch (const StoreError&) {
            // SQLite has rolled back by itself, or will when the connection closes.
            m_log.warning("A transaction could not be rolled back");
        }
    }
}

void StoreConnection::emptyJournal(Emptied how) {
    try {
        StoreLock::Guard guard(lock());
        moveJournal(how);
    } catch (const StoreError& error) {
        m_log.warning(std::string("The journal could not be moved into the store: ") +
                      error.what());
    }
}

void StoreConnection::checkpoint() {
    if (m_lock) {
        StoreLock::Guard guard(lock());
        moveJournal(Emptied::cut);
    }
}

void StoreConnection::moveJournal(Emptied how) {
    checkFilesAreInPlace();
    int inJournal = 0;
    int moved = 0;
    // What is moved but stays in the journal is moved again by the next program, which cannot know,
    // and the journal would grow with each. Where somebody reads in it just now, it stays for once.
    sqlite3_busy_timeout(handle(), 0);
    const auto move = [&] {
        return sqlite3_wal_checkpoint_v2(handle(), "main",
                                         how == Emptied::cut ? SQLITE_CHECKPOINT_TRUNCATE
                                                             : SQLITE_CHECKPOINT_PASSIVE,
                                         &inJournal, &moved);
    };
    auto code = move();
    const auto isBusy = [&] { return (code & 0xff) == SQLITE_BUSY; };
    const auto hasNoRoom = (code & 0xff) == SQLITE_FULL || (code & 0xff) == SQLITE_IOERR;
    if (how == Emptied::cut && hasNoRoom && cutUncommitted()) {
        code = move();
    }
    applyBusyTimeout();
    if (code != SQLITE_OK && !isBusy()) {
        throwSqliteError(handle(), code);
    }
    // Where nothing was moved, as while somebody else moves it, both are -1.
    if (code == SQLITE_OK && inJournal == moved) {
        m_journalPages = 0;
        if (how == Emptied::begunAnew) {
            beginJournalAnew();
        }
    }
}

bool StoreConnection::cutUncommitted() {
    try {
        // How long what is saved in it is, tells only a save: one that writes over a little of what
        // was not, and so needs no room.
        const auto isUnchanged = [this, before = dataVersion()] { return dataVersion() == before; };
        const auto frame = kFrameHead + pragmaNumber(handle(), "page_size");
        beginJournalAnew();
        const auto saved = kJournalHead + m_journalPages * frame;
        // Nobody else writes from the look to the cut.
        Statement(handle(), "BEGIN IMMEDIATE").run();
        sqlite3_file* journal = nullptr;
        sqlite3_int64 size = 0;
        const auto isCut = isUnchanged() &&
                           sqlite3_file_control(handle(), "main", SQLITE_FCNTL_JOURNAL_POINTER,
                                                &journal) == SQLITE_OK &&
                           journal && journal->pMethods &&
                           journal->pMethods->xFileSize(journal, &size) == SQLITE_OK &&
                           size > saved &&
                           journal->pMethods->xTruncate(journal, saved) == SQLITE_OK;
        endTransaction();
        return isCut;
    } catch (const StoreError& error) {
        endTransaction();
        m_log.warning(std::string("The journal could not be cut: ") + error.what());
        return false;
    }
}

void StoreConnection::beginJournalAnew() {
    // A write begins it, any write: until then its pages pass for newer than the store file's, and
    // if some of them came to harm, what is left would hide the newer ones there.
    Statement(handle(), "PRAGMA user_version = " + std::to_string(m_schema.version.number)).run();
}

void StoreConnection::shortenJournal() noexcept {
    if (!m_lock || m_file.journalSize() <= kLongestLeftJournal) {
        return;
    }
    try {
        // Whoever keeps it for longer does the same at its own end.
        if (m_lock->acquireWithin(kPatienceAtTheEnd)) {
            const StoreLock::Guard guard(*m_lock, std::adopt_lock);
            moveJournal(Emptied::cut);
        }
    } catch (const StoreError& error) {
        m_log.warning(std::string("The journal could not be shortened: ") + error.what());
    }
}

} // namespace korvex::store
