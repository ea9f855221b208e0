#pragma once

#include "ui/StillStyle.h"
#include "ui/WindowFixture.h"
#include "ui/overview/TodoListPage.h"
#include "ui/overview/TodoListView.h"

#include <QPersistentModelIndex>
#include <QSignalSpy>

#include <gmock/gmock.h>

namespace korvex::tests {

/// A page of todos from all boards, with a clock that moves by itself when the test says so.
template <typename Page>
class TodoPageFixture : public WindowFixture {
protected:
    void SetUp() override {
        workspace.scheduleClock.start(*own.container);
        runLoop.runPosted();
    }

    void show() {
        list().setStyle(&still);
        page.resize(700, 500);
        page.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&page));
    }

    /// As the machine does it: the moment comes, and the timer fires a little later.
    void waitUntil(base::Instant moment) {
        const double seconds = moment - clock.now() + 0.06;
        clock.advance(seconds);
        runLoop.advance(seconds);
    }

    model::Entry& addTodo(const char* text, const model::TodoSchedule& schedule,
                          model::Board* board = nullptr) {
        return *own.entries
                    .createTodos({.contents = {text},
                                  .board = board ? *board : *inbox,
                                  .now = clock.now(),
                                  .schedule = schedule})
                    .front();
    }
    model::Entry& addCompleted(const char* text, base::Instant completedAt,
                               model::Board* board = nullptr) {
        auto& entry = addTodo(text, {}, board);
        own.entries.completeTodo(entry, clock.now(), completedAt);
        return entry;
    }

    /// What the rows say: "# Today", "[ ] Buy milk", "[x] Water plants".
    std::vector<std::string> rows() {
        std::vector<std::string> result;
        const auto& model = listModel();
        for (int row = 0; row < model.rowCount(); ++row) {
            const auto* const entry = model.entry(row);
            result.push_back((!entry                 ? "# "
                              : entry->isCompleted() ? "[x] "
                                                     : "[ ] ") +
                             ui::toUtf8(model.text(row)));
        }
        return result;
    }

    ui::TodoListView& list() { return *page.template findChild<ui::TodoListView*>(); }
    ui::TodoListModel& listModel() { return *qobject_cast<ui::TodoListModel*>(list().model()); }
    /// Where a row stands in the list's viewport.
    QRect rectOf(int row) { return list().visualRect(listModel().index(row, 0)); }
    void choose(const model::Entry& entry) {
        list().setFocus();
        list().setCurrentRow(listModel().rowOf(entry));
    }
    void key(int which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&list(), static_cast<Qt::Key>(which), modifiers);
    }
    std::string currentText() {
        const int row = list().currentRow();
        return row < 0 ? std::string() : ui::toUtf8(listModel().text(row));
    }

    StillStyle still;
    Page page{workspace, theme};
};

} // namespace korvex::tests
