#pragma once

#include "base/Uuid.h"
#include "ui/kit/lists/RowListView.h"
#include "ui/overview/TodoItemDelegate.h"
#include "ui/todos/LeavingRows.h"

#include <unordered_set>

namespace korvex::ui {

/// The list of a page with todos of all boards: draws rows and turns pointer and keys into
/// requests. Headings are passed over by the keyboard. It changes nothing itself.
class TodoListView final : public RowListView {
    Q_OBJECT

public:
    TodoListView(TodoListModel& model, const Theme& theme, QWidget* parent = nullptr);

    /// Does as in every list; the first todo brings its heading along into sight.
    void setCurrentRow(int row) override;
    /// The todo at this row or the next one below, else above it; -1 when there is none.
    int nearestTodo(int row) const;
    /// The height of a todo's row where the label stands that tells when it is due, in global
    /// coordinates; where its text stands if it has none.
    QRect scheduleAnchor(int row) const;

    /// The names of the boards that rows show: one column holds the longest of them.
    void setBoardNames(const QStringList& names);
    /// These records have changed: the rows of theirs that have been in sight are drawn anew.
    void entriesChanged(const std::unordered_set<base::Uuid>& ids);

    LeavingRows& leaving() { return m_leaving; }

Q_SIGNALS:
    void toggleRequested(int row);
    void scheduleRequested(int row);
    void openRequested(int row);
    void deletionRequested(int row);

protected:
    int measuredHeight(int row) override;
    int estimatedHeight(int row) const override;
    double opacityOf(const QModelIndex& index) const override;
    RowPart partAt(int row, const QPoint& position) const override;
    Tip tipAt(int row, const QPoint& position) const override;
    void clicked(int row, RowPart part, const QMouseEvent& event) override;
    bool hasMenu(int row) const override { return !m_model.isHeading(row); }
    QAccessible::Role roleOf(int row) const override;
    std::vector<Action> actionsOf(int row) override;
    void forgetLayout(int row) override { m_delegate->forget(row); }
    void forgetLayouts() override { m_delegate->forgetAll(); }
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyPressEvent(QKeyEvent* event) override;
    void doubleClicked(int row, const QPoint&) override { Q_EMIT openRequested(row); }
    /// Nothing is dragged here, and a drag over the rows chooses none.
    bool isDragBegun(RowPart) const override { return false; }
    void focusInEvent(QFocusEvent* event) override;

private:
    TodoListModel& m_model;
    TodoItemDelegate* m_delegate;
    LeavingRows m_leaving;
};

} // namespace korvex::ui
