#include "ui/windows/NavigationFixture.h"

#include "app/Links.h"

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

    struct {
        std::string url;
        const char* logged;
        const char* told;
    } const cases[] = {
        {app::boardUrl(base::Uuid::random()), "Unable to open widget board: ", "The board"},
        {app::entryUrl(base::Uuid::random()), "Could not open notification entry", "The entry"},
        {"korvex://entry/nobody", "Could not open notification entry", "The link"},
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

} // namespace
} // namespace korvex::ui
