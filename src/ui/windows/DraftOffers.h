#pragma once

#include "ui/entries/BoardPage.h"
#include "ui/workspace/Workspace.h"

#include <QObject>

#include <deque>

namespace korvex::ui {

class Navigation;

/// Offers what was typed and is stored nowhere. Of what an earlier run has left, the oldest draft
/// at once, in the editor of the board that it was typed on, each other one when the one before it
/// is settled; and what was discarded when the user wants it back. Main thread.
class DraftOffers final : public QObject {
    Q_OBJECT

public:
    DraftOffers(const Workspace& workspace, Navigation& navigation, BoardPage& boardPage,
                QObject* parent);

    /// To be called once, when the window has come up.
    void start();

private:
    struct Waiting {
        app::Draft draft;
        BoardPage::Origin origin;
    };

    void showNext();
    void offerRest();
    void tellUnreadable();
    /// What is said of it on this board.
    QString whyOn(const model::Board& board, const Waiting& waiting) const;
    /// Where the draft can be gone on with.
    model::Board* boardOf(const app::Draft& draft) const;

    const Workspace& m_workspace;
    Navigation& m_navigation;
    BoardPage& m_boardPage;
    std::deque<Waiting> m_waiting;
    /// Files that the user is still to be told of.
    std::vector<std::filesystem::path> m_unreadable;
    /// The message that offers the next draft, once it was said.
    ErrorBanner::MessageId m_offer = 0;
};

} // namespace korvex::ui
