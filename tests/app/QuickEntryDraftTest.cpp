#include "app/QuickEntryDraft.h"

#include "app/DraftFolder.h"
#include "support/SmallDisk.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

namespace korvex::app {
namespace {

using model::EntryAttachment;

class QuickEntryDraftTest : public ::testing::Test {
protected:
    static QuickEntryDraft draft(std::string content) { return {.content = std::move(content)}; }
    static EntryAttachment attachment(std::size_t bytes) {
        return {.id = base::Uuid::random(), .filename = "a b", .data = base::Bytes(bytes, 7)};
    }
    /// Of the files that were kept aside, in no order.
    std::vector<std::string> keptAside(const std::string& extension) const {
        std::vector<std::string> contents;
        for (const auto& each : std::filesystem::directory_iterator(path())) {
            const auto name = each.path().filename().string();
            if (name.starts_with("QuickEntry-") && name.ends_with(extension)) {
                std::ifstream kept(each.path());
                contents.emplace_back(std::istreambuf_iterator<char>(kept),
                                      std::istreambuf_iterator<char>());
            }
        }
        return contents;
    }
    QuickEntryDraftFile another() const { return QuickEntryDraftFile({path(), second()}); }

    std::filesystem::path path() const { return DraftFolder::beside(folder / "Primary.store"); }
    std::filesystem::path second() const { return folder / "state"; }

    tests::TemporaryFolder folder;
    QuickEntryDraftFile file = another();
};

TEST_F(QuickEntryDraftTest, WhatIsWrittenIsReadByTheNextProgram) {
    auto written = draft("a \"b\"\nc\té\x01");
    written.schedule = {.dueDate = base::Instant{763286400.123456},
                        .dueStartDate = base::Instant{763286399},
                        .reminderDate = base::Instant{1}};
    written.attachments = {attachment(0), attachment(100'000)};
    EXPECT_FALSE(file.write(written, {5}));
    EXPECT_EQ(another().read(), std::nullopt) << "it belongs to who is typing it";
    DraftFolder drafts{{path(), second()}};
    EXPECT_THAT(drafts.find().drafts, ::testing::IsEmpty()) << "nor do the windows offer it";
    EXPECT_THAT(drafts.find().unreadable, ::testing::IsEmpty());
    EXPECT_TRUE(DraftFolder::areIn(path())) << "yet it shows that a store was here";
    file = another();
    EXPECT_EQ(file.read(), written);

    auto text = draft("b");
    text.type = model::EntryType::text;
    text.heading = richtext::HeadingLevel::level3;
    text.schedule = model::TodoSchedule::dueOn(20300101);
    EXPECT_FALSE(file.write(text, {6}));
    file = another();
    EXPECT_EQ(file.read(), text) << "without the files of before";
    EXPECT_FALSE(file.write(draft(" \n"), {7}));
    EXPECT_FALSE(std::filesystem::exists(path())) << "blanks are no draft";
}

TEST_F(QuickEntryDraftTest, WhatIsNoneIsKeptUnderAnotherName) {
    for (const auto* const contents : {"", "{", "[[[[", "{\"version\":2,\"type\":\"todo\"}"}) {
        std::filesystem::create_directories(path());
        std::ofstream(path() / "QuickEntry.json") << contents;
        EXPECT_EQ(file.read(), std::nullopt) << contents;
        EXPECT_FALSE(std::filesystem::exists(path() / "QuickEntry.lock"));
        EXPECT_FALSE(file.write(draft("a"), {1}));
        EXPECT_THAT(keptAside(".unreadable"), ::testing::Contains(contents));
        file.remove();
    }
    EXPECT_THAT(keptAside(".unreadable"), ::testing::SizeIs(4)) << "none takes another's place";
}

TEST_F(QuickEntryDraftTest, WhatAProgramNeverReadItNeitherRemovesNorOverwrites) {
    auto written = draft("a");
    written.attachments = {attachment(10)};
    EXPECT_FALSE(file.write(written, {1}));
    auto second = another();
    EXPECT_EQ(second.read(), std::nullopt);
    file = another(); // the program that had it ends
    second.remove();
    EXPECT_EQ(file.read(), written);

    file = another();
    EXPECT_FALSE(second.write(draft("b"), {2})) << "in the other folder";
    second = another();
    written.content = "b\na";
    EXPECT_EQ(second.read(), written) << "both are offered";
    EXPECT_FALSE(second.write(draft("c"), {3}));
    EXPECT_TRUE(keptAside(".unreadable").empty()) << "its own is replaced";
    second = another();
    EXPECT_EQ(second.read(), draft("c"));
}

TEST_F(QuickEntryDraftTest, WhatIsLeftIsAddedToWhatStands) {
    auto left = draft(" milk\nbread ");
    left.attachments = {attachment(1), attachment(2)};
    EXPECT_FALSE(file.write(left, {1}));
    file = another();
    auto standing = draft("eggs");
    standing.schedule = model::TodoSchedule::dueOn(20300101);
    standing.attachments = {attachment(3), attachment(4)};
    auto both = standing;
    both.content = "eggs\n milk\nbread ";
    EXPECT_EQ(file.readLeft(standing), both);
    EXPECT_THAT(keptAside(".files"), ::testing::SizeIs(1)) << "four are too many";
    EXPECT_EQ(file.readLeft(both), std::nullopt) << "its own by now";

    // An older state of the same words, which could not be removed, is not offered beside them.
    EXPECT_FALSE(file.write(draft("mil"), {2}));
    EXPECT_FALSE(QuickEntryDraftFile({second()}).write(draft("milk"), {3}));
    file = another();
    EXPECT_EQ(file.read(), draft("milk"));
}

TEST_F(QuickEntryDraftTest, AReadThatFailsForAMomentCostsNoDraft) {
    EXPECT_FALSE(file.write(draft("a"), {1}));
    file = another();
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const auto free = ::dup(0);
    ::close(free);
    auto one = before; // descriptor is left: the lock's
    one.rlim_cur = static_cast<rlim_t>(free) + 1;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &one), 0);
    const auto read = file.read();
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(read, std::nullopt);
    EXPECT_EQ(another().read(), draft("a"));
}

TEST_F(QuickEntryDraftTest, AnotherFolderTakesWhatTheFirstOneDoesNot) {
    std::ofstream(path()) << "no folder";
    EXPECT_FALSE(file.write(draft("a"), {1}));
    EXPECT_TRUE(QuickEntryDraftFile::isIn(second()));
    std::filesystem::remove(path());
    EXPECT_FALSE(file.write(draft("a b"), {2}));
    EXPECT_FALSE(std::filesystem::exists(second()));
    file = another();
    EXPECT_EQ(file.read(), draft("a b"));
}

TEST_F(QuickEntryDraftTest, OnAFullDiskTheWordsOutliveTheFiles) {
    std::filesystem::create_directories(path());
    const auto outcome = tests::onSmallDisk(path(), "256k", [&] {
        QuickEntryDraftFile only({path()});
        auto written = draft("words");
        written.attachments = {attachment(1'000'000)};
        const auto error = only.write(written, {1});
        only = QuickEntryDraftFile({path()});
        if (error != std::errc::no_space_on_device || only.read() != draft("words")) {
            return 1;
        }
        // Nor does what does not fit cost what is there already.
        const auto more = only.write(draft(std::string(1'000'000, 'a')), {2});
        only = QuickEntryDraftFile({path()});
        if (more != std::errc::no_space_on_device || only.read() != draft("words")) {
            return 2;
        }
        auto kept = draft("more words");
        kept.attachments = {attachment(10'000)};
        if (only.write(kept, {3})) {
            return 3;
        }
        auto both = kept;
        both.attachments.push_back(attachment(1'000'000));
        both.content = kept.content = "yet more words";
        const auto second = only.write(both, {4});
        only = QuickEntryDraftFile({path()});
        return second == std::errc::no_space_on_device && only.read() == kept ? 0 : 4;
    });
    if (!outcome) {
        GTEST_SKIP() << "nothing can be mounted here";
    }
    EXPECT_EQ(*outcome, 0);
}

TEST_F(QuickEntryDraftTest, AKilledProgramLeavesTheLastDraftThatItWroteWhole) {
    const auto files = std::vector{attachment(10'000)};
    const auto of = [&](int i) { return i % 3 == 0 ? files : std::vector<EntryAttachment>(); };
    int lastRead = 0;
    for (int round = 0; round < 8; ++round) {
        int pipe[2];
        ASSERT_EQ(::pipe(pipe), 0);
        const auto child = ::fork();
        if (child == 0) {
            auto mine = another();
            static_cast<void>(mine.read()); // what the former one left
            for (int i = 1;; ++i) {
                auto typed = draft(std::to_string(i));
                typed.attachments = of(i);
                if (mine.write(typed, {static_cast<double>(i)}) ||
                    ::write(pipe[1], &i, sizeof i) != sizeof i) {
                    ::_exit(1);
                }
            }
        }
        ::close(pipe[1]);
        int acknowledged = 0;
        for (int seen = 0; seen <= round && ::read(pipe[0], &acknowledged, sizeof acknowledged) > 0;
             ++seen) {
        }
        ::usleep(static_cast<useconds_t>(round * 241));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        while (::read(pipe[0], &acknowledged, sizeof acknowledged) > 0) {
        }
        ::close(pipe[0]);

        const auto left = another().read();
        ASSERT_TRUE(left) << round;
        lastRead = std::stoi(left->content);
        EXPECT_GE(lastRead, acknowledged);
        EXPECT_LE(lastRead, acknowledged + 1);
        EXPECT_THAT(left->attachments, ::testing::AnyOf(of(lastRead), of(lastRead + 1)));
    }
    EXPECT_GT(lastRead, 0);
}

} // namespace
} // namespace korvex::app
