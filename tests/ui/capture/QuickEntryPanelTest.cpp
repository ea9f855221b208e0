#include "ui/capture/QuickEntryPanel.h"

#include "model/ServiceErrors.h"
#include "services/AttachmentList.h"
#include "ui/WindowFixture.h"
#include "ui/boards/BoardPicker.h"
#include "ui/capture/CaptureText.h"
#include "ui/kit/controls/RefusalLabel.h"
#include "ui/kit/overlays/ConfirmationSheet.h"
#include "ui/todos/SchedulePopover.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <QToolButton>

#include <SQLiteCpp/Database.h>
#include <gmock/gmock.h>

#include <fstream>
#include <thread>

namespace korvex::ui {
namespace {

using model::EntryType;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class QuickEntryPanelTest : public tests::WindowFixture {
protected:
    QuickEntryPanelTest() {
        work = &own.boards.createBoard("Work", kNow);
        open();
    }

    /// As in a program of its own: what was there before is gone.
    void restart() {
        panel.reset();
        state.reset();
        draftFile.emplace(workspace.drafts.folders());
        state.emplace(app::QuickEntryState::Surroundings{
            .context = workspace.context,
            .preferences = workspace.preferences,
            .reminders = workspace.reminders,
            .widgets = workspace.widgets,
            .draftFile = *draftFile,
            .runLoop = runLoop,
            .clock = clock,
            .log = log,
            .inBackground = [this](auto reading) { background.push_back(std::move(reading)); }});
        panel.emplace(*state, workspace, theme);
    }
    void open(const app::QuickEntryRequest& request = {}) {
        if (!panel) {
            restart();
        }
        panel->open(request);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&*panel));
        // A platform without a screen does so by itself only the first time.
        QApplication::setActiveWindow(&*panel);
        QApplication::processEvents();
    }
    void runBackground() {
        for (const auto& each : std::exchange(background, {})) {
            std::thread(each).join();
        }
        runLoop.runPosted();
    }
    std::filesystem::path file(const std::string& name) {
        std::ofstream(folder / name) << name;
        return folder / name;
    }
    static QMimeData* offered(const std::vector<std::filesystem::path>& files) {
        QList<QUrl> urls;
        for (const auto& each : files) {
            urls.append(QUrl::fromLocalFile(toFileName(each)));
        }
        auto* const data = new QMimeData;
        data->setUrls(urls);
        return data;
    }
    void paste(const std::vector<std::filesystem::path>& files) {
        QApplication::clipboard()->setMimeData(offered(files));
        text().setFocus();
        key(Qt::Key_V, Qt::ControlModifier);
    }
    void drop(const std::vector<std::filesystem::path>& files) {
        const std::unique_ptr<QMimeData> data(offered(files));
        QDragEnterEvent entered({1, 1}, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&*panel, &entered);
        ASSERT_TRUE(entered.isAccepted());
        QDropEvent dropped({1, 1}, Qt::CopyAction, data.get(), Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&*panel, &dropped);
        runBackground();
    }

    CaptureText& text() { return *panel->findChild<CaptureText*>(); }
    void type(const char* words) { QTest::keyClicks(focused(), QString::fromUtf8(words)); }
    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(focused(), which, modifiers);
        QApplication::processEvents();
    }
    QWidget* focused() {
        auto* const widget = QApplication::focusWidget();
        return widget ? widget : &*panel;
    }
    std::string refusal() {
        for (const auto* const label : panel->findChildren<RefusalLabel*>()) {
            if (label->isVisible()) {
                return toUtf8(label->text());
            }
        }
        return {};
    }
    template <typename Kind>
    Kind* visible() {
        for (auto* const each : panel->findChildren<Kind*>()) {
            if (each->isVisible()) {
                return each;
            }
        }
        return nullptr;
    }
    QToolButton* tool(const char* name) {
        for (auto* const each : panel->findChildren<QToolButton*>()) {
            if (each->accessibleName() == QString::fromUtf8(name)) {
                return each;
            }
        }
        return nullptr;
    }

    model::Board* work = nullptr;
    std::vector<std::function<void()>> background;
    std::optional<app::QuickEntryDraftFile> draftFile;
    std::optional<app::QuickEntryState> state;
    std::optional<QuickEntryPanel> panel;
};

TEST_F(QuickEntryPanelTest, LinesBecomeTodosOnTheBoardThatWasTypedForWithTheirSchedule) {
    type("Buy milk");
    key(Qt::Key_Return, Qt::ShiftModifier);
    type("  ");
    key(Qt::Key_Return, Qt::ShiftModifier);
    type(" Renew passport ");
    key(Qt::Key_K, Qt::ControlModifier);
    ASSERT_NE(visible<BoardPicker>(), nullptr);
    type("wo");
    key(Qt::Key_Return);
    EXPECT_TRUE(text().hasFocus());
    key(Qt::Key_D, Qt::ControlModifier);
    ASSERT_NE(visible<SchedulePopover>(), nullptr);
    key(Qt::Key_Return); // "Today"
    EXPECT_EQ(visible<SchedulePopover>(), nullptr);
    EXPECT_TRUE(text().hasFocus());
    EXPECT_THAT(storedTexts(*work), IsEmpty());
    key(Qt::Key_Return);
    EXPECT_THAT(storedTexts(*work), ElementsAre("Buy milk", "Renew passport"));
    for (const auto* const todo : services::activeEntries(*work)) {
        EXPECT_EQ(todo->schedule().dueDay, base::DayNumber{20250310});
    }
    EXPECT_TRUE(panel->isHidden());
    open();
    EXPECT_EQ(text().typed(), QString());
    EXPECT_TRUE(state->schedule().isEmpty());
    EXPECT_EQ(state->selectedBoardID(), work->id()) << "the one that was used last";
}

TEST_F(QuickEntryPanelTest, WhatWasTypedIsThereAgainAfterEscapeAndInTheNextProgram) {
    type("half a thou");
    key(Qt::Key_Escape);
    EXPECT_TRUE(panel->isHidden());
    open({.type = EntryType::text});
    type("ght");
    EXPECT_EQ(text().typed(), QStringLiteral("half a thought"));
    panel->close(); // as a window manager does
    EXPECT_TRUE(panel->isHidden());
    restart();
    open();
    EXPECT_EQ(text().typed(), QStringLiteral("half a thought"));
    EXPECT_EQ(state->entryType(), EntryType::text);
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(text().typed(), QStringLiteral("half a thought"))
        << "what another opening showed is no step to be taken back";
    key(Qt::Key_1, Qt::ControlModifier | Qt::AltModifier);
    EXPECT_EQ(state->heading(), richtext::HeadingLevel::level1);
    key(Qt::Key_Return);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("half a thought"));
}

TEST_F(QuickEntryPanelTest, ADraftIsDiscardedOnlyWhenThatIsConfirmed) {
    key(Qt::Key_Escape, Qt::ControlModifier);
    EXPECT_TRUE(panel->isHidden()) << "there is nothing to lose";
    open();
    type("no");
    key(Qt::Key_D, Qt::ControlModifier);
    key(Qt::Key_Return);
    key(Qt::Key_Escape, Qt::ControlModifier);
    ASSERT_NE(visible<ConfirmationSheet>(), nullptr);
    key(Qt::Key_Escape);
    EXPECT_EQ(visible<ConfirmationSheet>(), nullptr);
    EXPECT_EQ(text().typed(), QStringLiteral("no"));
    tool("Discard the draft")->click();
    QApplication::processEvents();
    key(Qt::Key_Tab);
    key(Qt::Key_Return);
    EXPECT_TRUE(panel->isHidden());
    EXPECT_FALSE(state->hasDraft());
    open();
    EXPECT_EQ(text().typed(), QString());
    EXPECT_FALSE(tool("Discard the draft")->isVisible());
}

TEST_F(QuickEntryPanelTest, ARefusalIsSaidInThePanelAndKeepsTheDraft) {
    log.expectError("Quick Entry failed: ");
    key(Qt::Key_Return);
    EXPECT_EQ(refusal(), "") << "nothing was typed, and nothing is stored";
    EXPECT_TRUE(panel->isVisible());
    drop({file("a.txt"), file("b.txt")});
    EXPECT_THAT(state->attachments(), SizeIs(2));
    type("one");
    key(Qt::Key_Return, Qt::ShiftModifier);
    type("two");
    key(Qt::Key_Return);
    EXPECT_EQ(refusal(), "To attach files, add one todo at a time or switch to Text.");
    EXPECT_EQ(text().typed(), QStringLiteral("one\ntwo"));
    key(Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(refusal(), "") << "it is not so any more";
    key(Qt::Key_Return);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("one\ntwo"));

    open({.type = EntryType::todo});
    QApplication::clipboard()->setText(QString(10'001, QLatin1Char('x')));
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(refusal(), descriptionOf(model::EntryServiceErrorCase::contentTooLong));
    EXPECT_EQ(text().typed(), QString()) << "nothing was inserted";
    QApplication::clipboard()->setText(QString(10'000, QLatin1Char('x')));
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(refusal(), "");
    type("y");
    key(Qt::Key_Return);
    EXPECT_EQ(refusal(), descriptionOf(model::EntryServiceErrorCase::contentTooLong));
    EXPECT_EQ(text().typed().size(), 10'001);
    key(Qt::Key_Backspace);
    EXPECT_EQ(refusal(), "");
    key(Qt::Key_Return);
    EXPECT_TRUE(panel->isHidden());
}

TEST_F(QuickEntryPanelTest, FilesAreReadAsideShownAndTakenAway) {
    log.expectError("Quick Entry failed: ");
    type("Trip");
    paste({file("ticket.txt")});
    key(Qt::Key_Return);
    EXPECT_EQ(refusal(), "Wait for the files to finish attaching before saving.");
    EXPECT_TRUE(panel->isVisible());
    runBackground();
    EXPECT_EQ(refusal(), "") << "they have finished";
    ASSERT_NE(tool("Remove ticket.txt"), nullptr);
    key(Qt::Key_Tab);
    EXPECT_TRUE(tool("Remove ticket.txt")->hasFocus()) << "it is next to the text";
    std::filesystem::create_directory(folder / "Photos");
    drop({file("good.txt"), folder / "Photos", folder / "nowhere.txt"});
    EXPECT_EQ(refusal(), descriptionOf(model::AttachmentErrorCase::invalidFile) +
                             "\n\"Photos\" cannot be attached, so none of these files was.");
    EXPECT_THAT(state->attachments(), SizeIs(1));
    paste({file("late.txt")});
    EXPECT_FALSE(panel->mayEnd()) << "they are in no draft yet";
    key(Qt::Key_Escape);
    EXPECT_FALSE(state->isAttachingFiles());
    EXPECT_TRUE(panel->isVisible()) << "that Escape was for the files";
    runBackground();
    EXPECT_THAT(state->attachments(), SizeIs(1));
    tool("Remove ticket.txt")->setFocus();
    key(Qt::Key_Return);
    EXPECT_THAT(state->attachments(), IsEmpty());
    EXPECT_TRUE(text().hasFocus());
    QImage picture(2, 2, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QApplication::clipboard()->setImage(picture);
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_NE(tool("Remove Pasted image.png"), nullptr);
    key(Qt::Key_Return);
    EXPECT_THAT(services::attachmentsOf(*services::activeEntries(*inbox).front()).attachments,
                SizeIs(1));
}

TEST_F(QuickEntryPanelTest, WhatIsOpenOverADraftThatWasGivenUpCloses) {
    type("first");
    key(Qt::Key_D, Qt::ControlModifier);
    ASSERT_NE(visible<SchedulePopover>(), nullptr);
    state->reset(); // as when it was captured in another way
    QApplication::processEvents();
    EXPECT_EQ(visible<SchedulePopover>(), nullptr);
    EXPECT_EQ(text().typed(), QString());
    EXPECT_TRUE(state->schedule().isEmpty());
    type("second");
    key(Qt::Key_Return);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("second"));
}

TEST_F(QuickEntryPanelTest, ABoardThatIsGoneGivesItsPlaceToAnother) {
    preferences.setQuickEntryFixedBoardID(work->id());
    key(Qt::Key_Escape);
    open();
    EXPECT_EQ(state->selectedBoardID(), work->id());
    elsewhere([&](tests::StoreClient& client) {
        auto* const theirs = client.context.find<model::Board>(work->id());
        client.boards.deleteBoard(*theirs);
    });
    type("still kept");
    key(Qt::Key_Return);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("still kept"));
    open({.board = base::Uuid::random()});
    EXPECT_EQ(state->selectedBoardID(), inbox->id());
}

TEST_F(QuickEntryPanelTest, AStoreThatAnotherProgramHoldsRefusesInThePanel) {
    constexpr const char* kBusy =
        "Another program keeps the store busy. Nothing was changed; try again.";
    log.expectError("Quick Entry failed: ");
    type("later");
    {
        elsewhere([](tests::StoreClient&) {});
        const store::LockedStep held(other->context);
        key(Qt::Key_Return);
        EXPECT_EQ(refusal(), kBusy);
        EXPECT_TRUE(panel->isVisible());
    }
    {
        // Not by our lock, but by SQLite's: as a tool does that knows nothing of us.
        SQLite::Database tool((folder / "Primary.store").string(), SQLite::OPEN_READWRITE);
        tool.exec("BEGIN IMMEDIATE");
        key(Qt::Key_Return);
        EXPECT_EQ(refusal(), kBusy);
        EXPECT_GT(log.count("database is locked"), 0U) << "the reason is for the log";
    }
    key(Qt::Key_Return);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("later"));
}

TEST_F(QuickEntryPanelTest, ADraftThatCannotBeKeptIsSaidOnce) {
    log.expectError("Quick Entry draft not kept: ");
    const auto drafts = workspace.drafts.folders().front();
    std::filesystem::remove_all(drafts);
    std::ofstream(drafts) << "in the way";
    type("only here");
    key(Qt::Key_Escape);
    EXPECT_TRUE(panel->isVisible());
    EXPECT_THAT(refusal(), ::testing::StartsWith("The draft could not be kept: "));
    key(Qt::Key_Escape);
    EXPECT_TRUE(panel->isHidden());
    open();
    EXPECT_EQ(text().typed(), QStringLiteral("only here")) << "as long as the program runs";
    key(Qt::Key_Escape);
    key(Qt::Key_Escape);
    ASSERT_TRUE(panel->isHidden());
    EXPECT_FALSE(panel->mayEnd());
    EXPECT_TRUE(panel->isVisible());
    EXPECT_THAT(refusal(), ::testing::StartsWith("The draft could not be kept: "));
    EXPECT_TRUE(panel->mayEnd()) << "the user was told, and ends it all the same";
    std::filesystem::remove(drafts);
    key(Qt::Key_Escape);
    EXPECT_TRUE(panel->mayEnd());
    EXPECT_TRUE(panel->isHidden()) << "it is kept";
}

TEST_F(QuickEntryPanelTest, ABoardThatCannotBeLookedUpEndsNothing) {
    log.expectError("Quick Entry failed: ");
    type("still here");
    const auto rename = [&](const char* how) {
        SQLite::Database((folder / "Primary.store").string(), SQLite::OPEN_READWRITE).exec(how);
    };
    rename("ALTER TABLE Board RENAME TO Hidden");
    open({.board = base::Uuid::random()}); // not in memory
    EXPECT_EQ(text().typed(), QStringLiteral("still here"));
    key(Qt::Key_Return);
    EXPECT_NE(refusal(), "");
    rename("ALTER TABLE Hidden RENAME TO Board");
    key(Qt::Key_Return);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("still here"));
}

TEST_F(QuickEntryPanelTest, ItIsAsLargeAsItsContentWithinTheScreen) {
    const QRect screen(0, 0, 800, 600);
    panel->placeOn(screen);
    const auto small = panel->size();
    for (int line = 0; line < 8; ++line) {
        type("line");
        key(Qt::Key_Return, Qt::ShiftModifier);
    }
    EXPECT_GT(panel->height(), small.height());
    const auto tall = panel->height();
    for (int line = 0; line < 60; ++line) {
        type("line");
        key(Qt::Key_Return, Qt::ShiftModifier);
    }
    EXPECT_LT(panel->height(), 2 * tall);
    EXPECT_TRUE(screen.contains(panel->geometry()));
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Delete);
    QApplication::processEvents();
    EXPECT_EQ(panel->size(), small);
    key(Qt::Key_D, Qt::ControlModifier);
    QApplication::processEvents();
    const auto* const schedule = visible<SchedulePopover>();
    ASSERT_NE(schedule, nullptr);
    EXPECT_TRUE(panel->rect().contains(schedule->geometry()));
    EXPECT_GE(schedule->geometry().top(), text().geometry().bottom()) << "the words stay in sight";
    const auto place = schedule->geometry();
    panel->hide(); // as when another window is in front, and the shortcut fetches it
    open({});
    EXPECT_TRUE(schedule->isVisible());
    EXPECT_EQ(schedule->geometry(), place);
    EXPECT_TRUE(schedule->isAncestorOf(QApplication::focusWidget()));
    key(Qt::Key_Escape);
    QApplication::processEvents();
    EXPECT_EQ(panel->size(), small);
    preferences.setFontSize(app::AppPreferences::kFontSizes.back());
    state->attach({{.id = base::Uuid::random(),
                    .filename = std::string(200, 'x') + ".pdf",
                    .data = base::Bytes(2000)}});
    const QRect narrow(0, 0, 360, 640);
    panel->placeOn(narrow);
    QApplication::processEvents();
    EXPECT_TRUE(narrow.contains(panel->geometry()));
    key(Qt::Key_D, Qt::ControlModifier);
    QApplication::processEvents();
    EXPECT_TRUE(narrow.contains(panel->geometry()));
}

TEST_F(QuickEntryPanelTest, ANewLookLeavesWhatIsBeingTypedAsItIs) {
    drop({file("a.txt")});
    type("half a word");
    key(Qt::Key_Left, Qt::ShiftModifier);
    auto* const before = &text();
    theme.setSystem({.appearance = Theme::SystemAppearance::dark});
    QApplication::processEvents();
    ASSERT_EQ(&text(), before) << "an input method would lose whom it writes to";
    EXPECT_TRUE(text().hasFocus());
    EXPECT_EQ(text().textCursor().selectedText(), QStringLiteral("d"));
    QInputMethodEvent composing(QStringLiteral("ni"), {});
    QApplication::sendEvent(before, &composing);
    preferences.setFontSize(app::AppPreferences::kFontSizes.back());
    QApplication::processEvents();
    EXPECT_EQ(text().textCursor().block().layout()->preeditAreaText(), QStringLiteral("ni"));
    QInputMethodEvent composed;
    composed.setCommitString(QStringLiteral("你"));
    QApplication::sendEvent(before, &composed);
    EXPECT_EQ(text().typed(), QStringLiteral("half a wor你"));

    tool("Remove a.txt")->setFocus();
    preferences.setFontSize(app::AppPreferences::kFontSizes.front());
    QApplication::processEvents();
    EXPECT_TRUE(tool("Remove a.txt")->hasFocus());
    text().setFocus();
    preferences.setFontSize(18);
    QApplication::processEvents();
    const auto restyled = panel->grab().toImage();
    restart();
    open();
    EXPECT_EQ(restyled, panel->grab().toImage()) << "as one that was made in this look";
}

TEST_F(QuickEntryPanelTest, CtrlReturnSavesWhereverTheKeyboardIs) {
    for (const char* const name : {"Board: Inbox", "Schedule", "Attach files", "Todo"}) {
        open();
        type(name);
        for (auto* const each : panel->findChildren<QAbstractButton*>()) {
            if (each->accessibleName().remove(QChar(0x2068)).remove(QChar(0x2069)) ==
                    QString::fromUtf8(name) ||
                each->text() == QString::fromUtf8(name)) {
                each->setFocus();
            }
        }
        ASSERT_FALSE(text().hasFocus()) << name;
        key(Qt::Key_Return, Qt::ControlModifier);
        EXPECT_TRUE(panel->isHidden()) << name;
    }
    EXPECT_THAT(storedTexts(*inbox), SizeIs(4));
}

TEST_F(QuickEntryPanelTest, TheHintIsSeenWholeInEverySize) {
    for (const int size : app::AppPreferences::kFontSizes) {
        preferences.setFontSize(size);
        QApplication::processEvents();
        const auto room = text().viewport()->rect();
        const auto needed = text().fontMetrics().boundingRect(
            QRect(0, 0, room.width(), QWIDGETSIZE_MAX), Qt::TextWordWrap, text().placeholderText());
        EXPECT_GE(room.height(), needed.height()) << size;
    }
}

} // namespace
} // namespace korvex::ui
