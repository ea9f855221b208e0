#include "TextFixture.h"

#include <gmock/gmock.h>

namespace korvex::tests {

using model::Entry;
using model::EntryServiceErrorCase;
using model::EntryType;
using model::TodoSchedule;
using richtext::AttributedString;
using services::EntryService;
using testing::ElementsAre;

class EntryTypeTest : public TextFixture {};

TEST_F(EntryTypeTest, ATextBecomesATodoOfOneLine) {
    const struct {
        const char16_t* text;
        const char* todo;
    } cases[] = {
        {u"Buy milk", "Buy milk"},
        {u"  Buy\n\n  oat  milk \nnow\n", "Buy oat  milk now"},
        {u"a\u2028b\u2029c\u0085d\re\r\nf", "a b c d e f"},
        {u"\u00E9\n\U0001F600\n\u3000x", "\u00E9 \U0001F600 x"},
    };
    for (const auto& each : cases) {
        AttributedString rich(each.text);
        rich.editAttributes({0, 3}, [](auto& attributes) { attributes.font.isBold = true; });
        Entry& entry = entries->createText({.rich = rich, .board = *board, .now = kNow});
        const auto reconciles = reminders.reconciles;
        entries->changeType(entry, EntryType::todo, kLater);
        EXPECT_TRUE(entry.isTodo());
        EXPECT_EQ(entry.content(), each.todo);
        EXPECT_FALSE(entry.richTextData());
        EXPECT_EQ(entry.updatedAt(), kLater);
        EXPECT_EQ(reminders.reconciles, reconciles + 1);
        EXPECT_EQ(services::activeTodos(*board).back(), &entry);
    }
    storedOrder(*board);
}

TEST_F(EntryTypeTest, WhatIsLeftOfADamagedTextBecomesTheTodoButNeverItsPreview) {
    Entry& damaged = note("still readable");
    damaged.setRichTextData(base::Bytes{'n', 'o', ' ', 'r', 't', 'f'});
    Entry& huge = note("x");
    huge.setContent(std::string(10'001, 'x'));
    Entry& empty = note("x");
    empty.setContent(" ");
    empty.setRichTextData(std::nullopt);
    Entry& scheduled = note("with a window the wrong way");
    scheduled.setSchedule({.dueDate = base::Instant{50}, .dueStartDate = base::Instant{60}});
    scheduled.setIsCompleted(true);
    context->save();

    log.expectError("Unable to decode stored rich text; using plain-text fallback: ");
    entries->changeType(damaged, EntryType::todo, kLater);
    EXPECT_EQ(damaged.content(), "still readable");
    EXPECT_EQ(entryRefusal([&] { entries->changeType(huge, EntryType::todo, kLater); }),
              EntryServiceErrorCase::contentTooLong);
    EXPECT_EQ(entryRefusal([&] { entries->changeType(empty, EntryType::todo, kLater); }),
              EntryServiceErrorCase::emptyContent);
    EXPECT_FALSE(huge.isTodo() || empty.isTodo());
    entries->changeType(scheduled, EntryType::todo, kLater);
    EXPECT_TRUE(scheduled.schedule().isEmpty()) << "no todo may have such a schedule";
    EXPECT_FALSE(scheduled.isCompleted());
}

TEST_F(EntryTypeTest, ATodoThatBecomesATextIsActiveAndGetsItsScheduleBack) {
    const TodoSchedule schedule{.dueDay = 20250310, .reminderDate = base::Instant{5000}};
    const auto todos = entries->createTodos(
        {.contents = {"a", "b", "c"}, .board = *board, .now = kNow, .schedule = schedule});
    entries->completeTodo(*todos[0], {30});
    entries->completeTodo(*todos[1], {20});
    reminders.removed.clear();
    Entry& entry = *todos[1];
    entries->changeType(entry, EntryType::text, kLater);
    EXPECT_EQ(entry.type(), EntryType::text);
    EXPECT_TRUE(storedText(entry).isEquivalentTo(plain("b")));
    EXPECT_FALSE(entry.isCompleted()) << "text entries are never completed";
    EXPECT_FALSE(entry.completedAt());
    EXPECT_THAT(reminders.removed, ElementsAre(entry.id()));
    EXPECT_THAT(storedOrder(*board), ElementsAre("c", "b", "a"));
    EXPECT_THAT(texts(services::activeEntries(*board)), ElementsAre("c", "b"));
    EXPECT_THAT(texts(services::completedTodos(*board)), ElementsAre("a"));

    const auto revision = container->revision();
    const auto reconciles = reminders.reconciles;
    entries->changeType(entry, EntryType::text, {3000});
    EXPECT_EQ(container->revision(), revision) << "it is a text already";
    EXPECT_EQ(reminders.reconciles, reconciles);

    entries->changeType(entry, EntryType::todo, kLater);
    EXPECT_EQ(entry.schedule(), schedule);
    EXPECT_EQ(entry.content(), "b");
    EXPECT_EQ(reminders.reconciles, reconciles + 1);
}

} // namespace korvex::tests
