#include "app/QuickEntryState.h"

#include "app/DraftFolder.h"
#include "app/SettingsFile.h"
#include "services/ServiceFixture.h"
#include "support/FakeClock.h"
#include "support/FakeRunLoop.h"
#include "support/SmallDisk.h"

#include <gmock/gmock.h>

#include <fstream>
#include <stdexcept>
#include <thread>

namespace korvex::app {
namespace {

using model::EntryAttachment;
using model::EntryType;
using richtext::HeadingLevel;
using ::testing::ElementsAre;
using ::testing::SizeIs;

class QuickEntryStateTest : public tests::ServiceFixture {
protected:
    void SetUp() override {
        ServiceFixture::SetUp();
        boards->initializeDefaultBoards(kNow);
        inbox = boards->inboxBoard();
        state = makeState();
    }

    std::unique_ptr<QuickEntryState> makeState() {
        return std::make_unique<QuickEntryState>(
            QuickEntryState::Surroundings{.context = *context,
                                          .preferences = preferences,
                                          .reminders = reminders,
                                          .widgets = widgets,
                                          .draftFile = draftFile,
                                          .runLoop = runLoop,
                                          .clock = clock,
                                          .log = log,
                                          .inBackground =
                                              [this](auto work) {
                                                  if (isWithoutThreads) {
                                                      throw std::runtime_error("no thread");
                                                  }
                                                  background.push_back(std::move(work));
                                              },
                                          .isUsersOwn = isUsersOwn});
    }
    void runThreads() {
        for (const auto& work : std::exchange(background, {})) {
            std::thread(work).join();
        }
    }
    void runBackground() {
        runThreads();
        runLoop.runPosted();
    }
    /// What another program types that does not end.
    QuickEntryDraftFile leftBy(const QuickEntryDraft& draft) {
        QuickEntryDraftFile theirs({DraftFolder::beside(folder / "Primary.store")});
        EXPECT_FALSE(theirs.write(draft, clock.now()));
        return theirs;
    }
    std::filesystem::path file(const std::string& name) {
        std::ofstream(folder / name) << "contents of " << name;
        return folder / name;
    }
    std::vector<model::Entry*> entriesOf(const model::Board& of) {
        auto all = context->find<model::Board>(of.id())->entries();
        std::sort(all.begin(), all.end(), [](const auto* left, const auto* right) {
            return services::ordered(*left, *right);
        });
        return all;
    }

    tests::SettingsFile settings;
    FileUserDefaults defaults = settings.open();
    AppPreferences preferences{defaults, log};
    tests::FakeRunLoop runLoop;
    tests::FakeClock clock{{2000}};
    QuickEntryDraftFile draftFile{{DraftFolder::beside(folder / "Primary.store")}};
    std::vector<std::function<void()>> background;
    bool isWithoutThreads = false;
    bool isUsersOwn = true;
    model::Board* inbox = nullptr;
    std::unique_ptr<QuickEntryState> state;
};

TEST_F(QuickEntryStateTest, EachLineThatIsNotBlankBecomesATodoWithTheSchedule) {
    const model::TodoSchedule schedule{.dueDate = base::Instant{9000},
                                       .reminderDate = base::Instant{5400}};
    state->prepare();
    EXPECT_EQ(state->selectedBoardID(), inbox->id());
    state->setSelectedBoardID(board->id());
    state->setContent("  milk \t\n \t \n\r\nold \v bread\xE2\x80\xA8"
                      "eggs\r\n");
    EXPECT_THAT(state->todoContents(), ElementsAre("milk", "old", "bread", "eggs"));
    state->setSchedule(schedule);
    const auto revision = state->draftRevision();
    ASSERT_TRUE(state->save());
    EXPECT_THAT(texts(entriesOf(*board)), ElementsAre("milk", "old", "bread", "eggs"));
    for (const auto* todo : entriesOf(*board)) {
        EXPECT_EQ(todo->type(), EntryType::todo);
        EXPECT_EQ(todo->schedule(), schedule);
        EXPECT_EQ(todo->createdAt(), clock.now());
    }
    EXPECT_EQ(reminders.reconciles, 1);
    EXPECT_EQ(preferences.quickEntryDefaultBoardID(), board->id());
    EXPECT_EQ(state->selectedBoardID(), board->id());
    EXPECT_NE(state->draftRevision(), revision);
    EXPECT_EQ(state->content(), "");
    EXPECT_TRUE(state->schedule().isEmpty());

    state->setContent(" \n\t\n");
    EXPECT_FALSE(state->save());
    EXPECT_EQ(state->errorMessage(), std::nullopt);
    EXPECT_EQ(state->content(), " \n\t\n");
    EXPECT_THAT(entriesOf(*board), SizeIs(4));
}

TEST_F(QuickEntryStateTest, ATextIsStoredWhole) {
    log.expectError("Quick Entry failed: Korvex.EntryService (7)");
    preferences.setQuickEntryDefaultType(EntryType::text);
    state->prepare();
    EXPECT_EQ(state->entryType(), EntryType::text);
    state->setContent("A plan\nof two lines");
    state->setHeading(HeadingLevel::level2);
    state->attachFiles({file("a.txt")});
    runBackground();
    EXPECT_FALSE(state->save());
    EXPECT_EQ(state->errorMessage(),
              descriptionOf(model::EntryServiceErrorCase::headingAttachments));
    EXPECT_THAT(state->attachments(), SizeIs(1)) << "the draft is as it was";
    state->removeAttachment(state->attachments().front().id);
    ASSERT_TRUE(state->save());
    EXPECT_EQ(state->entryType(), EntryType::text) << "the type stays";

    state->setContent("With a file");
    state->attach({{.id = base::Uuid::random(), .filename = "b", .data = {1, 2}}});
    ASSERT_TRUE(state->save());
    const auto all = entriesOf(*inbox);
    ASSERT_THAT(texts(all), ElementsAre("A plan\nof two lines", "With a file"));
    const richtext::RichTextSerializer serializer(log);
    EXPECT_EQ(richtext::RichTextSerializer::headingLevel(
                  serializer.richText(all[0]->richTextData(), all[0]->content())),
              HeadingLevel::level2);
    EXPECT_EQ(EntryAttachment::decode(all[1]->attachmentData()).front().filename, "b");
}

TEST_F(QuickEntryStateTest, TheDestinationIsTheFixedThenTheLastThenTheDefaultBoard) {
    auto& fixed = boards->createBoard("Fixed", kNow);
    auto& last = boards->createBoard("Last", kNow);
    preferences.setQuickEntryFixedBoardID(fixed.id());
    preferences.setQuickEntryDefaultBoardID(last.id());
    preferences.setDefaultBoardID(board->id());
    const auto prepared = [&] {
        state->prepare();
        return *state->selectedBoardID();
    };
    EXPECT_EQ(prepared(), fixed.id());
    boards->setArchived(true, fixed, kNow);
    EXPECT_EQ(prepared(), last.id());
    boards->deleteBoard(last);
    EXPECT_EQ(prepared(), board->id());
    EXPECT_EQ(log.count("Missing Quick Entry board"), 0U);

    // Another program deletes what is chosen, while the panel is open.
    {
        store::ModelContext other(*container);
        services::BoardService(other, reminders, widgets, log)
            .deleteBoard(*other.find<model::Board>(board->id()));
    }
    state->setContent("milk");
    ASSERT_TRUE(state->save());
    EXPECT_EQ(log.count("Missing Quick Entry board; selecting fallback"), 1U);
    EXPECT_THAT(texts(entriesOf(*inbox)), ElementsAre("milk"));

    int changes = 0;
    const auto changed = state->didChange().connect([&] { ++changes; });
    state->resolveBoard();
    EXPECT_EQ(changes, 0) << "only where it is another one";

    log.expectError("Quick Entry failed: ");
    SQLite::Database((folder / "Primary.store").string(), SQLite::OPEN_READWRITE)
        .exec("ALTER TABLE ChangeLog RENAME TO Gone");
    EXPECT_THAT(state->boards(), SizeIs(0));
    state->resolveBoard();
    EXPECT_EQ(state->selectedBoardID(), inbox->id()) << "it was not seen to be gone";
}

TEST_F(QuickEntryStateTest, WithoutABoardNothingIsLost) {
    state->setContent("milk");
    state->resolveBoard({});
    EXPECT_EQ(state->selectedBoardID(), std::nullopt);
    for (auto* const each : boards->boards()) {
        context->remove(*each);
    }
    context->save();
    EXPECT_FALSE(state->save());
    EXPECT_EQ(state->errorMessage(), "No boards available. Open the main app to create a board.");
    boards->setArchived(true, boards->createBoard("Archive", kNow), kNow);
    EXPECT_FALSE(state->save());
    EXPECT_EQ(state->errorMessage(), "Quick Entry has no destination board");
    EXPECT_EQ(state->content(), "milk");
}

TEST_F(QuickEntryStateTest, FilesAreReadWhileThePanelGoesOn) {
    log.expectError("Quick Entry failed: ");
    state->setContent("milk");
    state->attachFiles({file("a"), file("b")});
    state->attachFiles({file("c")});
    EXPECT_FALSE(state->save());
    EXPECT_EQ(state->errorMessage(), "Wait for the files to finish attaching before saving.");
    EXPECT_EQ(state->content(), "milk");
    runBackground();
    EXPECT_FALSE(state->isAttachingFiles());
    EXPECT_EQ(state->errorMessage(), std::nullopt) << "there is nothing to wait for any more";
    EXPECT_THAT(state->attachments(), SizeIs(3));

    for (const auto& [files, read, refusal] : {
             std::tuple{file("d"), services::AttachmentReader(services::readAttachments),
                        model::AttachmentErrorCase::tooLarge},
             std::tuple{folder / "none", services::AttachmentReader(services::readAttachments),
                        model::AttachmentErrorCase::invalidFile},
             std::tuple{file("e"), services::AttachmentReader([](auto) {
                            throw std::runtime_error("the disk");
                            return std::vector<EntryAttachment>();
                        }),
                        model::AttachmentErrorCase::invalidFile},
         }) {
        bool isShownAttaching = false;
        const auto changed =
            state->didChange().connect([&] { isShownAttaching = state->isAttachingFiles(); });
        state->attachFiles({files}, read);
        EXPECT_TRUE(isShownAttaching);
        runBackground();
        EXPECT_FALSE(isShownAttaching);
        EXPECT_EQ(state->errorMessage(), descriptionOf(refusal));
        EXPECT_THAT(state->attachments(), SizeIs(3));
        EXPECT_FALSE(state->isAttachingFiles());
    }
    state->setContent("milk\nbread");
    EXPECT_FALSE(state->save());
    EXPECT_EQ(state->errorMessage(), "To attach files, add one todo at a time or switch to Text.");
    state->setContent("\n");
    EXPECT_FALSE(state->save());
    EXPECT_EQ(state->errorMessage(), std::nullopt) << "what was refused before is another matter";
    isWithoutThreads = true;
    state->attachFiles({file("f")});
    EXPECT_FALSE(state->isAttachingFiles());
    EXPECT_EQ(state->errorMessage(), descriptionOf(model::AttachmentErrorCase::invalidFile));
    state->prepare();
    EXPECT_TRUE(state->errorMessage()) << "it may have come while the panel was hidden";
    state->forgetError();
    state->setContent("milk");
    ASSERT_TRUE(state->save());
    EXPECT_THAT(EntryAttachment::decode(entriesOf(*inbox).front()->attachmentData()), SizeIs(3));
}

TEST_F(QuickEntryStateTest, FilesForADraftThatWasGivenUpAreNotAddedToTheNext) {
    state->attachFiles({file("a")});
    state->reset();
    EXPECT_FALSE(state->isAttachingFiles());
    state->attachFiles({file("b")});
    runBackground();
    ASSERT_THAT(state->attachments(), SizeIs(1));
    EXPECT_EQ(state->attachments().front().filename, "b");

    // A folder that never answers keeps nothing from being saved.
    state->setContent("milk");
    state->attachFiles({file("c")});
    EXPECT_FALSE(state->save());
    state->cancelAttaching();
    EXPECT_FALSE(state->isAttachingFiles());
    EXPECT_EQ(state->errorMessage(), std::nullopt);
    runBackground();
    EXPECT_THAT(state->attachments(), SizeIs(1));
    EXPECT_TRUE(state->save());

    state->attachFiles({file("d")});
    state.reset();
    runThreads();
    EXPECT_EQ(runLoop.postedCount(), 0U) << "the run loop may be gone as well";
}

TEST_F(QuickEntryStateTest, AStoreThatRefusesCostsNothing) {
    const auto storeFile = folder / "Primary.store";
    const auto away = folder / "away";
    container->setPatience(std::chrono::milliseconds(0));
    std::optional<SQLite::Database> stranger;
    struct Fault {
        const char* name;
        std::function<void()> begin;
        std::function<void()> end;
    };
    for (const auto& [name, begin, end] : {
             Fault{"locked",
                   [&] {
                       stranger.emplace(storeFile.string(), SQLite::OPEN_READWRITE);
                       stranger->exec("BEGIN IMMEDIATE");
                   },
                   [&] { stranger.reset(); }},
             Fault{"gone", [&] { std::filesystem::rename(storeFile, away); },
                   [&] { std::filesystem::rename(away, storeFile); }},
             Fault{"disk", [&] { breakSaves(); }, [&] { mendSaves(); }},
         }) {
        state->prepare();
        state->setContent(name);
        state->setSchedule(model::TodoSchedule::dueOn(20300101));
        begin();
        EXPECT_FALSE(state->save()) << name;
        EXPECT_TRUE(state->errorMessage()) << name;
        EXPECT_EQ(state->content(), name);
        EXPECT_FALSE(state->schedule().isEmpty());
        EXPECT_FALSE(context->hasChanges());
        end();
        EXPECT_TRUE(state->save()) << name << ": " << state->errorMessage().value_or("");
        EXPECT_EQ(state->errorMessage(), std::nullopt);
    }
    EXPECT_THAT(texts(entriesOf(*inbox)), ElementsAre("locked", "gone", "disk"));
    log.expectError("Quick Entry failed: ");
    log.expectError("Entry persistence failed; rolled back");
}

TEST_F(QuickEntryStateTest, AFullDiskCostsNothing) {
    const auto small = folder / "small";
    std::filesystem::create_directory(small);
    const auto outcome = tests::onSmallDisk(small, "2m", [&] {
        container = store::ModelContainer::open(model::currentSchema(),
                                                {.file = small / "Primary.store"}, log);
        context = std::make_unique<store::ModelContext>(*container);
        services::BoardService(*context, reminders, widgets, log).initializeDefaultBoards(kNow);
        draftFile = QuickEntryDraftFile(
            {DraftFolder::beside(small / "Primary.store"), folder / "elsewhere"});
        state = makeState();
        state->prepare();
        state->setContent(std::string(9000, 'a'));
        // Of an attachment without room the words are kept all the same, and without asking for
        // that room again and again.
        draftFile = QuickEntryDraftFile({DraftFolder::beside(small / "Primary.store")});
        state->attach(
            {{.id = base::Uuid::random(), .filename = "a", .data = base::Bytes(3 << 20)}});
        runLoop.advance(QuickEntryState::kDraftDelay.count());
        state->setContent(std::string(9001, 'a'));
        runLoop.advance(QuickEntryState::kDraftDelay.count());
        if (!runLoop.delays().empty() || !QuickEntryDraftFile::isIn(small / "Drafts")) {
            return 5;
        }
        if (state->keepDraft() != std::errc::no_space_on_device) {
            return 6;
        }
        state->reset();
        draftFile = QuickEntryDraftFile(
            {DraftFolder::beside(small / "Primary.store"), folder / "elsewhere"});
        state->setContent(std::string(9000, 'a'));
        const auto filler = (small / "filler").string();
        std::ofstream(filler) << std::string(4 << 20, 'x');
        if (state->save() || !state->errorMessage() || state->content().size() != 9000) {
            return 1;
        }
        if (state->keepDraft() || !QuickEntryDraftFile::isIn(folder / "elsewhere")) {
            return 2;
        }
        std::filesystem::remove(filler);
        if (!state->save() || QuickEntryDraftFile::isIn(folder / "elsewhere")) {
            return 3;
        }
        return entriesOf(*services::BoardService(*context, reminders, widgets, log).inboxBoard())
                           .size() == 1
                   ? 0
                   : 4;
    });
    if (!outcome) {
        GTEST_SKIP() << "nothing can be mounted here";
    }
    EXPECT_EQ(*outcome, 0);
}

TEST_F(QuickEntryStateTest, ADraftOutlivesTheProgramUntilItIsCaptured) {
    preferences.setQuickEntryDefaultType(EntryType::text);
    state->setEntryType(EntryType::todo);
    state->setContent("half a tho");
    state->attach({{.id = base::Uuid::random(), .filename = "a", .data = {1}}});
    state->setSchedule(model::TodoSchedule::dueOn(20300101));
    runLoop.advance(QuickEntryState::kDraftDelay.count());
    EXPECT_TRUE(QuickEntryDraftFile::isIn(folder / "Drafts"));
    state->setContent("half a thought"); // written at the end
    state = nullptr;

    state = makeState();
    state->prepare();
    EXPECT_EQ(state->content(), "half a thought");
    EXPECT_EQ(state->entryType(), EntryType::todo) << "a draft keeps its type";
    EXPECT_EQ(state->schedule(), model::TodoSchedule::dueOn(20300101));
    EXPECT_THAT(state->attachments(), SizeIs(1));
    ASSERT_TRUE(state->save());
    EXPECT_FALSE(std::filesystem::exists(folder / "Drafts"));
    state->prepare();
    EXPECT_EQ(state->entryType(), EntryType::text);

    // One that was left by a program that hung at the last start, and has ended since.
    std::optional theirs = leftBy({.content = "theirs"});
    state->prepare();
    EXPECT_FALSE(state->hasDraft());
    theirs.reset();
    state->prepare();
    EXPECT_EQ(state->content(), "theirs");
    state->reset();
    theirs = leftBy({.content = "our",
                     .schedule = model::TodoSchedule::dueOn(20300102),
                     .attachments = {{.id = base::Uuid::random(), .filename = "a", .data = {1}}}});
    state->prepare();
    state->setContent("not our words");
    theirs.reset();
    EXPECT_FALSE(state->keepDraft());
    EXPECT_EQ(state->content(), "not our words\nour");
    EXPECT_EQ(state->schedule(), model::TodoSchedule::dueOn(20300102));
    EXPECT_THAT(state->attachments(), SizeIs(1));
    state = nullptr;
    state = makeState();
    EXPECT_EQ(state->content(), "not our words\nour");
    state->reset();

    state->setContent("given up");
    runLoop.advance(QuickEntryState::kDraftDelay.count());
    state->reset();
    EXPECT_FALSE(std::filesystem::exists(folder / "Drafts"));
    EXPECT_FALSE(makeState()->hasDraft());
}

TEST_F(QuickEntryStateTest, AnotherStoreForgetsNoBoardOfTheUsersOwn) {
    const auto chosen = base::Uuid::random();
    preferences.setDefaultBoardID(chosen);
    isUsersOwn = false;
    state = makeState();
    state->prepare();
    EXPECT_EQ(state->selectedBoardID(), inbox->id());
    EXPECT_EQ(preferences.defaultBoardID(), chosen);
}

TEST_F(QuickEntryStateTest, ADraftThatCannotBeKeptIsTriedLessAndLessOften) {
    log.expectError("Quick Entry draft not kept: ");
    std::optional theirs = leftBy({.content = "bread"});
    state->setContent("milk");
    runLoop.advance(QuickEntryState::kDraftDelay.count());
    for (const auto pause : {3.0, 6.0, 12.0, 24.0, 48.0, 60.0, 60.0}) {
        EXPECT_THAT(runLoop.delays(), ElementsAre(pause));
        runLoop.advance(pause);
    }
    theirs.reset();
    runLoop.advance(60);
    EXPECT_EQ(state->content(), "milk\nbread");
    EXPECT_THAT(runLoop.delays(), ElementsAre());
}

} // namespace
} // namespace korvex::app
