#pragma once

#include "base/Bytes.h"
#include "base/Calendar.h"
#include "base/Error.h"
#include "base/Instant.h"
#include "base/Log.h"
#include "base/Uuid.h"
#include "model/Board.h"
#include "model/Entry.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace korvex::backup {

enum class BackupErrorCase {
    unsupportedVersion,
    invalidDocument,
    tooLarge,
    pendingChanges,
    incompleteRelationships,
    cloudRestoreUnsupported,
    storeChanged,
};
std::string descriptionOf(BackupErrorCase which);
std::string domainOf(BackupErrorCase which);
using BackupError = base::TypedError<BackupErrorCase>;

/// Every board and every entry of a store as one value, with formatted text and attachments in it.
/// A plain value that can hold anything; `validate` says whether it may become a store.
struct BackupDocument {
    static constexpr std::int64_t kOldestVersion = 1;
    static constexpr std::int64_t kVersion = 7;
    static constexpr std::size_t kMaximumBytes = 536'870'912;

    struct BoardRecord {
        base::Uuid id;
        std::string name;
        base::Instant createdAt;
        base::Instant updatedAt;
        std::int64_t sortOrder = 0;
        bool isSystem = false;
        std::optional<std::string> systemIdentifier;
        std::optional<std::string> icon;
        std::optional<std::string> iconColor;
        /// Documents of older versions leave it out, which means no.
        std::optional<bool> isArchived;

        bool operator==(const BoardRecord&) const = default;
    };

    struct EntryRecord {
        base::Uuid id;
        base::Uuid boardID;
        std::string type;
        std::string content;
        std::optional<base::Bytes> richTextData;
        base::Instant createdAt;
        base::Instant updatedAt;
        std::int64_t sortOrder = 0;
        bool isCompleted = false;
        std::optional<base::Instant> completedAt;
        std::optional<base::DayNumber> dueDay;
        std::optional<base::Instant> dueDate;
        std::optional<base::Instant> dueStartDate;
        std::optional<base::Instant> reminderDate;
        std::optional<base::Bytes> attachmentData;

        bool operator==(const EntryRecord&) const = default;
    };

    std::int64_t schemaVersion = kVersion;
    base::Instant exportedAt;
    std::string appVersion;
    std::vector<BoardRecord> boards;
    std::vector<EntryRecord> entries;

    bool operator==(const BackupDocument&) const = default;

    /// Throws `tooLarge` as soon as names, contents, formatted texts and attachments come to more
    /// than `maximumSize` bytes: told before the larger encoded form is made.
    void checkBackupSize(std::size_t maximumSize) const;
};

/// A board as a backup keeps it; the legacy identifier of the Inbox is replaced.
BackupDocument::BoardRecord recordOf(const model::Board& board);
/// An entry as a backup keeps it. Reads its attachments (throws StoreError); `board` is where it
/// stands.
BackupDocument::EntryRecord recordOf(const model::Entry& entry, const base::Uuid& board);

/// The fields of an entry from such a record, on no board yet.
model::EntryFields fieldsOf(BackupDocument::EntryRecord record);

/// Whether the document may become a store: throws `unsupportedVersion` or `invalidDocument`.
/// Formatted text is only decoded where it is all that an entry has. `log` is told what the
/// serializer makes of it.
void validate(const BackupDocument& document, base::LogSink& log);

} // namespace korvex::backup
