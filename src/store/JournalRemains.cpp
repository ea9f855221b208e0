#include "store/JournalRemains.h"

#include "base/CountText.h"
#include "base/FileDescriptor.h"
#include "base/FileReplacement.h"
#include "store/Statement.h"
#include "store/StoreError.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <fcntl.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <vector>

namespace korvex::store {

namespace {

/// Of a copy, in one go.
constexpr std::size_t kPiece = 1 << 20;

std::filesystem::path keptName(const StoreFile& file, std::int64_t revision) {
    auto name = file.path();
    return name += ".journal-before-" + std::to_string(revision);
}

/// All that the disk gives of the journal or nothing; what was kept of that revision before is more
/// than there is now.
std::error_code keepJournal(const StoreFile& file, const std::filesystem::path& name) {
    std::error_code failure;
    if (std::filesystem::exists(name, failure)) {
        return {};
    }
    const base::FileDescriptor journal(::open(file.journal().c_str(), O_RDONLY | O_CLOEXEC));
    if (!journal.isOpen()) {
        return {errno, std::generic_category()};
    }
    base::StagedFile copy;
    failure = copy.open(name, std::nullopt);
    std::vector<char> piece(kPiece);
    while (!failure) {
        const auto size = ::read(journal.get(), piece.data(), piece.size());
        if (size == 0 || (size < 0 && errno == EIO)) {
            return copy.commit(base::StagedFile::Existing::keep);
        }
        if (size > 0) {
            failure = copy.write({piece.data(), static_cast<std::size_t>(size)});
        } else if (errno != EINTR) {
            failure = {errno, std::generic_category()};
        }
    }
    return failure;
}

/// Throws StoreError where that fails.
std::filesystem::path keepRemains(const StoreFile& file, std::int64_t revision) {
    auto name = keptName(file, revision);
    if (const auto failure = keepJournal(file, name)) {
        throwSystemError(failure.value(), "what is left of the journal cannot be kept as " +
                                              name.filename().string());
    }
    return name;
}

} // namespace

StoreLock::Record newestOf(sqlite3* database) {
    StoreLock::Record found;
    Statement identity(database, "SELECT storeID FROM StoreInfo");
    while (identity.step()) {
        found.storeID = identity.uuid(0);
    }
    Statement newest(database, "SELECT ifnull(max(revision), 0) FROM ChangeLog");
    while (newest.step()) {
        found.revision = newest.integer(0);
    }
    return found;
}

std::optional<MissingChanges> missingChanges(const StoreLock::Record& found,
                                             const StoreLock& lock) {
    const auto record = lock.record();
    if (!record || record->storeID != found.storeID || record->revision <= found.revision) {
        return std::nullopt;
    }
    const auto count = record->revision - found.revision;
    return MissingChanges{
        .recorded = record->revision,
        .notice = (count == 1 ? std::string("The newest saved change is")
                              : "The newest " + base::numberText(static_cast<std::size_t>(count)) +
                                    " saved changes are") +
                  " missing: the store's journal was cut or removed outside Korvex."};
}

std::optional<MissingChanges> findMissingChanges(const StoreLock::Record& found,
                                                 const StoreFile& file, const StoreLock& lock) {
    auto missing = missingChanges(found, lock);
    if (missing && file.hasJournal()) {
        const auto kept = keepRemains(file, missing->recorded);
        missing->notice +=
            " What is left of the journal was kept as " + kept.filename().string() + ".";
    }
    return missing;
}

std::optional<MissingChanges> findMissingChanges(const StoreFile& file, const StoreLock& lock) {
    if (file.isTooShort()) {
        return std::nullopt;
    }
    auto isOpen = false;
    const auto found = [&]() -> std::optional<StoreLock::Record> {
        try {
            const SQLite::Database database(file.path().string(), SQLite::OPEN_READWRITE);
            // To close it must not move the journal into the file, and remove it.
            sqlite3_db_config(database.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
            Statement look(database.getHandle(), "PRAGMA schema_version");
            while (look.step()) {
                isOpen = true;
            }
            return newestOf(database.getHandle());
        } catch (const SQLite::Exception&) {
            return std::nullopt;
        } catch (const StoreError& error) {
            // The last is said of a column under another name.
            if (!isDamage(error) && error.which() != StoreErrorCase::other) {
                throw;
            }
            return std::nullopt;
        }
    }();
    if (found) {
        return findMissingChanges(*found, file, lock);
    }
    if (isOpen && file.hasJournal()) {
        const auto record = lock.record();
        keepRemains(file, record ? record->revision : 0);
    }
    return std::nullopt;
}

} // namespace korvex::store
