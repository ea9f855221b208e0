#pragma once

#include "base/Clock.h"
#include "services/BoardService.h"
#include "ui/kit/theme/Theme.h"

#include <QObject>

class QMenu;
class QWidget;

namespace korvex::ui {

class BoardListing;

/// What can be done with a board: its menu, and the carrying out. What is not allowed for a board
/// is disabled in its menu. Main thread.
class BoardActions final : public QObject {
    Q_OBJECT

public:
    BoardActions(services::BoardService& boards, const base::Clock& clock, const Theme& theme,
                 QWidget& window);

    /// The entries on this board, to be put into any menu. `where` is what the menu was opened on,
    /// and outlives it: there the board is renamed, and there panels open.
    void addTo(QMenu& menu, model::Board& board, BoardListing& where);
    void chooseIcon(model::Board& board, const QRect& globalAnchor);
    void archive(model::Board& board);
    void unarchive(model::Board& board);
    void confirmDeletion(model::Board& board);
    /// Down by so many places among the active boards, up where it is negative; not beyond the
    /// ends.
    void move(const model::Board& board, int offset);

Q_SIGNALS:
    void refused(const QString& message);
    /// The user put it away, and may want it back.
    void archived(korvex::model::Board* board);

private:
    void addMoves(QMenu& menu, const model::Board& board);
    void addSorting(QMenu& menu);
    void sort(services::BoardService::Direction direction);
    template <typename Operation>
    void perform(Operation&& operation);
    QRect anchorOf(const model::Board& board, const BoardListing& where) const;

    services::BoardService& m_boards;
    const base::Clock& m_clock;
    const Theme& m_theme;
    QWidget& m_window;
};

} // namespace korvex::ui
