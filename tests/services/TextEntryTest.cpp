#include "TextFixture.h"

#include "richtext/table/RichTextTable.h"
#include "store/StoreError.h"

#include <gmock/gmock.h>

#include <functional>

namespace korvex::tests {

using model::Entry;
using model::EntryServiceErrorCase;
using model::EntryType;
using richtext::AttributedString;
using richtext::RichTextSerializer;
using services::EntryService;
using testing::ElementsAre;
using testing::IsEmpty;

class TextEntryTest : public TextFixture {};

TEST_F(TextEntryTest, ATextKeepsItsFormattingAndStandsWhereItWasPut) {
    const auto todos = add({"a", "b", "done"});
    entries->completeTodo(*todos[2], kNow);
    const auto reconciles = reminders.reconciles;
    Entry& created = entries->createText(
        {.rich = formatted(), .board = *board, .after = todos[0]->id(), .now = kLater});
    EXPECT_EQ(created.type(), EntryType::text);
    EXPECT_EQ(created.content(), "some bold words\nfirst\nsecond");
    EXPECT_TRUE(storedText(created).isEquivalentTo(RichTextSerializer::normalized(formatted())));
    EXPECT_EQ(created.createdAt(), kLater);
    EXPECT_EQ(created.updatedAt(), kLater);
    entries->createText({.rich = plain("first"),
                         .board = *board,
                         .after = todos[1]->id(),
                         .before = todos[0]->id(),
                         .now = kLater});
    note("last");
    EXPECT_THAT(storedOrder(*board),
                ElementsAre("first", "a", "some bold words\nfirst\nsecond", "b", "last", "done"));
    EXPECT_EQ(reminders.reconciles, reconciles) << "no todo changed";
    EXPECT_GT(log.count("Created text entry with identifier "), 0U);
}

TEST_F(TextEntryTest, AppendingATextReadsNoBoard) {
    add({"a", "b"});
    const auto elsewhere = openContainer();
    store::ModelContext theirs(*elsewhere);
    model::Board& same = *theirs.find<model::Board>(board->id());
    EntryService(theirs, reminders, widgets, log)
        .createText({.rich = plain("note"), .board = same, .now = kNow});
    EXPECT_FALSE(same.entriesAreLoaded());
    EXPECT_THAT(storedOrder(*board), ElementsAre("a", "b", "note"));
}

TEST_F(TextEntryTest, WhatMayNotBeATextIsRefusedAndLeavesNothingBehind) {
    const auto todos = add({"a", "done"});
    entries->completeTodo(*todos[1], kNow);
    Entry& kept = entries->createText({.rich = formatted(), .board = *board, .now = kNow});
    const auto before = storedBoard();
    const std::string long10000(10'000, 'x');
    const struct {
        const char* name;
        AttributedString rich;
        std::optional<base::Uuid> after;
        EntryServiceErrorCase expected;
    } cases[] = {
        {"nothing", {}, {}, EntryServiceErrorCase::emptyContent},
        {"white space", plain(" \n\t\n\u2003"), {}, EntryServiceErrorCase::emptyContent},
        {"an empty table",
         richtext::RichTextTable::make(2, 2),
         {},
         EntryServiceErrorCase::emptyContent},
        {"10,001 characters", plain(long10000 + "y"), {}, EntryServiceErrorCase::contentTooLong},
        {"blank, but too long",
         plain(std::string(10'001, ' ')),
         {},
         EntryServiceErrorCase::contentTooLong},
        {"over a mebibyte of text",
         plain(std::string(1'048'577, 'x')),
         {},
         EntryServiceErrorCase::contentTooLong},
        {"over a mebibyte when stored",
         tooLongWhenEncoded(),
         {},
         EntryServiceErrorCase::contentTooLong},
        {"the text is judged before the place",
         {},
         base::Uuid::random(),
         EntryServiceErrorCase::emptyContent},
        {"after nothing known", plain("x"), base::Uuid::random(),
         EntryServiceErrorCase::invalidReorder},
        {"after a completed todo", plain("x"), todos[1]->id(),
         EntryServiceErrorCase::invalidReorder},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(entryRefusal([&] {
                      entries->createText(
                          {.rich = each.rich, .board = *board, .after = each.after, .now = kLater});
                  }),
                  each.expected)
            << each.name;
        if (each.after) {
            continue;
        }
        for (const bool isFirst : {true, false}) {
            EXPECT_EQ(entryRefusal([&] {
                          entries->splitText(kept, isFirst ? each.rich : plain("half"),
                                             isFirst ? plain("half") : each.rich, kLater);
                      }),
                      each.expected)
                << each.name;
        }
        if (each.expected == EntryServiceErrorCase::contentTooLong) {
            EXPECT_EQ(entryRefusal([&] { entries->updateText(kept, each.rich, kLater); }),
                      each.expected)
                << each.name;
        }
    }
    EXPECT_EQ(storedBoard(), before);
    EXPECT_EQ(note(long10000).content(), long10000);
}

TEST_F(TextEntryTest, OnlyATextOfTheStoreCanBeChangedAsOne) {
    Entry& todo = *add({"a"})[0];
    Entry& text = note("b");
    {
        const auto elsewhere = openContainer();
        store::ModelContext theirs(*elsewhere);
        EntryService(theirs, reminders, widgets, log).deleteEntry(*theirs.find<Entry>(text.id()));
    }
    for (Entry* entry : {&todo, &text}) {
        EXPECT_EQ(entryRefusal([&] { entries->updateText(*entry, plain("x"), kLater); }),
                  EntryServiceErrorCase::entryUnavailable);
        EXPECT_EQ(entryRefusal([&] { entries->splitText(*entry, plain("x"), plain("y"), kLater); }),
                  EntryServiceErrorCase::entryUnavailable);
    }
    EXPECT_EQ(entryRefusal([&] { entries->changeType(text, EntryType::todo, kLater); }),
              EntryServiceErrorCase::entryUnavailable);
    EXPECT_EQ(entryRefusal([&] { entries->deleteEntry(text); }),
              EntryServiceErrorCase::entryUnavailable);
    Entry* const both[] = {&todo, &text};
    EXPECT_EQ(entryRefusal([&] { entries->deleteEntries(both); }),
              EntryServiceErrorCase::entryUnavailable);
    EXPECT_THAT(storedOrder(*board), ElementsAre("a"));

    const auto readOnly = openContainer(false);
    store::ModelContext reading(*readOnly);
    EntryService service(reading, reminders, widgets, log);
    model::Board& same = *reading.find<model::Board>(board->id());
    EXPECT_EQ(
        entryRefusal([&] { service.createText({.rich = plain("x"), .board = same, .now = kNow}); }),
        EntryServiceErrorCase::readOnlyStore);
    EXPECT_FALSE(reading.hasChanges());

    boards->deleteBoard(*board);
    EXPECT_EQ(entryRefusal([&] { note("x"); }), EntryServiceErrorCase::entryUnavailable);
    EXPECT_EQ(entryRefusal([&] { entries->deleteEntries(*board); }),
              EntryServiceErrorCase::entryUnavailable);
}

TEST_F(TextEntryTest, AnEditedTextReplacesWhatWasStoredAndAnEmptiedOneGoes) {
    Entry& text = note("draft");
    add({"after"});
    entries->updateText(text, formatted(), kLater);
    EXPECT_EQ(text.content(), "some bold words\nfirst\nsecond");
    EXPECT_TRUE(storedText(text).isEquivalentTo(RichTextSerializer::normalized(formatted())));
    EXPECT_EQ(text.updatedAt(), kLater);
    EXPECT_EQ(text.createdAt(), kNow);
    EXPECT_GT(log.count("Updated text entry with identifier "), 0U);

    entries->updateText(text, plain(" \n "), kLater);
    EXPECT_FALSE(text.isLive());
    EXPECT_THAT(storedOrder(*board), ElementsAre("after"));
    EXPECT_GT(log.count("Deleted entry with identifier "), 0U);
    EXPECT_THAT(reminders.removed, IsEmpty()) << "a text has no reminder";
}

TEST_F(TextEntryTest, SplittingIsOneChangeThatKeepsBothHalves) {
    Entry& text = entries->createText({.rich = formatted(), .board = *board, .now = kNow});
    add({"after"});
    const auto revision = container->revision();
    const auto reconciles = reminders.reconciles;
    const auto whole = RichTextSerializer::normalized(formatted());
    Entry& second =
        entries->splitText(text, whole.slice({0, 7}), whole.slice({7, whole.length() - 7}), kLater);
    EXPECT_EQ(container->revision(), revision + 1);
    EXPECT_THAT(storedOrder(*board), ElementsAre("some bo", "ld words\nfirst\nsecond", "after"));
    EXPECT_TRUE(storedText(text).attributesAt(5).font.isBold);
    EXPECT_TRUE(storedText(second).attributesAt(0).font.isBold);
    EXPECT_EQ(storedText(second).styleAt(10).lists.size(), 1U);
    EXPECT_EQ(text.createdAt(), kNow);
    EXPECT_EQ(second.createdAt(), kLater);
    EXPECT_EQ(reminders.reconciles, reconciles);
}

TEST_F(TextEntryTest, DeletingClosesTheGapAndWithdrawsTheReminders) {
    const auto todos = add({"a", "b", "c", "done"});
    entries->completeTodo(*todos[3], kNow);
    Entry& text = note("text");
    model::Board& other = boards->createBoard("Other", kNow);
    entries->createTodos({.contents = {"elsewhere"}, .board = other, .now = kNow});
    reminders.removed.clear();

    entries->deleteEntry(*todos[1]);
    EXPECT_THAT(storedOrder(*board), ElementsAre("a", "c", "text", "done"));
    EXPECT_THAT(reminders.removed, ElementsAre(todos[1]->id()));

    const auto revision = container->revision();
    Entry* const some[] = {todos[3], &text, todos[0], todos[3]};
    entries->deleteEntries(some);
    EXPECT_EQ(container->revision(), revision + 1);
    EXPECT_THAT(storedOrder(*board), ElementsAre("c"));
    EXPECT_THAT(reminders.removed, testing::Not(testing::Contains(text.id())));

    note("more");
    reminders.removed.clear();
    const auto reloads = widgets.reloads;
    entries->deleteEntries(*board);
    EXPECT_THAT(storedOrder(*board), IsEmpty());
    EXPECT_THAT(storedOrder(other), ElementsAre("elsewhere"));
    EXPECT_THAT(reminders.removed, ElementsAre(todos[2]->id()));
    EXPECT_EQ(widgets.reloads, reloads + 1);
}

TEST_F(TextEntryTest, AChangeThatCannotBeSavedIsTakenBackWhole) {
    const auto todos = add({"a", "b", "done"});
    entries->completeTodo(*todos[2], kNow);
    Entry& text = entries->createText(
        {.rich = formatted(), .board = *board, .before = todos[0]->id(), .now = kNow});
    const struct {
        const char* name;
        std::function<void()> change;
    } cases[] = {
        {"complete", [&] { entries->completeTodo(*todos[0], kLater); }},
        {"create",
         [&] {
             entries->createText(
                 {.rich = plain("x"), .board = *board, .before = text.id(), .now = kLater});
         }},
        {"update", [&] { entries->updateText(text, plain("x"), kLater); }},
        {"split", [&] { entries->splitText(text, plain("x"), plain("y"), kLater); }},
        {"to text", [&] { entries->changeType(*todos[2], EntryType::text, kLater); }},
        {"to todo", [&] { entries->changeType(text, EntryType::todo, kLater); }},
        {"empty", [&] { entries->updateText(text, {}, kLater); }},
        {"delete", [&] { entries->deleteEntry(*todos[0]); }},
        {"delete all", [&] { entries->deleteEntries(*board); }},
    };
    log.expectError("Entry persistence failed; rolled back: ");
    for (const auto& each : cases) {
        const auto before = storedBoard();
        const auto shown = texts(services::activeEntries(*board));
        const auto told = reminders.removed.size() + static_cast<std::size_t>(reminders.reconciles);
        breakSaves();
        EXPECT_THROW(each.change(), store::StoreError) << each.name;
        mendSaves();
        EXPECT_FALSE(context->hasChanges()) << each.name;
        EXPECT_EQ(texts(services::activeEntries(*board)), shown) << each.name;
        EXPECT_EQ(storedBoard(), before) << each.name;
        EXPECT_EQ(reminders.removed.size() + static_cast<std::size_t>(reminders.reconciles), told)
            << each.name;
    }
    entries->splitText(text, plain("x"), plain("y"), kLater);
    entries->deleteEntry(*todos[0]);
    EXPECT_THAT(storedOrder(*board), ElementsAre("x", "y", "b", "done"));
}

} // namespace korvex::tests
