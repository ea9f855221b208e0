#include "ui/windows/DraftOffers.h"

#include "ui/WindowFixture.h"
#include "ui/entries/BoardPage.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/windows/MainWindow.h"

#include <QPushButton>
#include <QToolButton>

#include <gmock/gmock.h>

#include <fstream>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class DraftOffersTest : public tests::WindowFixture {
protected:
    DraftOffersTest() { work = &own.boards.createBoard("Work", kNow); }

    app::Draft keep(const char* content, const base::Uuid& board, double typedAt = 0) {
        const app::Draft draft{.id = base::Uuid::random(),
                               .board = board,
                               .typedAt = kNow + typedAt,
                               .content = content};
        EXPECT_FALSE(workspace.drafts.write(draft));
        return draft;
    }
    void open() {
        window = std::make_unique<MainWindow>(workspace, theme);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        window->offerDrafts();
    }
    BoardPage& page() { return *window->findChild<BoardPage*>(); }
    std::string banner() { return page().banner().message().toStdString(); }
    std::string edited() {
        return page().list().editedRow() < 0 ? std::string("nothing")
                                             : toUtf8(page().findChild<TodoEditor*>()->typed());
    }
    std::vector<app::Draft> drafts() { return workspace.drafts.find().drafts; }

    model::Board* work = nullptr;
    std::unique_ptr<MainWindow> window;
};

TEST_F(DraftOffersTest, EachIsOfferedOnItsBoardUntilItIsStoredOrDiscarded) {
    keep("first", work->id());
    keep("second", inbox->id(), 1);
    open();
    EXPECT_EQ(page().board(), work);
    EXPECT_EQ(edited(), "first");
    EXPECT_THAT(banner(), HasSubstr("could not be stored"));
    QTest::keyClick(page().focusWidget(), Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*work), ElementsAre("first"));
    EXPECT_THAT(drafts(), SizeIs(1));
    ASSERT_THAT(banner(), HasSubstr("More was typed"));
    for (auto* const button : page().banner().findChildren<QToolButton*>()) {
        if (button->text() == QStringLiteral("Show")) {
            button->click();
        }
    }
    EXPECT_EQ(page().board(), inbox);
    EXPECT_EQ(edited(), "second");
    for (auto* const button : page().findChildren<QPushButton*>()) {
        if (button->isVisible() && button->text() == QStringLiteral("Discard")) {
            button->click();
        }
    }
    EXPECT_EQ(edited(), "nothing");
    EXPECT_EQ(banner(), "What was typed was discarded.");
    EXPECT_THAT(drafts(), IsEmpty());
    EXPECT_THAT(storedTexts(*inbox), IsEmpty());
}

TEST_F(DraftOffersTest, ABoardThatIsGoneOrArchivedGivesWayToTheInbox) {
    keep("of nowhere", base::Uuid::random());
    own.boards.setArchived(true, *work, kNow);
    keep("of the archive", work->id(), 1);
    for (const auto* const text : {"of nowhere", "of the archive"}) {
        open();
        EXPECT_EQ(page().board(), inbox);
        EXPECT_EQ(edited(), text);
        EXPECT_THAT(banner(), HasSubstr("no longer there"));
        EXPECT_TRUE(window->close());
    }
    EXPECT_THAT(drafts(), IsEmpty());
}

TEST_F(DraftOffersTest, WhatIsStillBeingEditedAtTheEndIsStoredOrKept) {
    open();
    page().startTodo();
    QTest::keyClicks(page().focusWidget(), QStringLiteral("typed"));
    window->storeAll();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("typed"));
    EXPECT_THAT(drafts(), IsEmpty());
    page().showBoard(*work);
    page().startTodo();
    QTest::keyClicks(page().focusWidget(), QStringLiteral("kept"));
    tests::StoreClient hidden(folder / "Primary.store", log);
    hidden.boards.deleteBoard(*hidden.boards.board(work->id()));
    window->storeAll();
    EXPECT_THAT(drafts(), SizeIs(1));
}

TEST_F(DraftOffersTest, WhatCannotBeReadIsToldAndStays) {
    const auto file = folder / "Drafts" / "x.draft";
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << "?";
    open();
    EXPECT_THAT(banner(), HasSubstr(file.native()));
    EXPECT_TRUE(std::filesystem::exists(file));
}

} // namespace
} // namespace korvex::ui
