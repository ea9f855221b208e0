#pragma once

#include "base/Uuid.h"
#include "model/EntryPlacement.h"
#include "model/EntryType.h"
#include "ui/boards/BoardListModel.h"
#include "ui/kit/speech/RowSpeech.h"
#include "ui/kit/theme/Theme.h"

#include <QListView>

#include <optional>

namespace korvex::ui {

/// The boards in the sidebar: chosen, renamed in place and reordered by dragging. Changes nothing
/// itself.
class BoardListView final : public QListView, public RowSpeech {
    Q_OBJECT

public:
    BoardListView(BoardListModel& model, const Theme& theme, QWidget* parent = nullptr);

    void setCurrentBoard(const model::Board& board);
    /// No board is shown.
    void clearChoice();
    /// Opens the editor of its name; with `typed` in it rather than the name.
    void rename(const model::Board& board, const QString& typed = {});
    /// Closes that editor; what was typed there is taken.
    void endRenaming();
    enum class End { top, bottom };
    /// Takes the keyboard, on the first or the last board when none is shown.
    void focusEnd(End end);
    /// The list is as high as its boards, so that what follows stands right under them.
    QSize sizeHint() const override;

Q_SIGNALS:
    void boardChosen(korvex::model::Board* board);
    void menuRequested(korvex::model::Board* board, const QPoint& globalPosition);
    void renamed(korvex::model::Board* board, const QString& name);
    /// The editor of a name is closed; with Escape, what was typed there is given up.
    void renamingEnded();
    void renamingGivenUp();
    void dropped(const korvex::base::Uuid& id, const korvex::base::Uuid& target,
                 korvex::model::EntryPlacement placement);
    /// An entry was dropped on a board that can take it.
    void entryDropped(const korvex::base::Uuid& entry, korvex::model::Board* board);
    void returnPressed();
    /// Up was pressed on the first board.
    void leftUpwards();
    /// Down was pressed on the last board.
    void leftDownwards();
    /// The board is to stand this many places further down, or up where it is negative.
    void moveRequested(korvex::model::Board* board, int offset);

protected:
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void rowsAboutToBeRemoved(const QModelIndex& parent, int first, int last) override;
    void keyPressEvent(QKeyEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dragLeaveEvent(QDragLeaveEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void focusInEvent(QFocusEvent* event) override;
    std::vector<Action> actionsOf(int row) override;
    int rowInEditing() const override;

private:
    struct DropTarget {
        int row;
        model::EntryPlacement placement;
    };

    model::Board* currentBoard() const;
    std::optional<DropTarget> dropTargetAt(const QPoint& position) const;
    void setDropTarget(std::optional<DropTarget> target);
    /// The row of the board that takes the dragged entry at this place, -1 for none.
    int entryTargetAt(const QDropEvent& event) const;
    void setEntryTarget(int row);
    void paintEnds();
    void applyTheme();

    BoardListModel& m_model;
    const Theme& m_theme;
    RowAnnouncer m_announcer{*this};
    std::optional<DropTarget> m_dropTarget;
    int m_entryTarget = -1;
};

} // namespace korvex::ui
