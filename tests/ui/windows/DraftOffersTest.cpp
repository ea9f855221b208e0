#include "ui/windows/DraftOffers.h"

#include "ui/WindowFixture.h"
#include "ui/entries/BoardPage.h"
#include "ui/entries/ShownRefusal.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/todos/SchedulePopover.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/Sidebar.h"

#include <QLineEdit>
#include <QPushButton>

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
    std::string underTheText() { return tests::shownRefusal(page()).toStdString(); }
    std::string banner() { return page().banner().message().toStdString(); }
    std::string edited() {
        return page().list().editedRow() < 0 ? std::string("nothing")
                                             : toUtf8(page().findChild<TodoEditor*>()->typed());
    }
    void press(const char* name) {
        for (auto* const button : page().findChildren<QAbstractButton*>()) {
            const auto says = button->text().isEmpty() ? button->accessibleName() : button->text();
            if (button->isVisible() && says == QString::fromUtf8(name)) {
                button->click();
                return;
            }
        }
        ADD_FAILURE() << "no button says: " << name;
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
    EXPECT_THAT(underTheText(), HasSubstr("could not be stored"));
    QTest::keyClick(page().focusWidget(), Qt::Key_Escape);
    EXPECT_THAT(storedTexts(*work), ElementsAre("first"));
    EXPECT_THAT(drafts(), SizeIs(1));
    ASSERT_THAT(banner(), HasSubstr("More was typed"));
    press("Show");
    EXPECT_EQ(page().board(), inbox);
    EXPECT_EQ(edited(), "second");
    press("Discard");
    EXPECT_EQ(edited(), "nothing");
    EXPECT_EQ(banner(), "What was typed was discarded.");
    EXPECT_THAT(drafts(), IsEmpty());
    EXPECT_THAT(storedTexts(*inbox), IsEmpty());
    window->findChild<Navigation*>()->openBoard(*work);
    press("Undo");
    EXPECT_EQ(page().board(), inbox) << "it goes back to where it was typed";
    EXPECT_EQ(edited(), "second");
    press("Discard");
    press("Close this message");
    add({"more"});
    window->findChild<Navigation*>()->showPage(PageKind::upcoming);
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(page().board(), inbox);
    EXPECT_EQ(edited(), "second") << "a step of undo, when the offer has gone too";
    EXPECT_TRUE(page().findChild<TodoEditor*>()->input().hasFocus());
}

TEST_F(DraftOffersTest, OneMessageWaitsForAnother) {
    keep("first", inbox->id());
    keep("second", inbox->id(), 1);
    open();
    window->showNotices({"A save is missing."});
    QTest::keyClick(page().focusWidget(), Qt::Key_Return);
    EXPECT_THAT(banner(), HasSubstr("More was typed")) << "Return stores one and begins the next";
    EXPECT_EQ(edited(), "");
    press("Close this message");
    EXPECT_EQ(banner(), "A save is missing.");
    QTest::keyClicks(page().focusWidget(), QStringLiteral("third"));
    QTest::keyClick(page().focusWidget(), Qt::Key_Escape);
    EXPECT_EQ(banner(), "A save is missing.") << "what the user closed does not come again";
    QTest::keyClick(&page().list(), Qt::Key_Delete);
    EXPECT_EQ(banner(), "“third” was deleted.");
    press("Undo");
    EXPECT_EQ(banner(), "A save is missing.");
    EXPECT_THAT(drafts(), SizeIs(1)) << "and is offered at the next start";
}

TEST_F(DraftOffersTest, WhatComesBackOutOfTurnIsNotOfferedAgain) {
    keep("first", inbox->id(), 1);
    keep("second", inbox->id(), 2);
    open();
    EXPECT_EQ(edited(), "first");

    const auto discarded = keep("discarded", work->id());
    Q_EMIT page().resumeRequested(
        discarded, {.onTheirBoard = QStringLiteral("Here."), .elsewhere = QStringLiteral("Gone.")});
    EXPECT_EQ(edited(), "discarded");
    EXPECT_EQ(underTheText(), "Here.");
    EXPECT_EQ(banner(), "More was typed and not stored.");
    press("Show");
    EXPECT_EQ(edited(), "second");
    EXPECT_EQ(banner(), "");
    EXPECT_TRUE(page().leave());
    EXPECT_EQ(banner(), "");
}

TEST_F(DraftOffersTest, WhatCannotBeShownYetIsOfferedAgainAndSaysWhereItComesFrom) {
    keep(std::string(10'001, 'x').c_str(), inbox->id());
    open();
    Q_EMIT page().resumeRequested(
        keep("moved", base::Uuid::random()),
        {.onTheirBoard = QStringLiteral("Here."), .elsewhere = QStringLiteral("Gone.")});
    for (const auto* const where : {"at once", "and with each try"}) {
        SCOPED_TRACE(where);
        EXPECT_THAT(edited(), SizeIs(10'001)) << "it cannot be stored, and so not be left";
        ASSERT_EQ(banner(), "More was typed and not stored.");
        press("Show");
    }
    press("Discard");
    press("Close this message");
    press("Show");
    EXPECT_EQ(edited(), "moved");
    EXPECT_EQ(underTheText(), "Gone.");
}

TEST_F(DraftOffersTest, ABoardThatIsGoneOrArchivedGivesWayToTheInbox) {
    keep("of nowhere", base::Uuid::random());
    own.boards.setArchived(true, *work, kNow);
    keep("of the archive", work->id(), 1);
    for (const auto& [text, why] : {std::pair("of nowhere", "Its board is no longer there"),
                                    std::pair("of the archive", "Its board is archived")}) {
        open();
        EXPECT_EQ(page().board(), inbox);
        EXPECT_EQ(edited(), text);
        EXPECT_THAT(underTheText(), HasSubstr(why));
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

TEST_F(DraftOffersTest, WhatAPressOutsideWouldStoreIsStoredAtTheEnd) {
    auto& todo = *add({"a"}).front();
    open();
    window->findChild<Navigation*>()->showEntry(todo);
    QTest::keyClick(&page().list(), Qt::Key_D, Qt::ControlModifier);
    for (auto* const button : window->findChild<SchedulePopover*>()->findChildren<QPushButton*>()) {
        if (button->text() == QStringLiteral("Today")) {
            button->click();
        }
    }
    window->storeAll();
    EXPECT_EQ(todo.schedule(), model::TodoSchedule::dueOn(20250310));
    auto& sidebar = *window->findChild<Sidebar*>();
    sidebar.rename(*work);
    sidebar.findChild<BoardListView*>()->findChild<QLineEdit*>()->setText(QStringLiteral("Office"));
    window->storeAll();
    EXPECT_EQ(work->name(), "Office");
}

TEST_F(DraftOffersTest, TheWindowDoesNotCloseOverANameThatWasRefused) {
    open();
    auto& sidebar = *window->findChild<Sidebar*>();
    const auto nameField = [&] {
        return sidebar.findChild<BoardListView*>()->findChild<QLineEdit*>();
    };
    sidebar.rename(*work);
    nameField()->setText(QStringLiteral("   "));
    EXPECT_FALSE(window->close());
    EXPECT_FALSE(window->close()) << "nor before it is back in its field";
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    ASSERT_TRUE(QTest::qWaitFor([&] { return nameField() != nullptr; }));
    EXPECT_EQ(nameField()->text(), QStringLiteral("   "));
    nameField()->setText(QStringLiteral("Shop"));
    EXPECT_TRUE(window->close());
    EXPECT_EQ(work->name(), "Shop");
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
