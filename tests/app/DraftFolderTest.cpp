#include "app/DraftFolder.h"

#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <atomic>
#include <fstream>
#include <thread>

namespace korvex::app {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class DraftFolderTest : public ::testing::Test {
protected:
    static Draft draft(double typedAt, std::string content) {
        return {.id = base::Uuid::random(),
                .board = base::Uuid::random(),
                .typedAt = {typedAt},
                .content = std::move(content)};
    }
    void put(const std::string& name, const std::string& contents) {
        std::filesystem::create_directories(path());
        std::ofstream(path() / name, std::ios::binary) << contents;
    }
    std::filesystem::path path() const { return DraftFolder::beside(folder / "Primary.store"); }

    std::filesystem::path second() const {
        return DraftFolder::in(folder / "state", folder / "Primary.store");
    }

    tests::TemporaryFolder folder;
    DraftFolder drafts{{path(), second()}};
};

TEST_F(DraftFolderTest, WhatIsWrittenIsFoundUntilItIsRemoved) {
    auto todo = draft(2, "a \"b\"\nc\té\x01");
    auto text = draft(1, "formatted");
    text.type = model::EntryType::text;
    text.richTextData = base::Bytes{0, 1, 254, 255};
    text.edited = {base::Uuid::random(), {763286400.123456}};
    text.after = base::Uuid::random();
    EXPECT_THAT(drafts.find().drafts, IsEmpty());
    EXPECT_FALSE(drafts.write(todo));
    EXPECT_FALSE(drafts.write(text));
    EXPECT_THAT(drafts.find().drafts, ElementsAre(text, todo)) << "the oldest first";
    todo.content = "more";
    EXPECT_FALSE(drafts.write(todo));
    EXPECT_THAT(drafts.find().drafts, ElementsAre(text, todo)) << "one file for one editor";
    drafts.remove(text.id);
    drafts.remove(text.id);
    EXPECT_THAT(drafts.find().drafts, ElementsAre(todo));
    drafts.remove(todo.id);
    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(DraftFolderTest, WhatALivingProgramHasIsNotFoundByOthers) {
    DraftFolder other{{path(), second()}};
    const auto todo = draft(1, "a");
    EXPECT_FALSE(drafts.write(todo));
    EXPECT_THAT(other.find().drafts, IsEmpty());
    auto more = todo;
    more.content = "a b";
    EXPECT_FALSE(drafts.write(more));
    EXPECT_THAT(other.find().drafts, IsEmpty()) << "also once it was replaced";
    drafts = DraftFolder{{path(), second()}}; // as when its program ends
    EXPECT_THAT(other.find().drafts, ElementsAre(more));
    EXPECT_THAT(drafts.find().drafts, IsEmpty()) << "whoever offers it has it";
    other.remove(more.id);
    EXPECT_FALSE(std::filesystem::exists(path()));

    put(base::Uuid::random().text() + ".lock", "of a program that was killed before it wrote");
    EXPECT_THAT(other.find().drafts, IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(DraftFolderTest, AFileNeverBelongsToTwoHoweverOftenItChangesHands) {
    using enum FileClaims::Claim;
    std::atomic<int> shared = 0;
    const auto claimAndRelease = [&, file = folder / "a.draft"] {
        FileClaims claims; // as another program's
        for (int i = 0; i < 5'000; ++i) {
            if (claims.claim(file) == ours) {
                shared += FileClaims().claim(file) == theirs ? 0 : 1;
                claims.release(file);
            }
        }
    };
    for (std::vector<std::jthread> programs; programs.size() < 4;) {
        programs.emplace_back(claimAndRelease);
    }
    EXPECT_EQ(shared, 0);
}

TEST_F(DraftFolderTest, WhereTheDiskTakesNothingTheStateFolderDoes) {
    auto todo = draft(1, "before");
    EXPECT_FALSE(drafts.write(todo));
    // A folder in the place of its file is refused, whoever asks.
    std::filesystem::remove(path() / (todo.id.text() + ".draft"));
    std::filesystem::create_directories(path() / (todo.id.text() + ".draft") / "x");
    todo.content = "more";
    EXPECT_FALSE(drafts.write(todo));
    EXPECT_THAT(drafts.find().drafts, ElementsAre(todo));
    EXPECT_TRUE(std::filesystem::exists(second()));

    std::filesystem::remove_all(path());
    put(todo.id.text() + ".draft", R"({"version": 1, "type": "todo", "typedAt": 0, "content": "old",
        "board": "00000000-0000-0000-0000-000000000001"})");
    EXPECT_THAT(drafts.find().drafts, ElementsAre(todo)) << "the newest of both";
    todo.content = "most";
    EXPECT_FALSE(drafts.write(todo));
    EXPECT_FALSE(std::filesystem::exists(second())) << "and one again, once there is room";
    EXPECT_THAT(drafts.find().drafts, ElementsAre(todo));
}

TEST_F(DraftFolderTest, FormatsMakeRoomForTheWords) {
    auto text = draft(1, "words");
    text.richTextData = base::Bytes(DraftFolder::kMaximumFileBytes);
    EXPECT_FALSE(drafts.write(text));
    text.richTextData.reset();
    EXPECT_THAT(drafts.find().drafts, ElementsAre(text));
}

TEST_F(DraftFolderTest, WhatIsNoDraftIsToldAndStays) {
    const auto name = [] { return base::Uuid::random().text() + ".draft"; };
    const std::string board = R"("board": "00000000-0000-0000-0000-000000000001")";
    put("notes.draft", "{}");
    put(name(), "");
    put(name(), std::string(100'000, '['));
    put(name(), R"({"version": 1, "type": "todo", "typedAt": 1, "content": "no board"})");
    put(name(),
        R"({"version": 2, "type": "todo", "typedAt": 1, "content": "newer", )" + board + "}");
    put(name(), std::string(DraftFolder::kMaximumFileBytes + 1, ' '));
    std::filesystem::create_directories(path() / name());
    put(name() + ".Ab12Cd", "half a file of a program that was killed");
    const auto found = drafts.find();
    EXPECT_THAT(found.drafts, IsEmpty());
    EXPECT_THAT(found.unreadable, SizeIs(7));
    EXPECT_TRUE(std::filesystem::exists(path() / "notes.draft"));
    put(name(), R"({"version": 1, "type": "todo", "typedAt": 1, "content": "x", "new": [], )" +
                    board + "}");
    EXPECT_THAT(drafts.find().drafts, SizeIs(1));
}

TEST_F(DraftFolderTest, AFolderThatCannotBeWrittenIsAnError) {
    put("x", "");
    std::filesystem::remove_all(path());
    std::ofstream(path(), std::ios::binary) << "a file in its place";
    DraftFolder only{{path()}};
    EXPECT_TRUE(only.write(draft(1, "kept in the editor")));
    EXPECT_THAT(only.find().drafts, IsEmpty());
}

} // namespace
} // namespace korvex::app
