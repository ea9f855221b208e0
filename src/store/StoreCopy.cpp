#include "store/StoreCopy.h"

#include "store/Statement.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"
#include "store/StoreLock.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <chrono>
#include <optional>

namespace korvex::store {

namespace {

constexpr std::chrono::seconds kPatience{10};

/// Into a new file, which is not synced.
void copyDatabase(sqlite3* database, const std::filesystem::path& copy) {
    const SQLite::Database target(copy.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    sqlite3_exec(target.getHandle(), "PRAGMA synchronous = OFF", nullptr, nullptr, nullptr);
    auto* const backup = sqlite3_backup_init(target.getHandle(), "main", database, "main");
    if (!backup) {
        throwSqliteError(target.getHandle(), sqlite3_extended_errcode(target.getHandle()));
    }
    sqlite3_backup_step(backup, -1);
    const auto code = sqlite3_backup_finish(backup);
    if (code != SQLITE_OK) {
        throwSqliteError(nullptr, code);
    }
}

} // namespace

void copyStore(const std::filesystem::path& store, const std::filesystem::path& copy) {
    const StoreFile file(store);
    if (!file.exists()) {
        throw StoreError(file.hasJournal() ? StoreErrorCase::incomplete : StoreErrorCase::missing);
    }
    // Nobody writes meanwhile. Who cannot take the lock is not asked to: nothing may be changed
    // beside a store that is only read.
    std::error_code ignored;
    std::optional<StoreLock> lock;
    if (file.isWritable() && std::filesystem::exists(file.lockFile(), ignored)) {
        lock.emplace(file.lockFile(), kPatience);
    }
    const StoreLock::Guard guard(lock ? &*lock : nullptr);
    try {
        const SQLite::Database database(file.readingUri(),
                                        SQLite::OPEN_READONLY | SQLite::OPEN_URI);
        file.checkHeader(database.getHandle());
        StoreFile(copy).createBy([&](const std::filesystem::path& staging) {
            copyDatabase(database.getHandle(), staging);
        });
    } catch (const SQLite::Exception& error) {
        throwSqliteError(nullptr, error.getExtendedErrorCode());
    }
}

} // namespace korvex::store
