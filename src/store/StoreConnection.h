#pragma once

#include "base/Log.h"
#include "store/ChangeLog.h"
#include "store/JournalRemains.h"
#include "store/ModelConfiguration.h"
#include "store/RowCodec.h"
#include "store/Schema.h"
#include "store/Statement.h"
#include "store/StoreFile.h"
#include "store/StoreLock.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvex::store {

/// The prepared statements of one record type.
struct TypeStatements {
    TypeStatements(sqlite3* database, const RecordType& recordType);

    const RecordType& type;
    RowCodec codec;
    Statement selectByRowid;
    Statement selectByIdentifier;
    Statement countByIdentifier;
    Statement insert;
    Statement remove;
    /// The statements over the side table of one field of external bytes.
    struct External {
        std::size_t field;
        Statement select;
        Statement replace;
        Statement remove;
    };
    std::vector<External> externals;
    /// One UPDATE for each set of changed fields in the row.
    std::map<std::vector<std::size_t>, Statement> updates;

    Statement& updateOf(sqlite3* database, const std::vector<std::size_t>& fields);
};

/// One SQLite connection on a store, shared by the contexts of its container. Main thread.
class StoreConnection {
public:
    StoreConnection(const Schema& schema, const ModelConfiguration& configuration,
                    base::LogSink& log);
    ~StoreConnection();

    bool allowsSave() const { return m_allowsSave; }
    const base::Uuid& storeID() const { return m_storeID; }
    const std::vector<std::string>& notices() const { return m_notices; }
    bool wasUpgraded() const { return m_wasUpgraded; }
    bool isFromElsewhere() const { return m_isFromElsewhere; }
    void adopt();
    sqlite3* handle() const { return m_database->getHandle(); }
    /// `index`: the type's place in the schema.
    TypeStatements& statements(std::size_t index) { return *m_types[index]; }
    ChangeLog& changeLog() { return *m_changeLog; }

    /// How long a write waits from now on for other programs: for those that know our lock, and
    /// then as long again for those that do not.
    void setPatience(std::chrono::milliseconds patience);
    std::chrono::milliseconds patience() const { return m_busyTimeout; }

    /// The write lock of a store in a file; null in memory and where nothing may be written.
    StoreLock* lock() { return m_lock ? &*m_lock : nullptr; }
    /// Throws `changesMissing` or `incomplete` when the store's files are no longer those that this
    /// connection has open: what it wrote would be lost.
    void checkFilesAreInPlace() const;

    /// The newest revision. Costs a microsecond while no other connection has written.
    std::int64_t revision();

    /// A read transaction, so that several reads see one state; no-op inside another transaction.
    class ReadScope {
    public:
        explicit ReadScope(StoreConnection& connection);
        ~ReadScope();
        ReadScope(const ReadScope&) = delete;
        ReadScope& operator=(const ReadScope&) = delete;

    private:
        StoreConnection& m_connection;
        bool m_isOwn;
    };

    /// Starts a write transaction, the database's own lock taken at once, unless there is one. A
    /// step is one transaction from its first look to its commit: that costs less than a lock for
    /// each read. Throws StoreError.
    void begin();
    /// The changes are durable when it returns. It then moves a long journal into the store file; a
    /// failure of that is logged, since the commit stands.
    void commit(std::int64_t newRevision);
    void rollback() noexcept;

    /// Moves what the journal holds into the store file, under the write lock.
    void checkpoint();
    /// For the end of a program: empties a journal that is too long to be left behind. Does nothing
    /// where another program keeps the lock for longer than a moment; a failure is logged.
    void shortenJournal() noexcept;

private:
    void openDatabase();
    bool hasItsTables() const;
    void configure();
    void applyBusyTimeout();
    void probeWriting();
    /// Absent where none are missing.
    std::optional<MissingChanges> noticeMissingChanges(const StoreLock::Record& found);
    void compareWithRecord();
    void recordRevision(std::int64_t newest);
    /// A file that is written over costs a commit half of what one costs that grows: the disk need
    /// not be told its new length. One that is left alone is better short.
    enum class Emptied { cut, begunAnew };
    /// What the journal holds goes into the store file. A failure is not the caller's: it is
    /// logged.
    void emptyJournal(Emptied how);
    /// The write lock must be held.
    void moveJournal(Emptied how);
    void beginJournalAnew();
    /// Gives back what a save that failed, or was killed, has written to the end of the journal:
    /// where the disk is full there is no room to move the rest before. False where nothing was.
    /// The write lock must be held.
    bool cutUncommitted();
    /// Where there is one.
    void endTransaction() noexcept;
    /// Changes with each save of another connection. Within a transaction it holds still.
    std::int64_t dataVersion();

    const Schema& m_schema;
    ModelConfiguration m_configuration;
    /// For writers that are not ours and do not know our lock.
    std::chrono::milliseconds m_busyTimeout;
    base::Logger m_log;
    StoreFile m_file;
    bool m_allowsSave = true;
    bool m_wasUpgraded = false;
    bool m_isFromElsewhere = false;
    std::optional<StoreLock> m_lock;
    std::unique_ptr<SQLite::Database> m_database;
    base::Uuid m_storeID;
    std::vector<std::string> m_notices;
    std::optional<Statement> m_dataVersion;
    std::optional<Statement> m_begin;
    std::optional<Statement> m_beginRead;
    std::optional<Statement> m_commit;
    std::optional<Statement> m_rollback;
    std::unique_ptr<ChangeLog> m_changeLog;
    std::vector<std::unique_ptr<TypeStatements>> m_types;
    std::int64_t m_knownDataVersion = -1;
    std::int64_t m_knownRevision = 0;
    std::uint64_t m_journalInode = 0;
    int m_journalPages = 0;
    /// In bytes, before what is being saved just now to a store in a file.
    std::optional<std::uintmax_t> m_journalAtBegin;
};

} // namespace korvex::store
