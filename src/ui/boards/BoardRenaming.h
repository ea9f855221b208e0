#pragma once

#include "base/Clock.h"
#include "services/BoardService.h"

#include <QObject>
#include <QString>

#include <optional>

namespace korvex::ui {

class BoardListing;

/// Stores the names that are typed for boards. A refused one goes back into its field, to be
/// corrected there or given up. Main thread.
class BoardRenaming final : public QObject {
public:
    /// `listing` is where they are typed; all of it outlives the renaming.
    BoardRenaming(services::BoardService& boards, const base::Clock& clock, BoardListing& listing);

    /// Why it was refused; absent when it is stored.
    std::optional<QString> store(model::Board& board, const QString& name);
    /// Whether a refused name is about to be back in its field: then that is not to be left.
    bool isNameComingBack() const { return m_isNameComingBack; }

private:
    services::BoardService& m_boards;
    const base::Clock& m_clock;
    BoardListing& m_listing;
    bool m_isNameComingBack = false;
};

} // namespace korvex::ui
