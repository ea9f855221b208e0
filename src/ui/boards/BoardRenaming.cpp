#include "ui/boards/BoardRenaming.h"

#include "ui/boards/BoardListing.h"
#include "ui/kit/words/Refusal.h"

#include <QTimer>

namespace korvex::ui {

BoardRenaming::BoardRenaming(services::BoardService& boards, const base::Clock& clock,
                             BoardListing& listing)
    : m_boards(boards), m_clock(clock), m_listing(listing) {}

std::optional<QString> BoardRenaming::store(model::Board& board, const QString& name) {
    auto refused = refusal([&] { m_boards.renameBoard(board, toUtf8(name), m_clock.now()); });
    // Of a board that another program deleted meanwhile there is nothing left to correct.
    if (refused && m_boards.board(board.id())) {
        // Soon: the field that it was typed in is being closed.
        m_isNameComingBack = true;
        QTimer::singleShot(0, this, [this, id = board.id(), name] {
            m_isNameComingBack = false;
            if (auto* const again = m_boards.board(id)) {
                m_listing.rename(*again, name);
            }
        });
    }
    return refused;
}

} // namespace korvex::ui
