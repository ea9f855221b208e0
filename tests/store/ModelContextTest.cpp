#include "StoreFixture.h"

#include <gmock/gmock.h>

namespace korvex::tests {

using model::Board;
using model::Entry;
using store::Condition;
using store::FetchDescriptor;
using store::FieldReference;
using store::ModelContext;
using store::Value;

class ModelContextTest : public StoreFixture {
protected:
    std::vector<std::string> contents(ModelContext& context, const FetchDescriptor& descriptor) {
        std::vector<std::string> result;
        for (const Entry* entry : context.fetch<Entry>(descriptor)) {
            result.push_back(entry->content());
        }
        return result;
    }
};

TEST_F(ModelContextTest, EveryFieldComesBackAsItWasSaved) {
    const auto container = open();
    model::EntryFields fields{
        .id = base::Uuid::random(),
        .typeRawValue = "Todo",
        .content = std::string("caf\xC3\xA9 \0 nul", 12),
        .richTextData = base::Bytes{0, 1, 255},
        .createdAt = {-0.0},
        .updatedAt = base::Instant::distantFuture(),
        .sortOrder = INT64_MIN,
        .isCompleted = true,
        .completedAt = base::Instant{1.5},
        .dueDay = 20250310,
        .dueDate = base::Instant{1e-300},
        .dueStartDate = base::Instant::distantPast(),
    };
    {
        ModelContext context(*container);
        Board& board = addBoard(context, "");
        board.setIcon("folder.fill");
        board.setValue(Board::mergedIntoBoardIDField, fields.id);
        auto entry = std::make_unique<Entry>(fields);
        entry->setBoard(&board);
        entry->setAttachmentData(base::Bytes(70'000, 7));
        context.insert(std::move(entry));
        context.save();
    }
    ModelContext context(*container);
    Entry* entry = context.find<Entry>(fields.id);
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->typeRawValue(), fields.typeRawValue);
    EXPECT_EQ(entry->content(), fields.content);
    EXPECT_EQ(entry->richTextData(), fields.richTextData);
    EXPECT_EQ(entry->attachmentData(), base::Bytes(70'000, 7));
    EXPECT_EQ(entry->createdAt(), fields.createdAt);
    EXPECT_EQ(entry->updatedAt(), fields.updatedAt);
    EXPECT_EQ(entry->sortOrder(), fields.sortOrder);
    EXPECT_TRUE(entry->isCompleted());
    EXPECT_EQ(entry->completedAt(), fields.completedAt);
    EXPECT_EQ(entry->schedule(), (model::TodoSchedule{.dueDay = fields.dueDay,
                                                      .dueDate = fields.dueDate,
                                                      .dueStartDate = fields.dueStartDate}));
    ASSERT_TRUE(entry->board());
    EXPECT_EQ(entry->board()->name(), "");
    EXPECT_EQ(entry->board()->icon(), "folder.fill");
    EXPECT_EQ(entry->board()->mergedIntoBoardID(), fields.id);
    EXPECT_TRUE(container->check().problems.empty());
}

TEST_F(ModelContextTest, RollbackRestoresEveryFieldRelationshipAndDeletion) {
    const auto container = open();
    ModelContext context(*container);
    Board& home = addBoard(context, "Home");
    Board& work = addBoard(context, "Work");
    Entry& moved = addTodo(context, home, "moved");
    Entry& removed = addTodo(context, home, "removed");
    moved.setAttachmentData(base::Bytes{1, 2, 3});
    context.save();
    const auto& fields = Entry::recordType().fields;
    std::vector<Value> before;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        before.push_back(moved.value(i));
    }

    moved.setType(model::EntryType::text);
    moved.setContent("other");
    moved.setRichTextData(base::Bytes{9});
    moved.setAttachmentData(base::Bytes{4});
    moved.forgetAttachmentData();
    EXPECT_EQ(moved.attachmentData(), base::Bytes{4}) << "what is not stored is not forgotten";
    moved.setAttachmentData(std::nullopt);
    moved.setUpdatedAt({5});
    moved.setSortOrder(7);
    moved.setIsCompleted(true);
    moved.setCompletedAt(base::Instant{6});
    moved.setSchedule({.dueDay = 20250310, .reminderDate = base::Instant{7}});
    moved.setBoard(&work);
    context.remove(removed);
    Entry& added = addTodo(context, work, "added");
    EXPECT_TRUE(context.hasChanges());
    EXPECT_THAT(work.entries(), testing::UnorderedElementsAre(&moved, &added));
    EXPECT_THAT(home.entries(), testing::IsEmpty());

    context.rollback();
    EXPECT_FALSE(context.hasChanges());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        EXPECT_EQ(moved.value(i), before[i]) << fields[i].name;
    }
    EXPECT_EQ(moved.board(), &home);
    EXPECT_TRUE(removed.isLive());
    EXPECT_FALSE(added.isLive());
    EXPECT_THAT(home.entries(), testing::UnorderedElementsAre(&moved, &removed));
    EXPECT_THAT(work.entries(), testing::IsEmpty());
}

TEST_F(ModelContextTest, AValueSetBackToWhatIsStoredIsNoChange) {
    const auto container = open();
    ModelContext context(*container);
    Board& board = addBoard(context, "Home");
    context.save();
    const auto revision = container->revision();
    board.setName("House");
    EXPECT_TRUE(context.hasChanges());
    board.setName("Home");
    EXPECT_FALSE(context.hasChanges());
    context.save();
    EXPECT_EQ(container->revision(), revision);
}

TEST_F(ModelContextTest, DeletingABoardDeletesItsEntriesLoadedOrNot) {
    const auto container = open();
    base::Uuid boardID;
    {
        ModelContext context(*container);
        Board& board = addBoard(context, "Home");
        boardID = board.id();
        for (int i = 0; i < 5; ++i) {
            addTodo(context, board, "todo").setAttachmentData(base::Bytes{1});
        }
        addTodo(context, addBoard(context, "Work"), "stays");
        context.save();
    }
    ModelContext context(*container);
    Board* board = context.find<Board>(boardID);
    context.remove(*board);
    EXPECT_EQ(context.count<Entry>(), 1U);
    context.save();
    EXPECT_EQ(ModelContext(*container).count<Entry>(), 1U);
    EXPECT_FALSE(board->isLive());
    EXPECT_TRUE(container->check().problems.empty());
}

TEST_F(ModelContextTest, AFetchSeesPendingChangesAndOthersSeeOnlyWhatIsSaved) {
    const auto container = open();
    ModelContext context(*container);
    Board& board = addBoard(context, "Home");
    Entry& first = addTodo(context, board, "first", 0);
    Entry& second = addTodo(context, board, "second", 1);
    addTodo(context, board, "third", 2);
    context.save();

    second.setIsCompleted(true);
    first.setSortOrder(9);
    addTodo(context, board, "fourth", 5);
    const FetchDescriptor open{.condition = FieldReference{Entry::isCompletedField} ==
                                            Value(std::int64_t{0}),
                               .order = {{Entry::sortOrderField}}};
    EXPECT_THAT(contents(context, open), testing::ElementsAre("third", "fourth", "first"));
    FetchDescriptor two = open;
    two.limit = 2;
    EXPECT_THAT(contents(context, two), testing::ElementsAre("third", "fourth"));
    ModelContext other(*container);
    EXPECT_THAT(contents(other, open), testing::ElementsAre("first", "second", "third"));
    context.save();
    // The other context keeps its own view until it refreshes.
    other.refresh();
    EXPECT_THAT(contents(other, two), testing::ElementsAre("third", "fourth"));
}

TEST_F(ModelContextTest, ConditionsMeanTheSameInTheStoreAndInMemory) {
    const auto container = open();
    ModelContext context(*container);
    Board& board = addBoard(context, "Home");
    std::vector<base::Uuid> ids;
    for (int i = 0; i < 12; ++i) {
        Entry& entry = addTodo(context, board, std::string(1, static_cast<char>('a' + i)), i);
        entry.setIsCompleted(i % 2 == 0);
        if (i % 3 == 0) {
            entry.setSchedule(model::TodoSchedule::dueAt({double(i)}));
        }
        ids.push_back(entry.id());
    }
    const FieldReference due{Entry::dueDateField};
    const FieldReference order{Entry::sortOrderField};
    const FieldReference completed{Entry::isCompletedField};
    const FieldReference content{Entry::contentField};
    const std::vector<Condition> conditions{
        Condition(),
        due > Value(3.0),
        !(due > Value(3.0)),
        due != Value(3.0),
        !(due <= Value(6.0)) && completed == Value(std::int64_t{1}),
        (order < Value(std::int64_t{3})) || (order >= Value(std::int64_t{10})),
        Condition::isAbsent(Entry::dueDateField) && content > Value(std::string("f")),
        !Condition::isPresent(Entry::dueDateField),
        Condition::all({}),
        Condition::any({}),
    };
    std::vector<std::vector<std::string>> pending;
    for (const Condition& condition : conditions) {
        pending.push_back(
            contents(context, {.condition = condition, .order = {{Entry::sortOrderField}}}));
    }
    context.save();
    ModelContext fresh(*container);
    for (std::size_t i = 0; i < conditions.size(); ++i) {
        EXPECT_EQ(contents(fresh, {.condition = conditions[i], .order = {{Entry::sortOrderField}}}),
                  pending[i])
            << "condition " << i;
        EXPECT_EQ(fresh.count<Entry>(conditions[i]), pending[i].size()) << "condition " << i;
    }
}

TEST_F(ModelContextTest, SignalsNameWhatASaveTouchedAfterTheStepEnds) {
    const auto container = open();
    ModelContext context(*container);
    std::vector<store::ChangeSet> seen;
    const auto changes = context.didChange().connect(
        [&](const store::ChangeSet& change) { seen.push_back(change); });
    int saves = 0;
    const auto saved = container->didSave().connect([&](const store::ChangeSet&) { ++saves; });
    base::Uuid id;
    {
        const store::LockedStep outer(context);
        {
            const store::LockedStep inner(context);
            id = addBoard(context, "Home").id();
            context.save();
        }
        EXPECT_TRUE(seen.empty());
    }
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_THAT(seen[0].inserted, testing::ElementsAre(id));
    EXPECT_EQ(saves, 1);
    EXPECT_EQ(seen[0].origin, store::ChangeSet::Origin::thisContext);
}

TEST_F(ModelContextTest, AnIdentifierStandsForOneRecord) {
    const auto container = open();
    ModelContext context(*container);
    const base::Uuid id = addBoard(context, "Home").id();
    EXPECT_THROW(context.insert(std::make_unique<Board>(model::BoardFields{.id = id})),
                 store::StoreError);
    context.save();
    ModelContext other(*container);
    other.insert(std::make_unique<Board>(model::BoardFields{.id = id, .name = "Twin"}));
    EXPECT_THROW(other.save(), store::StoreError);
    EXPECT_TRUE(other.hasChanges());
    other.rollback();
    EXPECT_EQ(other.find<Board>(id)->name(), "Home");
}

TEST_F(ModelContextTest, AStoreInMemoryNeedsNoFile) {
    const auto container =
        store::ModelContainer::open(model::currentSchema(), store::ModelConfiguration{}, log);
    {
        ModelContext context(*container);
        addTodo(context, addBoard(context, "Home"), "todo");
        context.save();
    }
    ModelContext context(*container);
    ASSERT_EQ(context.fetch<Entry>().size(), 1U);
    EXPECT_EQ(context.fetch<Entry>()[0]->board()->name(), "Home");
    EXPECT_TRUE(std::filesystem::is_empty(folder()));
}

} // namespace korvex::tests
