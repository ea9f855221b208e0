#include "store/StoreFile.h"

#include "base/Uuid.h"
#include "store/Statement.h"
#include "store/StoreError.h"
#include "store/TableSql.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace korvex::store {

namespace {

constexpr std::size_t kHeaderSize = 100;
constexpr std::array<unsigned char, 16> kSqliteMagic{'S', 'Q', 'L', 'i', 't', 'e', ' ', 'f',
                                                     'o', 'r', 'm', 'a', 't', ' ', '3', 0};

std::int64_t pragma(sqlite3* database, const char* name) {
    Statement statement(database, std::string("PRAGMA ") + name);
    std::int64_t value = 0;
    while (statement.step()) {
        value = statement.integer(0);
    }
    return value;
}

void syncPath(const std::filesystem::path& path, int flags) {
    const auto descriptor = ::open(path.c_str(), flags | O_CLOEXEC);
    const auto isSynced = descriptor >= 0 && ::fsync(descriptor) == 0;
    const auto error = errno;
    if (descriptor >= 0) {
        ::close(descriptor);
    }
    if (!isSynced) {
        throw StoreError(error == ENOSPC ? StoreErrorCase::full : StoreErrorCase::inputOutput,
                         std::strerror(error));
    }
}

void fill(const std::filesystem::path& staging, const Schema& schema) {
    SQLite::Database database(staging.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec("PRAGMA synchronous = FULL");
    SQLite::Transaction transaction(database);
    database.exec("PRAGMA application_id = " + std::to_string(StoreFile::kApplicationID));
    database.exec("PRAGMA user_version = " + std::to_string(schema.version.number));
    for (const auto& sql : tableSql::createCommonStatements()) {
        database.exec(sql);
    }
    for (const auto* type : schema.types) {
        for (const auto& sql : tableSql::createStatements(*type)) {
            database.exec(sql);
        }
    }
    Statement identify(database.getHandle(), "INSERT INTO StoreInfo(storeID) VALUES(?)");
    const auto storeID = base::Uuid::random();
    identify.bind(0, storeID);
    identify.run();
    transaction.commit();
    database.exec("PRAGMA journal_mode = WAL");
}

} // namespace

std::filesystem::path StoreFile::withSuffix(const char* suffix) const {
    auto path = m_file;
    path += suffix;
    return path;
}

std::filesystem::path StoreFile::directory() const {
    return m_file.has_parent_path() ? m_file.parent_path() : std::filesystem::path(".");
}

std::string StoreFile::stagingPrefix() const {
    return "." + m_file.filename().string() + ".new-";
}

bool StoreFile::exists() const {
    struct stat status {};
    if (::stat(m_file.c_str(), &status) != 0) {
        // Where a file stands in the place of a folder, there is no store either.
        if (errno == ENOENT || errno == ENOTDIR) {
            return false;
        }
        throw StoreError(StoreErrorCase::unreadable, std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) {
        throw StoreError(StoreErrorCase::notAStore, "not a regular file");
    }
    if (status.st_size < static_cast<off_t>(kHeaderSize)) {
        throw StoreError(StoreErrorCase::notAStore);
    }
    if (::access(m_file.c_str(), R_OK) != 0) {
        throw StoreError(StoreErrorCase::unreadable, std::strerror(errno));
    }
    return true;
}

std::uintmax_t StoreFile::journalSize() const {
    struct stat status {};
    return ::stat(journal().c_str(), &status) == 0 ? static_cast<std::uintmax_t>(status.st_size)
                                                   : 0;
}

bool StoreFile::allowsCompanions() const {
    return ::access(directory().c_str(), W_OK) == 0;
}

bool StoreFile::isWritable() const {
    const auto lock = lockFile();
    return allowsCompanions() && ::access(m_file.c_str(), W_OK) == 0 &&
           (::access(lock.c_str(), F_OK) != 0 || ::access(lock.c_str(), W_OK) == 0);
}

void StoreFile::create(const Schema& schema) const {
    const auto staging = directory() / (stagingPrefix() + base::Uuid::random().text());
    try {
        fill(staging, schema);
        // A person's notes are nobody else's; the journal takes over the file's permissions.
        std::filesystem::permissions(staging, std::filesystem::perms::owner_read |
                                                  std::filesystem::perms::owner_write);
        syncPath(staging, O_RDWR);
        if (::renameat2(AT_FDCWD, staging.c_str(), AT_FDCWD, m_file.c_str(), RENAME_NOREPLACE) !=
            0) {
            throw StoreError(errno == ENOSPC ? StoreErrorCase::full : StoreErrorCase::inputOutput,
                             std::strerror(errno));
        }
        syncPath(directory(), O_RDONLY | O_DIRECTORY);
    } catch (const SQLite::Exception& error) {
        removeStaging();
        throwSqliteError(nullptr, error.getExtendedErrorCode());
    } catch (...) {
        removeStaging();
        throw;
    }
}

void StoreFile::removeStaging() const {
    std::error_code ignored;
    const auto prefix = stagingPrefix();
    for (std::filesystem::directory_iterator at(directory(), ignored), end; !ignored && at != end;
         at.increment(ignored)) {
        if (at->path().filename().string().starts_with(prefix)) {
            std::error_code failure;
            std::filesystem::remove(at->path(), failure);
        }
    }
}

void StoreFile::checkHeader(sqlite3* database) const {
    sqlite3_file* file = nullptr;
    std::array<unsigned char, kHeaderSize> header{};
    sqlite3_int64 size = 0;
    if (sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
        !file || !file->pMethods) {
        throw StoreError(StoreErrorCase::unreadable);
    }
    if (file->pMethods->xFileSize(file, &size) != SQLITE_OK ||
        file->pMethods->xRead(file, header.data(), kHeaderSize, 0) != SQLITE_OK) {
        throw StoreError(StoreErrorCase::notAStore);
    }
    if (!std::equal(kSqliteMagic.begin(), kSqliteMagic.end(), header.begin())) {
        throw StoreError(StoreErrorCase::notAStore);
    }
    // With a journal, pages may still be only there.
    if (!hasJournal()) {
        const auto bigEndian = [&](std::size_t at, std::size_t count) {
            std::int64_t value = 0;
            for (std::size_t i = 0; i < count; ++i) {
                value = value << 8 | header[at + i];
            }
            return value;
        };
        const auto storedPageSize = bigEndian(16, 2);
        const auto pageSize = storedPageSize == 1 ? 65536 : storedPageSize;
        if (size < pageSize * bigEndian(28, 4)) {
            throw StoreError(StoreErrorCase::notAStore, "cut short");
        }
    }
}

void StoreFile::checkVersion(sqlite3* database, const Schema& schema) {
    if (pragma(database, "application_id") != kApplicationID) {
        throw StoreError(StoreErrorCase::notAStore);
    }
    const auto number = pragma(database, "user_version");
    if (number > schema.version.number) {
        throw StoreError(StoreErrorCase::newerVersion);
    }
    if (number < schema.version.number) {
        throw StoreError(StoreErrorCase::olderVersion);
    }
}

} // namespace korvex::store
