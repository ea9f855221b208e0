#include "agent/ReminderFile.h"

#include "base/FileReplacement.h"
#include "store/Statement.h"

#include <SQLiteCpp/Exception.h>

#include <chrono>
#include <string>
#include <system_error>
#include <utility>

namespace korvex::agent {

namespace {

using store::Statement;
using store::StoreError;
using store::StoreErrorCase;

/// "KVXR", and the form of the tables.
constexpr std::int64_t kApplicationID = 0x4B565852;
constexpr std::int64_t kVersion = 1;
/// An agent that ends gives its place to the next one within that time.
constexpr std::chrono::seconds kPatience{1};
/// SQLite's journals, which belong to the file that they stand beside.
constexpr std::string_view kCompanions[]{"-wal", "-journal", "-shm"};

constexpr const char* kTables = R"(
    CREATE TABLE Reminder(
        entry BLOB NOT NULL UNIQUE CHECK(length(entry) = 16),
        due REAL NOT NULL,
        body TEXT NOT NULL,
        state INTEGER NOT NULL CHECK(state BETWEEN 0 AND 3),
        notification INTEGER,
        daemon TEXT,
        PRIMARY KEY(due, entry),
        CHECK((state = 1) = (notification IS NOT NULL)),
        CHECK((state = 1) = (daemon IS NOT NULL))
    ) STRICT, WITHOUT ROWID;
    CREATE INDEX ReminderByDue ON Reminder(state, due);
    CREATE INDEX ReminderByNotification ON Reminder(notification, daemon) WHERE state = 1;
    CREATE TABLE Withdrawal(
        notification INTEGER NOT NULL,
        daemon TEXT NOT NULL,
        PRIMARY KEY(notification, daemon)
    ) STRICT, WITHOUT ROWID;
    CREATE TABLE Mark(
        name TEXT NOT NULL PRIMARY KEY,
        moment REAL NOT NULL
    ) STRICT, WITHOUT ROWID;
)";

/// Why a file is of no use to this program.
struct Unusable {
    std::string why;
};

std::filesystem::path beside(const std::filesystem::path& file, std::string_view ending) {
    auto path = file;
    return path += ending;
}

void check(std::error_code error) {
    if (error) {
        store::throwSystemError(error.value());
    }
}

bool isWhole(sqlite3* database) {
    Statement statement(database, "PRAGMA quick_check(1)");
    return statement.step() && statement.text(0) == "ok";
}

void run(sqlite3* database, std::string_view sql) {
    Statement(database, sql).run();
}

} // namespace

ReminderFile::ReminderFile(std::filesystem::path file, base::LogSink& log)
    : m_file(std::move(file)), m_log(log, "ReminderFile") {
    if (!m_file.empty()) {
        check(base::makeFolders(m_file.parent_path(), 0700));
        m_lock.emplace(beside(m_file, ".lock"), kPatience);
        if (m_lock->state() == base::FileLock::State::taken) {
            throw StoreError(StoreErrorCase::busy, m_file.string());
        }
    }
    openAgain();
}

ReminderFile::Opened ReminderFile::openAgain() {
    try {
        open();
        return Opened::asItWas;
    } catch (const Unusable& unusable) {
        beginAnew(unusable.why);
        return Opened::anew;
    }
}

void ReminderFile::beginAnew(std::string_view why) {
    m_log.warning("The file of reminders is set aside and begun anew: " + std::string(why));
    m_database.reset();
    try {
        setAside();
        open();
    } catch (const Unusable& unusable) {
        throw StoreError(StoreErrorCase::damaged, unusable.why);
    }
}

void ReminderFile::open() {
    const auto name = m_file.empty() ? std::string(":memory:") : m_file.string();
    // Two connections would wait for each other.
    m_database.reset();
    try {
        try {
            m_database = std::make_unique<SQLite::Database>(
                name, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE | SQLITE_OPEN_NOMUTEX);
            prepare();
        } catch (const SQLite::Exception& error) {
            store::throwSqliteError(nullptr, error.getExtendedErrorCode());
        }
    } catch (const StoreError& error) {
        const auto isEmpty = m_database && isNew();
        m_database.reset();
        // Where nothing is in it yet, it is the disk that takes nothing.
        if (store::isDamage(error) && !isEmpty) {
            throw Unusable{error.what()};
        }
        throw;
    } catch (const Unusable&) {
        m_database.reset();
        throw;
    }
}

bool ReminderFile::isNew() const {
    try {
        return store::pragmaNumber(handle(), "schema_version") == 0;
    } catch (const StoreError&) {
        return false;
    }
}

bool ReminderFile::isDamage(const StoreError& error) {
    // What cannot be asked for, though the file says that it is of this form, is missing in it.
    return store::isDamage(error) || error.which() == StoreErrorCase::other;
}

void ReminderFile::prepare() {
    // One process alone: no shared memory stands beside the file, and no lock is taken each time.
    run(handle(), "PRAGMA locking_mode = EXCLUSIVE");
    if (store::pragmaNumber(handle(), "schema_version") == 0) {
        run(handle(), "PRAGMA journal_mode = WAL");
        m_database->exec(
            "BEGIN IMMEDIATE; PRAGMA application_id = " + std::to_string(kApplicationID) +
            "; PRAGMA user_version = " + std::to_string(kVersion) + ";" + kTables + "COMMIT");
    }
    if (store::pragmaNumber(handle(), "application_id") != kApplicationID) {
        throw Unusable{"it is another program's"};
    }
    if (store::pragmaNumber(handle(), "user_version") > kVersion) {
        throw Unusable{"a newer version has written it"};
    }
    if (!isWhole(handle())) {
        throw Unusable{"it is damaged"};
    }
    // A killed program loses nothing that was committed; a power cut may lose the newest, which is
    // planned again from the store, or shown again.
    run(handle(), "PRAGMA synchronous = NORMAL");
    run(handle(), "PRAGMA journal_mode = WAL");
    run(handle(), "PRAGMA journal_size_limit = 262144");
    run(handle(), "PRAGMA cache_size = -1024");
}

void ReminderFile::setAside() {
    if (m_file.empty()) {
        return;
    }
    const auto aside = beside(m_file, ".aside");
    std::error_code ignored;
    // The journals first: left alone, they would be taken for those of the new file.
    for (const auto companion : kCompanions) {
        std::filesystem::remove(beside(aside, companion), ignored);
        if (const auto journal = beside(m_file, companion);
            std::filesystem::exists(journal, ignored)) {
            check(base::moveFile(journal, beside(aside, companion)));
        }
    }
    if (std::filesystem::exists(m_file, ignored)) {
        check(base::moveFile(m_file, aside));
    }
}

} // namespace korvex::agent
