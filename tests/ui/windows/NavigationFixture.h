#pragma once

#include "ui/windows/Navigation.h"

#include "support/RestoredStore.h"
#include "ui/WindowFixture.h"
#include "ui/boards/BoardListing.h"
#include "ui/boards/BoardPicker.h"
#include "ui/boards/RowDragTypes.h"
#include "ui/boards/SidebarRow.h"
#include "ui/entries/BoardPage.h"
#include "ui/entries/ShownRefusal.h"
#include "ui/entries/TypingTimer.h"
#include "ui/kit/controls/SearchField.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/kit/pages/NoticeLine.h"
#include "ui/overview/SearchPage.h"
#include "ui/todos/SchedulePopover.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/Sidebar.h"

#include <QAction>
#include <QDropEvent>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QScrollBar>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace korvex::tests {

using namespace ui;

/// A window with the Inbox and the board "Work", and what is asked of its parts.
class NavigationFixture : public WindowFixture {
protected:
    NavigationFixture() { work = &own.boards.createBoard("Work", kNow); }

    void open() {
        window = std::make_unique<MainWindow>(workspace, theme);
        window->resize(800, 500);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
    }
    Navigation& navigation() { return *window->findChild<Navigation*>(); }
    BoardPage& page() { return *window->findChild<BoardPage*>(); }
    Sidebar& sidebar() { return *window->findChild<Sidebar*>(); }
    BoardListView& boards() { return *window->findChild<BoardListView*>(); }
    EntryListView& list() { return page().list(); }
    SearchField& field() { return sidebar().searchField(); }
    SearchListView& results() { return *window->findChild<SearchListView*>(); }
    static void key(int which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(which), modifiers);
    }
    static void type(const char* text) {
        QTest::keyClicks(QApplication::focusWidget(), QString::fromUtf8(text));
    }
    void search(const char* text) {
        key(Qt::Key_F, Qt::ControlModifier);
        type(text);
    }
    std::string currentText() { return toUtf8(list().currentIndex().data().toString()); }
    SidebarRow& row(const char* name) {
        for (auto* const each : sidebar().findChildren<SidebarRow*>()) {
            if (each->text() == QString::fromUtf8(name)) {
                return *each;
            }
        }
        throw std::logic_error(name);
    }
    std::vector<model::Entry*> addMany(int count) {
        std::vector<std::string> contents;
        for (int i = 0; i < count; ++i) {
            contents.push_back("todo " + std::to_string(i));
        }
        return add(contents);
    }
    /// What a drop of the entry on the middle of a board's row does; whether it was accepted.
    bool drop(const model::Entry& entry, const model::Board& board) {
        const int row = sidebar().boards().rowOf(board);
        const auto place = boards().visualRect(sidebar().boards().index(row, 0)).center();
        QMimeData payload;
        payload.setData(QString::fromLatin1(kEntryDragType),
                        QByteArray::fromStdString(entry.id().text()));
        QDragEnterEvent enter(place, Qt::MoveAction, &payload, Qt::LeftButton, {});
        QApplication::sendEvent(boards().viewport(), &enter);
        QDragMoveEvent move(place, Qt::MoveAction, &payload, Qt::LeftButton, {});
        QApplication::sendEvent(boards().viewport(), &move);
        if (!move.isAccepted()) {
            return false;
        }
        QDropEvent event(place, Qt::MoveAction, &payload, Qt::LeftButton, {});
        QApplication::sendEvent(boards().viewport(), &event);
        return true;
    }

    model::Board* work = nullptr;
    std::unique_ptr<MainWindow> window;
};

} // namespace korvex::tests
