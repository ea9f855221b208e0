#include "schedule/TodoWidgetConfiguration.h"

#include "TodoStore.h"

#include <gmock/gmock.h>

namespace korvex::schedule {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(WidgetBoardQuery, BoardsAreOfferedAndFoundInTheirOrder) {
    tests::TodoStore store;
    services::NoReminders reminders;
    services::NoWidgets widgets;
    services::BoardService boards(store.context, reminders, widgets, store.log);
    const WidgetBoardQuery query(boards);
    EXPECT_THAT(query.suggestedEntities(), IsEmpty());
    constexpr base::Instant kNow{1000};
    boards.initializeDefaultBoards(kNow);
    auto& work = boards.createBoard("Work", kNow);
    auto& old = boards.createBoard("Old", kNow);
    boards.setArchived(true, old, kNow);
    const auto entityOf = [](const model::Board& board) {
        return WidgetBoardEntity{.id = board.id(), .name = board.name()};
    };
    const auto& inbox = *boards.inboxBoard();
    EXPECT_THAT(query.suggestedEntities(),
                ElementsAre(entityOf(inbox), entityOf(work), entityOf(old)));
    const std::vector asked{old.id(), base::Uuid::random(), inbox.id(), old.id()};
    EXPECT_THAT(query.entities(asked), ElementsAre(entityOf(inbox), entityOf(old)));
    EXPECT_THAT(query.entities({}), IsEmpty());
    boards.renameBoard(work, "Office", kNow);
    EXPECT_EQ(query.suggestedEntities()[1].name, "Office");
}

} // namespace
} // namespace korvex::schedule
