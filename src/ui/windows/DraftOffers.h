#pragma once

#include "ui/workspace/Workspace.h"

#include <QObject>

#include <deque>

namespace korvex::ui {

class BoardPage;
class Navigation;

/// Offers what was typed in an earlier run and could not be stored: the oldest draft at once, in
/// the editor of the board that it was typed on, each other one when the one before it is settled.
/// Main thread.
class DraftOffers final : public QObject {
    Q_OBJECT

public:
    DraftOffers(const Workspace& workspace, Navigation& navigation, BoardPage& boardPage,
                QObject* parent);

    /// To be called once, when the window has come up.
    void start();

private:
    void showNext();
    void offerRest();
    void tellUnreadable();
    /// Where the draft can be gone on with.
    model::Board* boardOf(const app::Draft& draft) const;

    const Workspace& m_workspace;
    Navigation& m_navigation;
    BoardPage& m_boardPage;
    std::deque<app::Draft> m_waiting;
    /// Files that the user is still to be told of.
    std::vector<std::filesystem::path> m_unreadable;
    /// Whether the banner says what is edited.
    bool m_isShown = false;
};

} // namespace korvex::ui
