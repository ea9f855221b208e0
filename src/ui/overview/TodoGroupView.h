#pragma once

#include "base/Uuid.h"
#include "ui/kit/LazyListView.h"
#include "ui/overview/TodoGroupDelegate.h"
#include "ui/todos/LeavingRows.h"

#include <unordered_set>

namespace korvex::ui {

/// The list of a page with todos of all boards: draws rows and turns pointer and keys into
/// requests. Headings are passed over by the keyboard. It changes nothing itself.
class TodoGroupView final : public LazyListView {
    Q_OBJECT

public:
    TodoGroupView(TodoGroupModel& model, const Workspace& workspace, const Theme& theme,
                  QWidget* parent = nullptr);

    void setCurrentRow(int row);
    int currentRow() const { return currentIndex().row(); }
    /// The todo at this row or the next one below, else above it; -1 when there is none.
    int nearestTodo(int row) const;
    /// In global coordinates.
    QRect detailRect(int row) const;
    QRect globalRect(int row) const;

    /// "Now" has moved: labels are made anew when they are drawn.
    void forgetLabels();
    /// The names of boards that rows may show.
    void setBoardNames(const QStringList& names);
    /// These records have changed: the rows of theirs that have been in sight are drawn anew.
    void entriesChanged(const std::unordered_set<base::Uuid>& ids);

    /// How many rows are laid out now.
    int layoutCount() const { return m_delegate->layoutCount(); }

    /// Lets the row of a todo shrink away, then calls `done`.
    void animateLeaving(const model::Entry& entry, std::function<void()> done);

Q_SIGNALS:
    void toggleRequested(int row);
    void scheduleRequested(int row);
    void openRequested(int row);
    void deletionRequested(int row);
    void menuRequested(int row, const QPoint& globalPosition);

protected:
    int measuredHeight(int row) override;
    int estimatedHeight(int row) const override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    enum class Zone { none, circle, detail, row };

    /// Of a row that is none of a todo: none.
    Zone zoneAt(int row, const QPoint& position) const;
    void setHoveredRow(int row);
    void applyTheme();

    TodoGroupModel& m_model;
    const Theme& m_theme;
    TodoGroupDelegate* m_delegate;
    LeavingRows* m_leaving;
    int m_pressedRow = -1;
    Zone m_pressedZone = Zone::none;
};

} // namespace korvex::ui
