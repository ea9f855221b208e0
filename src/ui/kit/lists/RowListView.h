#pragma once

#include "ui/kit/lists/ArrivingRows.h"
#include "ui/kit/lists/LazyListView.h"
#include "ui/kit/theme/Theme.h"

#include <QElapsedTimer>

#include <optional>

namespace korvex::ui {

/// What of a row a point is on. All but the body react to a press of their own.
enum class RowPart {
    /// No row, or one that cannot be chosen.
    none,
    /// The circle or icon at the beginning of the row.
    sign,
    /// The label at the end of the row or under its text.
    label,
    chip,
    body,
};

/// A list of rows with parts, as the windows have them: tells the delegate which row is under the
/// pointer, shows where it can be pressed, finds out what was clicked, and asks for a row's menu by
/// pointer and keyboard. Rows that cannot be chosen, as headings, take part in none of this. Stands
/// on the colour of the content, its rows in the column of the page. Main thread.
class RowListView : public LazyListView {
    Q_OBJECT

public:
    RowListView(const Theme& theme, QWidget* parent);

    Column column() const override;
    /// Chooses the row and scrolls until it is in sight.
    virtual void setCurrentRow(int row);
    /// Makes the row the current one and takes the keyboard there. False for a row below 0.
    bool goTo(int row);
    /// The number of the chosen row, or -1.
    int currentRow() const { return currentIndex().row(); }
    /// The row on whose sign the pointer is, as far as it is the pointer that is used and no key;
    /// -1 for none.
    int pointedSign() const;
    /// Where a part of the viewport lies on the screen.
    QRect globalRect(const QRect& part) const;
    /// Labels and layouts are made anew when they are drawn: "now" has moved, or the theme changed.
    void forgetLabels();

Q_SIGNALS:
    void menuRequested(int row, const QPoint& globalPosition);

protected:
    /// Which part of a row that can be chosen lies under a point of the viewport.
    virtual RowPart partAt(int row, const QPoint& position) const = 0;
    /// A part was pressed and let go with the left button.
    virtual void clicked(int row, RowPart part, const QMouseEvent& event) = 0;
    /// Whether a pointer that moves on with the button held down chooses or drags rows.
    virtual bool isDragBegun(RowPart /*pressed*/) const { return true; }
    /// The body of a row was pressed twice. Two quick presses of a sign are one.
    virtual void doubleClicked(int /*row*/, const QPoint& /*position*/) {}
    struct Tip {
        QString text;
        /// What it is about, in the viewport.
        QRect place;
    };
    /// What a pointer that rests on this point of a row is told; an empty text for nothing.
    virtual Tip tipAt(int /*row*/, const QPoint& /*position*/) const { return {}; }
    /// Whether a press at this point does something at once.
    virtual bool isPressable(const QPoint& position, Qt::KeyboardModifiers modifiers) const;
    virtual bool hasMenu(int) const { return false; }
    /// What was laid out for this row, or for all rows, is out of date.
    virtual void forgetLayout(int) {}
    virtual void forgetLayouts() {}
    /// Is to be called at the end of the constructor of a view that can be laid out; later changes
    /// of the theme come by themselves.
    void applyTheme();

    const Theme& theme() const { return m_theme; }
    /// What is free under the last row: so much that a message over the foot of the list covers
    /// none when that is scrolled to its end, and moves none when it comes and goes.
    int footRoom() const;
    /// The part under a point of the viewport, of whatever row that is.
    RowPart partUnder(const QPoint& position) const;
    /// Whether a rectangle of a row, and a little around it, holds a point of that row.
    bool isOn(const QRect& place, const QPoint& local) const;
    /// The row under the pointer; -1 for none.
    int hoveredRow() const { return m_hoveredRow; }
    /// The part that the last press was on.
    RowPart pressedPart() const { return m_pressedPart; }
    /// Shows what the pointer is over.
    void follow(const QMouseEvent& event);
    /// Other rows have come under a pointer that rests.
    void rowsPlaced() override;
    void updateCursor(const QPoint& position, Qt::KeyboardModifiers modifiers);
    static bool isByTab(const QFocusEvent& event);
    /// Whether the key is meant to tick what is chosen: Space alone, not held down, and not the
    /// one between two words that somebody types.
    bool isTick(const QKeyEvent& event) const;

    QStyle::State stateOf(const QModelIndex& index) const override;
    double opacityOf(const QModelIndex& index) const override;
    void rowsInserted(const QModelIndex& parent, int first, int last) override;
    void dataChanged(const QModelIndex& topLeft, const QModelIndex& bottomRight,
                     const QList<int>& roles) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void leaveEvent(QEvent* event) override;
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    /// Letting go of the button is no click any more.
    void forgetPress() { m_pressed = QPersistentModelIndex(); }
    bool canBeChosen(const QModelIndex& index) const;
    void showPointed(Qt::KeyboardModifiers modifiers);
    void setHoveredRow(int row);

    const Theme& m_theme;
    ArrivingRows m_arriving{*this};
    int m_hoveredRow = -1;
    /// Where the pointer is in the viewport, until it leaves.
    std::optional<QPoint> m_pointer;
    /// Since a key was pressed, the pointer was not used.
    bool m_isByKeys = false;
    QPersistentModelIndex m_pressed;
    RowPart m_pressedPart = RowPart::none;
    /// Since a letter was typed.
    QElapsedTimer m_sinceLetter;
};

} // namespace korvex::ui
