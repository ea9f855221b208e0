#include "backup/BackupDocument.h"

#include <utility>

namespace korvex::backup {

std::string descriptionOf(BackupErrorCase which) {
    switch (which) {
    case BackupErrorCase::unsupportedVersion:
        return "This backup uses an unsupported format version.";
    case BackupErrorCase::invalidDocument:
        return "This is not a valid Korvex backup. Your current data has not been changed.";
    case BackupErrorCase::tooLarge:
        return "This dataset exceeds the 512 MB backup limit. Export or recovery cannot continue "
               "until it is smaller. Your current data has not been changed.";
    case BackupErrorCase::pendingChanges:
        return "Save your open edits before restoring a backup.";
    case BackupErrorCase::incompleteRelationships:
        return "Some relationships are still arriving from iCloud. Try exporting again after sync "
               "finishes.";
    case BackupErrorCase::cloudRestoreUnsupported:
        return "Full replacement is unavailable for an iCloud store. Export remains available; "
               "your synchronized data has not been changed.";
    case BackupErrorCase::storeChanged:
        return "Your data changed while the recovery backup was being saved. Nothing was replaced. "
               "Try importing again.";
    }
    return {};
}

std::string domainOf(BackupErrorCase) {
    return "Korvex.Backup";
}

void BackupDocument::checkBackupSize(std::size_t maximumSize) const {
    auto left = maximumSize;
    const auto take = [&left](std::size_t bytes) {
        if (bytes > left) {
            throw BackupError(BackupErrorCase::tooLarge);
        }
        left -= bytes;
    };
    for (const auto& board : boards) {
        take(board.name.size());
    }
    for (const auto& entry : entries) {
        take(entry.content.size());
        take(entry.richTextData ? entry.richTextData->size() : 0);
        take(entry.attachmentData ? entry.attachmentData->size() : 0);
    }
}

BackupDocument::BoardRecord recordOf(const model::Board& board) {
    auto identifier = board.systemIdentifier();
    if (board.isSystem() && identifier == model::kLegacyInboxIdentifier) {
        identifier = model::kInboxIdentifier;
    }
    return {.id = board.id(),
            .name = board.name(),
            .createdAt = board.createdAt(),
            .updatedAt = board.updatedAt(),
            .sortOrder = board.sortOrder(),
            .isSystem = board.isSystem(),
            .systemIdentifier = std::move(identifier),
            .icon = board.icon(),
            .iconColor = board.iconColor(),
            .isArchived = board.isArchived()};
}

BackupDocument::EntryRecord recordOf(const model::Entry& entry, const base::Uuid& board) {
    return {.id = entry.id(),
            .boardID = board,
            .type = std::string(model::rawValue(entry.type())),
            .content = entry.content(),
            .richTextData = entry.richTextData(),
            .createdAt = entry.createdAt(),
            .updatedAt = entry.updatedAt(),
            .sortOrder = entry.sortOrder(),
            .isCompleted = entry.isCompleted(),
            .completedAt = entry.completedAt(),
            .dueDay = entry.dueDay(),
            .dueDate = entry.dueDate(),
            .dueStartDate = entry.dueStartDate(),
            .reminderDate = entry.reminderDate(),
            .attachmentData = entry.attachmentData()};
}

model::EntryFields fieldsOf(BackupDocument::EntryRecord record) {
    return {.id = record.id,
            .typeRawValue = std::move(record.type),
            .content = std::move(record.content),
            .richTextData = std::move(record.richTextData),
            .attachmentData = {.isRead = true, .bytes = std::move(record.attachmentData)},
            .createdAt = record.createdAt,
            .updatedAt = record.updatedAt,
            .sortOrder = record.sortOrder,
            .isCompleted = record.isCompleted,
            .completedAt = record.completedAt,
            .dueDay = record.dueDay,
            .dueDate = record.dueDate,
            .dueStartDate = record.dueStartDate,
            .reminderDate = record.reminderDate};
}

} // namespace korvex::backup
