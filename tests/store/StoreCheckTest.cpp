#include "StoreFixture.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <gmock/gmock.h>

namespace korvex::tests {

using model::Board;
using model::Entry;
using store::ModelContext;

/// Changes behind the store's back, as damage on the disk would be.
class StoreCheckTest : public StoreFixture {
protected:
    void SetUp() override {
        container = open();
        ModelContext context(*container);
        Board& board = addBoard(context, "Home");
        for (int i = 0; i < 3; ++i) {
            Entry& entry = addTodo(context, board, "todo " + std::to_string(i), i);
            entry.setAttachmentData(base::Bytes(100, 1));
            ids.push_back(entry.id());
        }
        context.save();
    }

    void startAnew() {
        container.reset();
        for (const auto& each : std::filesystem::directory_iterator(folder())) {
            std::filesystem::remove(each.path());
        }
        ids.clear();
        SetUp();
    }

    std::vector<std::string> problemsAfter(const std::string& sql) {
        SQLite::Database(storeFile().string(), SQLite::OPEN_READWRITE).exec(sql);
        return container->check().problems;
    }

    std::unique_ptr<store::ModelContainer> container;
    std::vector<base::Uuid> ids;
};

TEST_F(StoreCheckTest, EveryAlteredFieldIsReportedWithItsRecord) {
    const char* changes[] = {"content = 'todo X'",     "typeRawValue = 'toda'",
                             "richTextData = x'00'",   "createdAt = 0.5",
                             "updatedAt = 1",          "sortOrder = 3",
                             "isCompleted = 1",        "completedAt = 0",
                             "dueDay = 20250101",      "dueDate = 0",
                             "dueStartDate = 0",       "reminderDate = 0",
                             "checksum = checksum + 1"};
    for (const char* change : changes) {
        const auto problems =
            problemsAfter(std::string("UPDATE Entry SET ") + change + " WHERE content = 'todo 1'");
        ASSERT_EQ(problems.size(), 1U) << change;
        EXPECT_THAT(problems[0], testing::AllOf(testing::HasSubstr(ids[1].text()),
                                                testing::HasSubstr("checksum")))
            << change;
        startAnew();
    }
}

TEST_F(StoreCheckTest, AlteredAttachmentsAndOrphansAreReported) {
    EXPECT_THAT(problemsAfter("UPDATE \"Entry.attachmentData\" SET bytes = zeroblob(100) "
                              "WHERE owner = 1"),
                testing::ElementsAre(testing::HasSubstr("attachmentData differs")));
    EXPECT_THAT(problemsAfter("UPDATE Entry SET board = NULL WHERE content = 'todo 1'"),
                testing::Contains(testing::HasSubstr(ids[1].text() + " belongs to nothing")));
    EXPECT_THAT(problemsAfter("DELETE FROM Board"),
                testing::Contains(testing::HasSubstr("belongs to something that is not there")));
}

} // namespace korvex::tests
