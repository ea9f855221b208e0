#include "ui/boards/BoardActions.h"

#include "base/Collation.h"
#include "ui/boards/BoardIconPopover.h"
#include "ui/boards/BoardListing.h"
#include "ui/kit/ConfirmationSheet.h"
#include "ui/kit/Refusal.h"

#include <QMenu>

namespace korvex::ui {

BoardActions::BoardActions(BoardListing& listing, services::BoardService& boards,
                           const base::Clock& clock, const Theme& theme, QWidget& window)
    : m_listing(listing), m_boards(boards), m_clock(clock), m_theme(theme), m_window(window) {}

void BoardActions::addTo(QMenu& menu, model::Board& board) {
    if (board.isArchived()) {
        connect(menu.addAction(tr("Unarchive")), &QAction::triggered, this,
                [this, &board] { unarchive(board); });
        connect(menu.addAction(tr("Delete…")), &QAction::triggered, this,
                [this, &board] { confirmDeletion(board, anchorOf(board)); });
        return;
    }
    auto* const rename = menu.addAction(tr("Rename"));
    rename->setShortcut(Qt::Key_F2);
    rename->setShortcutVisibleInContextMenu(true);
    connect(rename, &QAction::triggered, this, [this, &board] { m_listing.rename(board); });
    connect(menu.addAction(tr("Icon and color…")), &QAction::triggered, this,
            [this, &board] { chooseIcon(board, anchorOf(board)); });
    auto* const archiving = menu.addAction(tr("Archive"));
    archiving->setEnabled(!board.isSystem());
    connect(archiving, &QAction::triggered, this, [this, &board] { archive(board); });
    auto* const remove = menu.addAction(tr("Delete…"));
    remove->setEnabled(!board.isSystem());
    connect(remove, &QAction::triggered, this,
            [this, &board] { confirmDeletion(board, anchorOf(board)); });
    menu.addSeparator();
    auto* const sorting = menu.addMenu(tr("Sort boards by name"));
    using Direction = services::BoardService::Direction;
    connect(sorting->addAction(tr("Ascending")), &QAction::triggered, this,
            [this] { sort(Direction::ascending); });
    connect(sorting->addAction(tr("Descending")), &QAction::triggered, this,
            [this] { sort(Direction::descending); });
}

void BoardActions::chooseIcon(model::Board& board, const QRect& globalAnchor) {
    auto* const popover = new BoardIconPopover(board, m_boards, m_clock, m_theme, &m_window);
    popover->openAt(globalAnchor);
    popover->setFocus();
}

void BoardActions::archive(model::Board& board) {
    perform([&] { m_boards.setArchived(true, board, m_clock.now()); });
}

void BoardActions::unarchive(model::Board& board) {
    perform([&] { m_boards.setArchived(false, board, m_clock.now()); });
}

void BoardActions::confirmDeletion(model::Board& board, const QRect& globalAnchor) {
    QString message;
    perform([&] { message = toQString(board.deletionMessage()); });
    if (message.isEmpty()) {
        return;
    }
    auto* const sheet = new ConfirmationSheet(message, tr("Delete board"), m_theme, &m_window);
    connect(sheet, &ConfirmationSheet::confirmed, this,
            [this, &board] { perform([&] { m_boards.deleteBoard(board); }); });
    sheet->openAt(globalAnchor);
    sheet->setFocus();
}

void BoardActions::sort(services::BoardService::Direction direction) {
    perform([&] { m_boards.sortBoardsByName(direction, base::NameOrder(), m_clock.now()); });
}

template <typename Operation>
void BoardActions::perform(Operation&& operation) {
    if (const auto message = refusal(operation)) {
        Q_EMIT refused(*message);
    }
}

QRect BoardActions::anchorOf(const model::Board& board) const {
    // Where the list is hidden the window's corner has to do.
    return m_listing.rowOf(board).value_or(
        QRect(m_window.mapToGlobal(QPoint(16, 48)), QSize(1, 1)));
}

} // namespace korvex::ui
