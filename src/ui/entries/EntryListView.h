#pragma once

#include "base/Signal.h"
#include "ui/entries/EntryChips.h"
#include "ui/entries/EntryHits.h"
#include "ui/entries/EntryReordering.h"
#include "ui/entries/WideTables.h"
#include "ui/kit/lists/RowListView.h"
#include "ui/todos/LeavingRows.h"

#include <QMimeData>
#include <QPersistentModelIndex>

#include <optional>

namespace korvex::ui {

class RowEditor;

/// The list on a board's page: draws rows, hosts the editor in one of them, and turns pointer and
/// keys into requests. It changes nothing itself. Main thread.
class EntryListView final : public RowListView {
    Q_OBJECT

public:
    EntryListView(EntryListModel& model, richtext::CodeHighlighter& code, const Theme& theme,
                  QWidget* parent = nullptr);
    ~EntryListView() override;

    /// The editor takes the place of the row until `removeEditor`, wherever the row goes.
    void placeEditor(RowEditor& editor, int row);
    /// Scrolls until this part of the editor is in sight.
    void revealInEditor(const QRect& part);
    /// So many pixels at the foot are out of sight under a message: what is typed is not to be
    /// there, and the last rows can be scrolled out from under it.
    void coverFoot(int height);
    void removeEditor();
    /// The row in whose place the editor stands; -1 while nothing is edited.
    int editedRow() const;

    /// Chooses the row and scrolls it into the middle.
    void showRow(int row);
    /// The height of a todo's row where its due label stands, or would stand, in global
    /// coordinates.
    QRect scheduleAnchor(int row) const;

    EntryChips& chips() { return m_chips; }
    /// While something is dragged over the list, it scrolls near its edges.
    using RowListView::startAutoScroll;
    using RowListView::stopAutoScroll;

    LeavingRows& leaving() { return m_leaving; }

Q_SIGNALS:
    /// The caret is to stand at this UTF-16 offset; -1: at the end.
    void editRequested(int row, int caret);
    void editorPlaced(korvex::ui::RowEditor* editor);
    void toggleRequested(int row);
    void scheduleRequested(int row);
    void newTodoRequested();
    /// With no editor open: a new todo is to begin with this.
    void typed(const QString& text);
    /// What the clipboard holds is to become entries.
    void pasteRequested();
    void completedToggled();
    void moveRequested(int row, int offset);
    void dropped(const korvex::base::Uuid& id, const korvex::ui::EntryReordering::Place& place);
    /// Text was let go here; with no place, on a board without entries.
    void textDropped(const QMimeData* offered,
                     const std::optional<korvex::ui::EntryReordering::Place>& place);

protected:
    int measuredHeight(int row) override;
    int estimatedHeight(int row) const override;
    int widthOf(int row) const override;
    void resizeEvent(QResizeEvent* event) override;
    void rowsPlaced() override;
    double opacityOf(const QModelIndex& index) const override;
    RowPart partAt(int row, const QPoint& position) const override;
    Tip tipAt(int row, const QPoint& position) const override;
    bool isPressable(const QPoint& position, Qt::KeyboardModifiers modifiers) const override;
    bool hasMenu(int row) const override { return m_model.entry(row) != nullptr; }
    QAccessible::Role roleOf(int row) const override;
    void addState(int row, QAccessible::State& state) const override;
    std::vector<Action> actionsOf(int row) override;
    int rowInEditing() const override { return editedRow(); }
    void forgetLayout(int row) override { m_delegate->forget(row); }
    void forgetLayouts() override;
    void paintEvent(QPaintEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;

    // What comes from keys and pointer: EntryListInput.cpp
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    /// A press on the circle or the label is no beginning of a drag.
    bool isDragBegun(RowPart pressed) const override { return pressed == RowPart::body; }
    void clicked(int row, RowPart part, const QMouseEvent& event) override;
    void doubleClicked(int row, const QPoint& position) override;
    void wheelEvent(QWheelEvent* event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    EntryRowRoom room() const;
    /// Does what the row is for.
    void activate(int row);
    void endDrag();

    EntryListModel& m_model;
    EntryItemDelegate* m_delegate;
    LeavingRows m_leaving;
    EntryChips m_chips;
    EntryHits m_hits;
    WideTables m_tables;
    EntryReordering m_reordering;
    mutable std::optional<EntryHeightEstimate> m_estimate;
    RowEditor* m_editor = nullptr;
    QPersistentModelIndex m_editedIndex;
    base::Subscription m_codeArrivals;
    QPoint m_pressedAt;
    int m_coveredFoot = 0;
};

} // namespace korvex::ui
