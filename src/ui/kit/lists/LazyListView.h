#pragma once

#include "ui/kit/lists/RowAnchor.h"
#include "ui/kit/lists/RowHeights.h"
#include "ui/kit/speech/RowSpeech.h"
#include "ui/kit/theme/Column.h"

#include <QListView>
#include <QPersistentModelIndex>

#include <vector>

namespace korvex::ui {

/// A list whose rows have heights of their own and cost nothing while they are out of sight: only
/// rows that are seen are measured, all others are estimated. When an estimate turns out wrong,
/// what is on the screen stays where it is. Rows may stand in a column of the view; beside them is
/// nothing to press, and everything to scroll. Selection, keyboard, drag and drop are those of
/// QListView; but a row that is higher than the view is walked through by the arrows before the
/// next one is chosen. What a screen reader is told is in `RowSpeech`.
class LazyListView : public QListView, public RowSpeech {
    Q_OBJECT

public:
    explicit LazyListView(QWidget* parent = nullptr);

    void setModel(QAbstractItemModel* model) override;
    QRect visualRect(const QModelIndex& index) const override;
    QModelIndex indexAt(const QPoint& point) const override;
    /// The row that stands at this height of the viewport, or beside which that is.
    QModelIndex indexBeside(int y) const;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    /// Scrolls until the first of these rows is in sight, and as many of the others as there is
    /// room for.
    void scrollToRows(int first, int last);
    void doItemsLayout() override;
    void reset() override;

    /// Measures a row again, where it stands; what is above it on the screen keeps its place.
    void measureAgain(int row);
    /// Where the rows stand in the viewport, each laid out for this width.
    virtual Column column() const { return {.left = 0, .width = viewport()->width()}; }
    /// Measures all rows anew, for another width or font; the first in sight keeps its place.
    void measureAllAgain();
    /// The first and the last row in sight; -1 and -1 when there are none.
    std::pair<int, int> visibleRows() const;

protected:
    /// The height of a row at the width of the column, exactly.
    virtual int measuredHeight(int row) = 0;
    /// A guess at almost no cost, for `measuredWidth()`: it is asked of every row.
    virtual int estimatedHeight(int row) const = 0;
    /// The width of the column that the rows' heights are for.
    int measuredWidth() const { return m_measuredWidth; }
    /// How far a row reaches, which may be beyond the end of the column.
    virtual int widthOf(int /*row*/) const { return column().width; }
    /// What the delegate is told of a row that it paints.
    virtual QStyle::State stateOf(const QModelIndex& index) const;
    /// How much of a row is seen, of 0 to 1, while it comes or goes.
    virtual double opacityOf(const QModelIndex&) const { return 1; }
    /// Called after the rows have found new places on the screen.
    virtual void rowsPlaced() {}
    /// The rows whose height is known: a part of those that have been in sight.
    std::vector<int> measuredRows() const;
    /// Leaves this much room under the last row.
    void setBottomMargin(int margin) { m_bottomMargin = margin; }

    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    int horizontalOffset() const override { return 0; }
    /// Escape and letters are left to the window: QListView would search by them.
    void keyPressEvent(QKeyEvent* event) override;
    int verticalOffset() const override;
    void setSelection(const QRect& rect, QItemSelectionModel::SelectionFlags command) override;
    QRegion visualRegionForSelection(const QItemSelection& selection) const override;
    QModelIndexList selectedIndexes() const override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void selectionChanged(const QItemSelection& selected,
                          const QItemSelection& deselected) override;
    void rowsInserted(const QModelIndex& parent, int first, int last) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;

private:
    /// Measures what is in sight around the anchor and sets range and value of the scroll bar so
    /// that the anchor stays where it is, as far as the ends of the list allow.
    void settle(RowAnchor anchor);
    void measureAround(const RowAnchor& anchor);
    /// The row's height, exactly: it is measured where it was not yet.
    int exactHeight(int row);
    /// The row that stands at the top of the viewport.
    RowAnchor anchorAtTop() const;
    void setScrolling();
    void rowsRemoved(int first, int last);
    void rowsMoved(int first, int last, int destination);
    void forgetAllHeights();
    /// Moves on inside the current row, if it goes on out of sight in the direction of this key.
    bool scrollsInside(int key);

    RowHeights m_heights;
    RowAnnouncer m_announcer{*this};
    /// The first row on the screen.
    RowAnchor m_anchor;
    /// The anchor's row while all rows change places.
    QPersistentModelIndex m_anchorIndex;
    int m_bottomMargin = 0;
    /// The width of the column for which rows were measured.
    int m_measuredWidth = -1;
    bool m_isSettling = false;
};

} // namespace korvex::ui
