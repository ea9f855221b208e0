#pragma once

#include "base/Signal.h"
#include "base/Uuid.h"
#include "model/EntryType.h"
#include "ui/entries/EntryItemDelegate.h"
#include "ui/kit/LazyListView.h"
#include "ui/todos/LeavingRows.h"

#include <QPersistentModelIndex>

#include <optional>

namespace korvex::ui {

class RowEditor;

/// The list on a board's page: draws rows, hosts the editor in one of them, and turns pointer and
/// keys into requests. It changes nothing itself.
class EntryListView final : public LazyListView {
    Q_OBJECT

public:
    EntryListView(EntryListModel& model, const Workspace& workspace, const Theme& theme,
                  QWidget* parent = nullptr);
    ~EntryListView() override;

    /// The editor takes the place of the row until `removeEditor`, wherever the row goes.
    void placeEditor(RowEditor& editor, int row);
    /// Scrolls until this part of the editor is in sight.
    void revealInEditor(const QRect& part);
    void removeEditor();
    /// -1 while nothing is edited.
    int editedRow() const;

    void setCurrentRow(int row);
    /// As `setCurrentRow`, in the middle.
    void showRow(int row);
    int currentRow() const { return currentIndex().row(); }
    /// The due label, or where there is none the place for it, in global coordinates.
    QRect scheduleAnchor(int row) const;
    QRect globalRect(int row) const;

    /// "Now" has moved: labels are made anew when they are drawn.
    void forgetLabels();

    /// The attachments of a row, and where in the viewport they begin; absent for a row that has
    /// none. Valid until the next call.
    struct Chips {
        const AttachmentChips* chips;
        QPoint topLeft;
    };
    std::optional<Chips> chipsOf(int row) const;
    /// One of them, in the coordinates of the viewport; without an identifier where a list that
    /// cannot be read is told of.
    struct Chip {
        model::Entry* entry;
        std::optional<base::Uuid> id;
        QRect rect;
    };
    std::optional<Chip> chipAt(const QPoint& position) const;
    void setMarks(const AttachmentMarks& marks);
    /// While something is dragged over the list: near its edges it scrolls.
    void setDragScrolling(bool scrolls);

    /// Lets the row of a todo shrink and fade away, then calls `done`.
    void animateLeaving(const model::Entry& entry, std::function<void()> done);

Q_SIGNALS:
    /// The caret is to stand at this UTF-16 offset; -1: at the end.
    void editRequested(int row, int caret);
    void editorPlaced(korvex::ui::RowEditor* editor);
    void toggleRequested(int row);
    void scheduleRequested(int row);
    void newTodoRequested();
    void completedToggled();
    void moveRequested(int row, int offset);
    void menuRequested(int row, const QPoint& globalPosition);
    void dropped(const korvex::base::Uuid& id, int targetRow,
                 korvex::model::EntryPlacement placement);

protected:
    int measuredHeight(int row) override;
    int estimatedHeight(int row) const override;
    void rowsPlaced() override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    enum class Zone { none, sign, schedule, chip, row };
    struct DropTarget {
        int row;
        model::EntryPlacement placement;
    };

    Zone zoneAt(int row, const QPoint& position) const;
    bool isText(int row) const;
    /// The link of a text entry under a point of the viewport, if it may be opened; else empty.
    QString linkAt(const QPoint& position) const;
    int caretAt(int row, const QPoint& position) const;
    /// What the attachments take of a row that is edited.
    int chipsExtent(int row) const;
    void updateCursor(const QPoint& position, Qt::KeyboardModifiers modifiers);
    void setHoveredRow(int row);
    void activate(int row);
    std::optional<DropTarget> dropTargetAt(const QPoint& position) const;
    void setDropTarget(std::optional<DropTarget> target);
    void applyTheme();

    EntryListModel& m_model;
    const Theme& m_theme;
    EntryItemDelegate* m_delegate;
    LeavingRows* m_leaving;
    mutable std::optional<EntryHeightEstimate> m_estimate;
    RowEditor* m_editor = nullptr;
    QPersistentModelIndex m_editedIndex;
    std::optional<DropTarget> m_dropTarget;
    base::Subscription m_codeArrivals;
    int m_pressedRow = -1;
    QPoint m_pressedAt;
    Zone m_pressedZone = Zone::none;
};

} // namespace korvex::ui
