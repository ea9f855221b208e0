#pragma once

#include "ui/widget/WidgetSet.h"

#include "storage/StoreStart.h"
#include "ui/StillStyle.h"
#include "ui/WindowFixture.h"
#include "ui/widget/NotedDesktop.h"
#include "ui/widget/WidgetHeader.h"
#include "ui/widget/WidgetTodoList.h"

#include <QLabel>
#include <QMenu>
#include <QToolButton>

#include <map>

namespace korvex::ui {

/// A store as the app has prepared it, in another program's hands, and widgets over it.
class WidgetFixture : public ::testing::Test {
protected:
    static constexpr base::Instant kNow{763286400};

    WidgetFixture() { startApp(); }

    void startApp() {
        auto started = storage::StoreStart::open({.storeFile = file, .now = kNow}, log);
        app.reset();
        appContainer = std::move(started.container);
        app = std::make_unique<tests::StoreClient>(file, log);
        app->boards.initializeDefaultBoards(kNow);
        inbox = app->boards.inboxBoard();
    }
    std::vector<model::Entry*> add(std::vector<std::string> contents, model::Board& board) {
        return app->entries.createTodos(
            {.contents = std::move(contents), .board = board, .now = kNow});
    }
    /// The store file was rewritten, as the watcher notices.
    void notice() {
        store->follow();
        runLoop.runPosted();
    }
    void makeStore() {
        store = std::make_unique<WidgetStore>(
            WidgetStore::Surroundings{.file = file,
                                      .clock = clock,
                                      .runLoop = runLoop,
                                      .reconciling = reminders,
                                      .reminders = notifications,
                                      .announceChange = [this] { ++announced; },
                                      .log = log,
                                      .timeZone = base::TimeZone::utc,
                                      .patience = std::chrono::milliseconds(0)});
    }
    WidgetSet& widgets() {
        if (!store) {
            makeStore();
        }
        if (!set) {
            set = std::make_unique<WidgetSet>(
                app::WidgetFile(folder / "widgets.json"),
                WidgetSurroundings{*store, theme, dates, folding, runLoop, desktop}, log);
        }
        return *set;
    }
    /// The only widget, which shows this board.
    WidgetWindow& show(const std::optional<base::Uuid>& board = std::nullopt) {
        widgets().open(board);
        auto& window = *set->windows().back();
        window.setStyle(&still);
        if (auto* const list = window.findChild<WidgetTodoList*>()) {
            list->setStyle(&still);
        }
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
        return window;
    }

    static WidgetTodoList& listOf(WidgetWindow& window) {
        return *window.findChild<WidgetTodoList*>();
    }
    static std::vector<std::string> rows(WidgetWindow& window) {
        auto* const list = window.findChild<WidgetTodoList*>();
        if (!list) {
            return {"no store"};
        }
        std::vector<std::string> result;
        for (int row = 0; row < list->model()->rowCount(); ++row) {
            const auto index = list->model()->index(row, 0);
            result.push_back((index.data(Qt::CheckStateRole) == Qt::Checked ? "[x] " : "[ ] ") +
                             toUtf8(index.data().toString()));
        }
        return result;
    }
    /// The texts over the list, or in its place.
    static std::string hint(const WidgetWindow& window) {
        QStringList said;
        for (const auto* const label : window.findChildren<QLabel*>()) {
            if (label->isVisible()) {
                said.append(label->text());
            }
        }
        return toUtf8(said.join(QLatin1Char(' ')));
    }
    static void tick(WidgetWindow& window, int row) {
        auto& list = listOf(window);
        list.setCurrentRow(row);
        QTest::keyClick(&list, Qt::Key_Space);
    }
    static std::string nameOf(const WidgetWindow& window) {
        return toUtf8(window.findChild<WidgetBoardButton*>()->accessibleName());
    }
    std::map<std::string, QAction*> menuOf(WidgetWindow& window) {
        for (auto* const button : window.findChildren<QToolButton*>()) {
            if (button->accessibleName() == QLatin1String("Menu of the widget")) {
                button->click();
            }
        }
        std::map<std::string, QAction*> items;
        for (auto* const action : window.findChildren<QMenu*>().back()->actions()) {
            items[toUtf8(action->text())] = action;
        }
        return items;
    }
    void choose(WidgetWindow& window, const std::string& item) {
        menuOf(window).at(item)->trigger();
        if (auto* const menu = QApplication::activePopupWidget()) {
            menu->close();
        }
    }
    int completions() {
        app->context.refresh();
        return static_cast<int>(app->context.count<model::Entry>(model::Entry::completedTodos()));
    }

    tests::RecordingLog log;
    tests::TemporaryFolder folder;
    std::filesystem::path file = folder / "Primary.store";
    tests::FakeClock clock{kNow};
    tests::FakeRunLoop runLoop;
    app::FileUserDefaults defaults{folder / "settings.json"};
    app::AppPreferences preferences{defaults, log};
    Theme theme{preferences};
    tests::StillStyle still;
    DateTexts dates{"en_US"};
    base::TextFolding folding{"en_US"};
    services::NoReminders reminders;
    schedule::NoNotifications notifications;
    tests::NotedDesktop desktop;
    std::unique_ptr<store::ModelContainer> appContainer;
    std::unique_ptr<tests::StoreClient> app;
    model::Board* inbox = nullptr;
    int announced = 0;
    std::unique_ptr<WidgetStore> store;
    std::unique_ptr<WidgetSet> set;
};

} // namespace korvex::ui
