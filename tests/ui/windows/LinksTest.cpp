#include "ui/windows/NavigationFixture.h"

#include "app/Links.h"
#include "store/StoreError.h"

#include <SQLiteCpp/Database.h>

namespace korvex::ui {
namespace {

class LinksTest : public tests::NavigationFixture {};

TEST_F(LinksTest, ALinkLeadsToItsBoardOrEntryAndSaysWhatIsNotThere) {
    addMany(100);
    open();
    window->openLink(app::boardUrl(work->id()));
    EXPECT_EQ(page().board(), work);
    window->openLink(std::string(app::kInboxUrl));
    EXPECT_EQ(page().board(), inbox);

    // Made a moment ago by another program, which nobody here has heard of.
    tests::StoreClient program(folder / "Primary.store", log);
    const auto* const entry =
        program.entries
            .createTodos({.contents = {"new"}, .board = *program.boards.inboxBoard(), .now = kNow})
            .front();
    navigation().showPage(PageKind::upcoming);
    window->openLink(app::entryUrl(entry->id()));
    EXPECT_EQ(navigation().currentPage(), PageKind::board);
    EXPECT_EQ(list().currentRow(), 100);

    const auto isGone =
        std::to_string(static_cast<int>(model::EntryServiceErrorCase::entryUnavailable));
    struct {
        std::string url;
        std::string logged;
        const char* told;
    } const cases[] = {
        {app::boardUrl(base::Uuid::random()), "Unable to open widget board: " + isGone,
         "The board"},
        {app::entryUrl(base::Uuid::random()), "Could not open notification entry", "The entry"},
        {"korvex://entry/nobody", "Could not open notification entry", "The link"},
        {"korvex://board/a/b", "Unable to open widget board: " + isGone, "The link"},
        {"groceries", "Could not open what is no link", "The link"},
        {"https://board/a", "Could not open what is no link", "The link"},
    };
    for (const auto& each : cases) {
        const auto before = log.count(each.logged);
        window->openLink(each.url);
        EXPECT_EQ(log.count(each.logged), before + 1);
        EXPECT_TRUE(page().banner().message().startsWith(QLatin1String(each.told)))
            << page().banner().message().toStdString();
        EXPECT_EQ(list().currentRow(), 100) << "the page stays";
    }
}

TEST_F(LinksTest, ABoardThatWasMergedIntoAnotherLeadsThere) {
    auto& merged = own.boards.createBoard("Merged", kNow);
    auto& again = own.boards.createBoard("Merged before", kNow);
    open();
    elsewhere([&](tests::StoreClient& program) {
        program.context.find<model::Board>(merged.id())->setMergedIntoBoardID(work->id());
        program.context.find<model::Board>(again.id())->setMergedIntoBoardID(merged.id());
        program.context.save();
    });
    window->openLink(app::boardUrl(again.id()));
    EXPECT_EQ(page().board(), work);
    EXPECT_EQ(page().banner().message(), QString());
}

TEST_F(LinksTest, WhyAStoreCannotBeReadIsToldAndLogged) {
    open();
    const auto rename = [this](const char* statement) {
        SQLite::Database((folder / "Primary.store").string(), SQLite::OPEN_READWRITE)
            .exec(statement);
    };
    rename("ALTER TABLE Board RENAME TO Hidden");
    window->openLink(app::boardUrl(base::Uuid::random()));
    EXPECT_EQ(log.count("Unable to open widget board: " +
                        std::to_string(static_cast<int>(store::StoreErrorCase::other))),
              1);
    EXPECT_NE(page().banner().message(), QString());
    rename("ALTER TABLE Hidden RENAME TO Board");
    window->openLink(app::boardUrl(work->id()));
    EXPECT_EQ(page().board(), work);
    EXPECT_EQ(page().banner().message(), QString());
}

TEST_F(LinksTest, AnEntryIsShownWhereverItIsWithTheKeyboardAtItsRow) {
    const auto todos = addMany(60);
    own.entries.completeTodo(*todos[50], kNow);
    auto& archived = own.boards.createBoard("Old", kNow);
    auto& old =
        *own.entries.createTodos({.contents = {"old"}, .board = archived, .now = kNow}).front();
    own.boards.setArchived(true, archived, kNow);
    struct {
        const char* what;
        const model::Entry* entry;
        std::function<void()> before;
    } const cases[] = {
        {"far down", todos[55], [this] { navigation().showBoard(*work); }},
        {"completed", todos[50], [this] { navigation().showPage(PageKind::upcoming); }},
        {"on an archived board", &old, [this] { search("todo"); }},
        {"under an editor", todos[2], [this] { page().startTodo(); }},
        {"under a panel", todos[3], [this] { key(Qt::Key_K, Qt::ControlModifier); }},
        {"beside a name that is being typed", todos[4], [this] { sidebar().rename(*work); }},
    };
    // A start by a link: there is no window to be seen yet.
    window = std::make_unique<MainWindow>(workspace, theme);
    window->resize(800, 500);
    window->openLink(app::entryUrl(todos[40]->id()));
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    const auto expectShown = [this](const model::Entry& entry) {
        QApplication::processEvents();
        EXPECT_EQ(page().board(), entry.board());
        EXPECT_EQ(navigation().currentPage(), PageKind::board);
        const auto index = list().currentIndex();
        EXPECT_EQ(toUtf8(index.data().toString()), entry.content());
        EXPECT_TRUE(list().viewport()->rect().contains(list().visualRect(index)));
        EXPECT_TRUE(list().hasFocus());
    };
    expectShown(*todos[40]);
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        each.before();
        window->openLink(app::entryUrl(each.entry->id()));
        expectShown(*each.entry);
    }
    own.entries.deleteEntry(*todos[40]);
    window->openLink(app::entryUrl(todos[40]->id()));
    EXPECT_EQ(log.count("Could not open notification entry"), 1);
    expectShown(*todos[4]);
}

} // namespace
} // namespace korvex::ui
