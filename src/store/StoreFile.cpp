#include "store/StoreFile.h"

#include "base/FileReplacement.h"
#include "base/Uuid.h"
#include "store/OlderTable.h"
#include "store/Statement.h"
#include "store/StoreError.h"
#include "store/StoreLock.h"
#include "store/TableSql.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <optional>

namespace korvex::store {

namespace {

void check(std::error_code failure) {
    if (failure) {
        throwSystemError(failure.value());
    }
}

/// 0 where there is none.
std::uintmax_t sizeOf(const std::filesystem::path& file) {
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 ? static_cast<std::uintmax_t>(status.st_size) : 0;
}

/// What cannot be removed now is left for the next time.
void removeFiles(const std::filesystem::path& directory,
                 const std::function<bool(const std::string& name)>& isMeant) {
    std::error_code ignored;
    for (std::filesystem::directory_iterator at(directory, ignored), end; !ignored && at != end;
         at.increment(ignored)) {
        if (isMeant(at->path().filename().string())) {
            std::error_code failure;
            std::filesystem::remove(at->path(), failure);
        }
    }
}

/// A path as a URI for SQLite, every byte that is not plainly safe escaped.
std::string uri(const std::filesystem::path& path, std::string_view query) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string uri = "file:";
    for (const auto character : std::filesystem::absolute(path).string()) {
        const auto byte = static_cast<unsigned char>(character);
        const auto isSafe = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
                            (byte >= '0' && byte <= '9') || byte == '/' || byte == '.' ||
                            byte == '-' || byte == '_';
        if (isSafe) {
            uri += character;
        } else {
            uri += '%';
            uri += kDigits[byte >> 4U];
            uri += kDigits[byte & 15U];
        }
    }
    return uri + std::string(query);
}

/// Of whoever copies, for the lock, and then as long again for who does not know it.
constexpr std::chrono::milliseconds kPatience{10'000};

/// Into a new file, which is not synced.
void copyDatabase(sqlite3* database, const std::filesystem::path& copy) {
    const SQLite::Database target(copy.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    sqlite3_exec(target.getHandle(), "PRAGMA synchronous = OFF", nullptr, nullptr, nullptr);
    auto* const backup = sqlite3_backup_init(target.getHandle(), "main", database, "main");
    if (!backup) {
        throwSqliteError(target.getHandle(), sqlite3_extended_errcode(target.getHandle()));
    }
    const auto stepped = sqlite3_backup_step(backup, -1);
    const auto code = sqlite3_backup_finish(backup);
    if (stepped != SQLITE_DONE || code != SQLITE_OK) {
        throwSqliteError(nullptr, code != SQLITE_OK ? code : stepped);
    }
}

constexpr std::string_view kStagingMark = ".new-";

} // namespace

std::filesystem::path StoreFile::withSuffix(const char* suffix) const {
    auto path = m_file;
    path += suffix;
    return path;
}

std::filesystem::path StoreFile::directory() const {
    return m_file.has_parent_path() ? m_file.parent_path() : std::filesystem::path(".");
}

bool StoreFile::isThere() const {
    struct stat status {};
    if (::lstat(m_file.c_str(), &status) != 0) {
        // Where a file stands in the place of a folder, there is no store either.
        if (errno == ENOENT || errno == ENOTDIR) {
            return false;
        }
        throw StoreError(StoreErrorCase::unreadable, std::strerror(errno));
    }
    if (S_ISLNK(status.st_mode)) {
        // SQLite would keep the journal beside what it leads to, where nobody else looks for it.
        throw StoreError(StoreErrorCase::symbolicLink);
    }
    if (!S_ISREG(status.st_mode)) {
        throw StoreError(StoreErrorCase::notAStore, "not a regular file");
    }
    if (::access(m_file.c_str(), R_OK) != 0) {
        throw StoreError(StoreErrorCase::unreadable, std::strerror(errno));
    }
    return true;
}

bool StoreFile::isTooShort() const {
    return sizeOf(m_file) < kHeaderBytes;
}

bool StoreFile::exists() const {
    const auto isFile = isThere();
    if (isFile && isTooShort()) {
        throw StoreError(StoreErrorCase::notAStore);
    }
    return isFile;
}

std::uintmax_t StoreFile::journalSize() const {
    return sizeOf(journal());
}

void StoreFile::makeFolder() const {
    if (const auto failure = base::makeFolders(directory(), S_IRWXU)) {
        throw StoreError(StoreErrorCase::noFolder, directory().string() + ": " + failure.message());
    }
}

bool StoreFile::isGone(const StoreLock& lock) const {
    const auto record = lock.record();
    return !exists() && (hasJournal() || (record && record->revision > 0));
}

bool StoreFile::allowsCompanions() const {
    return ::access(directory().c_str(), W_OK) == 0;
}

bool StoreFile::isWritable() const {
    const auto lock = lockFile();
    return allowsCompanions() && ::access(m_file.c_str(), W_OK) == 0 &&
           (::access(lock.c_str(), F_OK) != 0 || ::access(lock.c_str(), W_OK) == 0);
}

void StoreFile::writeEmpty(const std::filesystem::path& file, const Schema& schema) {
    SQLite::Database database(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    database.exec("PRAGMA synchronous = FULL");
    SQLite::Transaction transaction(database);
    database.exec("PRAGMA application_id = " + std::to_string(kApplicationID));
    database.exec("PRAGMA user_version = " + std::to_string(schema.version.number));
    for (const auto& sql : tableSql::createAllStatements(schema.types)) {
        database.exec(sql);
    }
    Statement identify(database.getHandle(), "INSERT INTO StoreInfo(storeID) VALUES(?)");
    const auto storeID = base::Uuid::random();
    identify.bind(0, storeID);
    identify.run();
    transaction.commit();
    database.exec("PRAGMA journal_mode = WAL");
}

void StoreFile::create(const Schema& schema) const {
    createBy([&](const std::filesystem::path& staging) { writeEmpty(staging, schema); });
}

std::filesystem::path StoreFile::stagingName() const {
    return directory() / ("." + m_file.filename().string() + std::string(kStagingMark) +
                          base::Uuid::random().text());
}

std::filesystem::path StoreFile::makeStaging(const Filling& fill) const {
    auto staging = stagingName();
    fill(staging);
    // A person's notes are nobody else's; the journal takes over the file's permissions.
    std::error_code isNew;
    const auto former = std::filesystem::status(m_file, isNew);
    std::filesystem::permissions(staging, std::filesystem::exists(former)
                                              ? former.permissions()
                                              : std::filesystem::perms::owner_read |
                                                    std::filesystem::perms::owner_write);
    StoreFile(staging).sync();
    return staging;
}

void StoreFile::createBy(const Filling& fill) const {
    place(fill,
          [&](const std::filesystem::path& staging) { check(base::moveToNew(staging, m_file)); });
}

void StoreFile::place(const Filling& fill, const Filling& moveIn) const {
    try {
        moveIn(makeStaging(fill));
    } catch (const SQLite::Exception& error) {
        removeStaging();
        throwSqliteError(nullptr, error.getExtendedErrorCode());
    } catch (const std::filesystem::filesystem_error& error) {
        removeStaging();
        throw StoreError(StoreErrorCase::inputOutput, error.code().message());
    } catch (...) {
        removeStaging();
        throw;
    }
}

void StoreFile::moveJournalsTo(const std::filesystem::path& kept) const {
    for (const auto* suffix : kJournals) {
        auto target = kept;
        target += suffix;
        std::error_code isMissing;
        const auto size = std::filesystem::file_size(withSuffix(suffix), isMissing);
        if (!isMissing && size > 0) {
            // For good before another store stands there: it would be taken for that one's.
            check(base::moveFile(withSuffix(suffix), target));
        }
    }
}

void StoreFile::moveJournalsBack(const std::filesystem::path& kept) const noexcept {
    for (const auto* suffix : kJournals) {
        ::rename((kept.native() + suffix).c_str(), (m_file.native() + suffix).c_str());
    }
}

void StoreFile::replaceBy(const Filling& fill, const std::filesystem::path& kept) const {
    place(fill, [&](const std::filesystem::path& staging) {
        // Until it has taken the place, the journals are those of the store that stands there.
        const auto takePlace = [&](const auto& rename) {
            try {
                moveJournalsTo(kept);
                if (rename() != 0) {
                    throwSystemError(errno);
                }
            } catch (...) {
                moveJournalsBack(kept);
                throw;
            }
            check(base::syncFolder(directory()));
        };
        std::error_code ignored;
        if (std::filesystem::equivalent(kept, m_file, ignored) ||
            ::link(m_file.c_str(), kept.c_str()) == 0) {
            takePlace([&] { return ::rename(staging.c_str(), m_file.c_str()); });
            return;
        }
        if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS) {
            throwSystemError(errno);
        }
        // A file system without links. Under its later name at once: a kill before the exchange
        // leaves a copy too many, a kill after it must not leave the former store as staging.
        check(base::moveToNew(staging, kept));
        auto isExchanged = false;
        try {
            takePlace([&] {
                const auto result =
                    ::renameat2(AT_FDCWD, kept.c_str(), AT_FDCWD, m_file.c_str(), RENAME_EXCHANGE);
                isExchanged = result == 0;
                return result;
            });
        } catch (...) {
            if (!isExchanged) {
                std::filesystem::remove(kept, ignored);
            }
            throw;
        }
    });
}

std::unique_ptr<SQLite::Database> StoreFile::openAlone() const {
    try {
        auto database = std::make_unique<SQLite::Database>(m_file.string(), SQLite::OPEN_READWRITE);
        database->exec("PRAGMA locking_mode = EXCLUSIVE");
        static_cast<void>(database->execAndGet("SELECT count(*) FROM sqlite_schema"));
        return database;
    } catch (const SQLite::Exception&) {
        return nullptr;
    }
}

void StoreFile::copyTo(const std::filesystem::path& copy, const Schema* readBackBy) const {
    if (!exists()) {
        throw StoreError(hasJournal() ? StoreErrorCase::incomplete : StoreErrorCase::missing);
    }
    // Nobody writes meanwhile. Who cannot take the lock is not asked to: nothing may be changed
    // beside a store that is only read.
    std::error_code ignored;
    std::optional<StoreLock> lock;
    if (isWritable() && std::filesystem::exists(lockFile(), ignored)) {
        lock.emplace(lockFile(), kPatience);
    }
    const StoreLock::Guard guard(lock ? &*lock : nullptr);
    try {
        auto database = lock || hasJournal() ? nullptr : openAlone();
        if (!database) {
            database = std::make_unique<SQLite::Database>(readingUri(),
                                                          SQLite::OPEN_READONLY | SQLite::OPEN_URI);
        }
        sqlite3_busy_timeout(database->getHandle(), static_cast<int>(kPatience.count()));
        checkHeader(database->getHandle());
        std::optional<SQLite::Transaction> moment;
        if (readBackBy) {
            moment.emplace(*database);
            // Which begins to read, at one moment for the copy and the comparison.
            static_cast<void>(version(database->getHandle(), *readBackBy));
        }
        StoreFile(copy).createBy([&](const std::filesystem::path& staging) {
            copyDatabase(database->getHandle(), staging);
            if (readBackBy) {
                const SQLite::Database made(uri(staging, "?mode=ro&immutable=1"),
                                            SQLite::OPEN_READONLY | SQLite::OPEN_URI);
                if (countRows(made.getHandle(), *readBackBy) !=
                    countRows(database->getHandle(), *readBackBy)) {
                    throw StoreError(StoreErrorCase::damaged, "the copy differs");
                }
            }
        });
    } catch (const SQLite::Exception& error) {
        throwSqliteError(nullptr, error.getExtendedErrorCode());
    }
}

void StoreFile::sync() const {
    check(base::syncFile(m_file));
}

void StoreFile::removeStaging() const {
    const auto prefix = "." + m_file.filename().string();
    removeFiles(directory(), [&](const std::string& name) {
        return name.starts_with(prefix) && name.find(kStagingMark, prefix.size()) != name.npos;
    });
}

std::string StoreFile::keptPrefix(std::string_view what) const {
    return m_file.filename().string() + "." + std::string(what) + "-";
}

std::filesystem::path StoreFile::keptName(std::string_view what) const {
    for (const auto& each : kept(what)) {
        std::error_code failure;
        if (std::filesystem::equivalent(each, m_file, failure)) {
            return each;
        }
    }
    const auto now = std::time(nullptr);
    std::tm parts{};
    ::gmtime_r(&now, &parts);
    std::array<char, 32> moment{};
    std::strftime(moment.data(), moment.size(), "%Y%m%d-%H%M%S", &parts);
    return directory() / (keptPrefix(what) + moment.data() + "-" + base::Uuid::random().text());
}

std::vector<std::filesystem::path> StoreFile::kept(std::string_view what) const {
    const auto prefix = keptPrefix(what);
    std::vector<std::filesystem::path> files;
    std::error_code ignored;
    for (std::filesystem::directory_iterator at(directory(), ignored), end; !ignored && at != end;
         at.increment(ignored)) {
        if (at->path().filename().string().starts_with(prefix)) {
            files.push_back(at->path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

std::string StoreFile::readingUri() const {
    // Where not even the journal's companions can be made, the file alone opens if it has no
    // journal. Elsewhere it must not: it would be read while a checkpoint writes to it.
    return uri(m_file, hasJournal() || allowsCompanions() ? "?mode=ro" : "?mode=ro&immutable=1");
}

void StoreFile::checkHeader(sqlite3* database) const {
    sqlite3_file* file = nullptr;
    std::array<unsigned char, kHeaderBytes> header{};
    sqlite3_int64 size = 0;
    if (sqlite3_file_control(database, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK ||
        !file || !file->pMethods) {
        throw StoreError(StoreErrorCase::unreadable);
    }
    auto code = file->pMethods->xFileSize(file, &size);
    if (code == SQLITE_OK) {
        code = file->pMethods->xRead(file, header.data(), kHeaderBytes, 0);
    }
    if (code != SQLITE_OK && code != SQLITE_IOERR_SHORT_READ) {
        throwSqliteError(nullptr, code);
    }
    if (!std::equal(kMagic.begin(), kMagic.end(), header.begin())) {
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
            throw StoreError(StoreErrorCase::notAStore);
        }
    }
}

std::int32_t StoreFile::version(sqlite3* database, const Schema& schema) {
    if (pragmaNumber(database, "application_id") != kApplicationID) {
        throw StoreError(StoreErrorCase::notAStore);
    }
    const auto number = static_cast<std::int32_t>(pragmaNumber(database, "user_version"));
    if (number > schema.version.number) {
        throw StoreError(StoreErrorCase::newerVersion);
    }
    if (number < schema.version.number) {
        const auto isOfAVersion =
            std::any_of(schema.history.begin(), schema.history.end(),
                        [&](const SchemaVersion& each) { return each.number == number; });
        if (!isOfAVersion && hasTablesOfAnyVersion(database, schema)) {
            throw StoreError(StoreErrorCase::damaged,
                             "no version has the number " + std::to_string(number));
        }
        static_cast<void>(olderTables(schema, number));
    }
    return number;
}

} // namespace korvex::store
