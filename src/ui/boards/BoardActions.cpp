#include "ui/boards/BoardActions.h"

#include "base/Collation.h"
#include "model/Entry.h"
#include "ui/boards/BoardIconPopover.h"
#include "ui/boards/BoardListing.h"
#include "ui/kit/controls/MenuItems.h"
#include "ui/kit/overlays/ConfirmationSheet.h"
#include "ui/kit/words/Refusal.h"

#include <QMenu>

#include <algorithm>

namespace korvex::ui {

BoardActions::BoardActions(services::BoardService& boards, const base::Clock& clock,
                           const Theme& theme, QWidget& window)
    : m_boards(boards), m_clock(clock), m_theme(theme), m_window(window) {}

void BoardActions::addTo(QMenu& menu, model::Board& board, BoardListing& where) {
    const auto canChange = m_boards.allowsChanges();
    const MenuItems items(menu, *this);
    if (board.isArchived()) {
        items.add(tr("Unarchive"), {}, [this, &board] { unarchive(board); }).setEnabled(canChange);
    } else {
        items.add(tr("Rename"), Qt::Key_F2, [&board, &where] { where.rename(board); })
            .setEnabled(canChange);
        items
            .add(tr("Icon and color…"), {},
                 [this, &board, &where] { chooseIcon(board, anchorOf(board, where)); })
            .setEnabled(canChange);
        items.add(tr("Archive"), {}, [this, &board] { archive(board); })
            .setEnabled(canChange && !board.isSystem());
    }
    items.add(tr("Delete…"), {}, [this, &board] { confirmDeletion(board); })
        .setEnabled(canChange && !board.isSystem());
    if (!board.isArchived()) {
        menu.addSeparator();
        addMoves(menu, board);
        addSorting(menu);
    }
}

void BoardActions::addMoves(QMenu& menu, const model::Board& board) {
    std::vector<model::Board*> boards;
    perform([&] { boards = services::BoardService::activeBoards(m_boards.boards()); });
    if (boards.empty()) {
        return;
    }
    const MenuItems items(menu, *this);
    items.add(tr("Move up"), Qt::ALT | Qt::Key_Up, [this, &board] { move(board, -1); })
        .setEnabled(m_boards.allowsChanges() && boards.front() != &board);
    items.add(tr("Move down"), Qt::ALT | Qt::Key_Down, [this, &board] { move(board, 1); })
        .setEnabled(m_boards.allowsChanges() && boards.back() != &board);
}

void BoardActions::addSorting(QMenu& menu) {
    auto* const sorting = menu.addMenu(tr("Sort boards by name"));
    const MenuItems items(*sorting, *this);
    using Direction = services::BoardService::Direction;
    items.add(tr("Ascending"), {}, [this] { sort(Direction::ascending); });
    items.add(tr("Descending"), {}, [this] { sort(Direction::descending); });
    sorting->setEnabled(m_boards.allowsChanges());
}

void BoardActions::move(const model::Board& board, int offset) {
    perform([&] {
        const auto boards = services::BoardService::activeBoards(m_boards.boards());
        const auto found = std::find(boards.begin(), boards.end(), &board) - boards.begin();
        const auto target = found + offset;
        if (target >= 0 && target < std::ssize(boards) && target != found) {
            m_boards.moveBoard(board.id(), boards[static_cast<std::size_t>(target)]->id(),
                               offset < 0 ? model::EntryPlacement::before
                                          : model::EntryPlacement::after,
                               m_clock.now());
        }
    });
}

void BoardActions::chooseIcon(model::Board& board, const QRect& globalAnchor) {
    auto* const popover = new BoardIconPopover(board, m_boards, m_clock, m_theme, &m_window);
    popover->openAt(globalAnchor);
    popover->setFocus();
}

void BoardActions::archive(model::Board& board) {
    perform([&] {
        m_boards.setArchived(true, board, m_clock.now());
        Q_EMIT archived(&board);
    });
}

void BoardActions::unarchive(model::Board& board) {
    perform([&] { m_boards.setArchived(false, board, m_clock.now()); });
}

void BoardActions::confirmDeletion(model::Board& board) {
    QString message;
    perform([&] {
        const auto entries = board.entries();
        const auto open = std::count_if(entries.begin(), entries.end(),
                                        [](const auto* entry) { return !entry->isCompleted(); });
        message = tr("Open entries to delete: %L1.").arg(open) + QLatin1Char('\n') +
                  toQString(board.deletionMessage());
    });
    if (message.isEmpty()) {
        return;
    }
    auto* const sheet = new ConfirmationSheet(message, tr("Delete board"), m_theme, &m_window);
    connect(sheet, &ConfirmationSheet::confirmed, this,
            [this, &board] { perform([&] { m_boards.deleteBoard(board); }); });
    sheet->ask();
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

QRect BoardActions::anchorOf(const model::Board& board, const BoardListing& where) const {
    // Where it has gone out of sight the window's corner has to do.
    const auto corner = m_theme.space(Space::wide);
    return where.placeOf(board).value_or(
        QRect(m_window.mapToGlobal(QPoint(corner, corner)), QSize(1, 1)));
}

} // namespace korvex::ui
