#include "backup/BackupDocument.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>

namespace korvex::backup {
namespace {

TEST(BackupDocument, ItsSizeIsThatOfNamesContentsTextsAndAttachments) {
    BackupDocument document{.appVersion = "does not count"};
    document.boards = {{.name = "über", .systemIdentifier = "does not count"}}; // 5 bytes
    document.entries = {{.type = "text", .content = "12345678", .richTextData = base::Bytes(100)},
                        {.type = "todo", .content = "1", .attachmentData = base::Bytes(1000)}};
    EXPECT_NO_THROW(document.checkBackupSize(1114));
    for (const std::size_t maximum : {1113, 1000, 113, 100, 12, 4, 0}) {
        EXPECT_THROW(document.checkBackupSize(maximum), BackupError) << maximum;
    }
    EXPECT_NO_THROW(BackupDocument().checkBackupSize(0));
}

TEST(BackupDocument, TheLegacyInboxIsWrittenAsTheInbox) {
    struct Case {
        bool isSystem;
        std::optional<std::string> stored;
        std::optional<std::string> written;
    };
    for (const auto& [isSystem, stored, written] : {
             Case{true, "today", "inbox"},
             Case{true, "inbox", "inbox"},
             Case{true, "Today", "Today"},
             Case{true, std::nullopt, std::nullopt},
             Case{false, "today", "today"},
         }) {
        const model::Board board({.isSystem = isSystem, .systemIdentifier = stored});
        EXPECT_EQ(recordOf(board).systemIdentifier, written) << stored.value_or("none");
    }
}

TEST(BackupDocument, AnEntryIsKeptWithAllItsFields) {
    const auto id = base::Uuid::random();
    const auto board = base::Uuid::random();
    const model::Entry entry({.id = id,
                              .typeRawValue = "todo",
                              .content = "Buy milk",
                              .richTextData = base::Bytes{1},
                              .attachmentData = {.bytes = base::Bytes{2, 3}},
                              .createdAt = {1},
                              .updatedAt = {2},
                              .sortOrder = 3,
                              .isCompleted = true,
                              .completedAt = base::Instant{4},
                              .dueDay = 5,
                              .dueDate = base::Instant{6},
                              .dueStartDate = base::Instant{7},
                              .reminderDate = base::Instant{8}});
    const BackupDocument::EntryRecord expected{.id = id,
                                               .boardID = board,
                                               .type = "todo",
                                               .content = "Buy milk",
                                               .richTextData = base::Bytes{1},
                                               .createdAt = {1},
                                               .updatedAt = {2},
                                               .sortOrder = 3,
                                               .isCompleted = true,
                                               .completedAt = base::Instant{4},
                                               .dueDay = 5,
                                               .dueDate = base::Instant{6},
                                               .dueStartDate = base::Instant{7},
                                               .reminderDate = base::Instant{8},
                                               .attachmentData = base::Bytes{2, 3}};
    EXPECT_EQ(recordOf(entry, board), expected);
}

} // namespace
} // namespace korvex::backup
