#include "backup/BackupDocument.h"

#include "base/Text.h"
#include "model/BoardIcon.h"
#include "model/EntryAttachment.h"
#include "richtext/stored/RichTextSerializer.h"

#include <algorithm>
#include <string_view>

namespace korvex::backup {

namespace {

using BoardRecord = BackupDocument::BoardRecord;
using EntryRecord = BackupDocument::EntryRecord;

constexpr std::int64_t kFirstVersionWithAttachments = 3;
constexpr std::int64_t kFirstVersionWithDueStart = 7;

void require(bool holds) {
    if (!holds) {
        throw BackupError(BackupErrorCase::invalidDocument);
    }
}

bool isValidOrAbsent(const std::optional<base::Instant>& instant) {
    return !instant || instant->isValid();
}

/// In ascending order; requires that no two are equal. Sorted and not hashed: whoever makes a file
/// chooses its identifiers.
template <typename Record>
std::vector<base::Uuid> distinctIdentifiers(const std::vector<Record>& records) {
    std::vector<base::Uuid> ids;
    ids.reserve(records.size());
    for (const auto& record : records) {
        ids.push_back(record.id);
    }
    std::sort(ids.begin(), ids.end());
    require(std::adjacent_find(ids.begin(), ids.end()) == ids.end());
    return ids;
}

/// "inbox" or "today", by its field or else by its name; empty when it is neither.
std::string_view systemIdentifier(const BoardRecord& board) {
    if (board.systemIdentifier) {
        const auto isKnown = *board.systemIdentifier == model::kInboxIdentifier ||
                             *board.systemIdentifier == model::kLegacyInboxIdentifier;
        return isKnown ? std::string_view(*board.systemIdentifier) : std::string_view();
    }
    return model::impliedSystemIdentifier(board.name).value_or("");
}

void validateBoard(const BoardRecord& board, std::vector<std::string_view>& systemBoards) {
    require(!base::trimmed(board.name).empty());
    require(board.sortOrder >= 0);
    require(board.createdAt.isValid() && board.updatedAt.isValid());
    require(!board.icon || model::boardIcon(*board.icon));
    require(!board.iconColor || model::boardIconColor(*board.iconColor));
    if (!board.isSystem) {
        require(!board.systemIdentifier);
        return;
    }
    require(!board.isArchived.value_or(false));
    const auto identifier = systemIdentifier(board);
    require(!identifier.empty() &&
            std::find(systemBoards.begin(), systemBoards.end(), identifier) == systemBoards.end());
    systemBoards.push_back(identifier);
}

void requireAttachments(const std::optional<base::Bytes>& data) {
    try {
        static_cast<void>(model::EntryAttachment::decode(data));
    } catch (const base::Error&) {
        require(false);
    }
}

void requireRichText(const base::Bytes& data, const richtext::RichTextSerializer& serializer) {
    try {
        static_cast<void>(serializer.decode(data));
    } catch (const base::Error&) {
        require(false);
    }
}

void validateEntry(const EntryRecord& entry, std::int64_t version,
                   const std::vector<base::Uuid>& boards,
                   const richtext::RichTextSerializer& serializer) {
    const auto isTodo = entry.type == model::rawValue(model::EntryType::todo);
    require(isTodo || entry.type == model::rawValue(model::EntryType::text));
    require(std::binary_search(boards.begin(), boards.end(), entry.boardID));
    require(entry.sortOrder >= 0);
    require(entry.createdAt.isValid() && entry.updatedAt.isValid());
    require(isValidOrAbsent(entry.completedAt));
    require(!entry.dueStartDate || version >= kFirstVersionWithDueStart);
    require(!entry.attachmentData || version >= kFirstVersionWithAttachments);
    require(isTodo || !entry.isCompleted);
    require(entry.isCompleted == entry.completedAt.has_value());
    requireAttachments(entry.attachmentData);
    if (isTodo) {
        require(model::TodoSchedule{.dueDay = entry.dueDay,
                                    .dueDate = entry.dueDate,
                                    .dueStartDate = entry.dueStartDate,
                                    .reminderDate = entry.reminderDate}
                    .isValid());
    }
    // A damaged formatted text costs its formatting; only where there is nothing to fall back on,
    // it would cost the entry.
    if (entry.content.empty() && entry.richTextData) {
        requireRichText(*entry.richTextData, serializer);
    }
}

} // namespace

void validate(const BackupDocument& document, base::LogSink& log) {
    if (document.schemaVersion < BackupDocument::kOldestVersion ||
        document.schemaVersion > BackupDocument::kVersion) {
        throw BackupError(BackupErrorCase::unsupportedVersion);
    }
    require(document.exportedAt.isValid());
    require(!document.appVersion.empty());
    const auto boards = distinctIdentifiers(document.boards);
    distinctIdentifiers(document.entries);
    std::vector<std::string_view> systemBoards;
    for (const auto& board : document.boards) {
        validateBoard(board, systemBoards);
    }
    const richtext::RichTextSerializer serializer(log);
    for (const auto& entry : document.entries) {
        validateEntry(entry, document.schemaVersion, boards, serializer);
    }
}

} // namespace korvex::backup
