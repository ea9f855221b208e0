#pragma once

#include "app/AppPreferences.h"
#include "services/BoardService.h"
#include "store/ModelContext.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/windows/PageKind.h"
#include "ui/workspace/ChangeCause.h"

#include <QObject>

namespace korvex::ui {

class BoardPage;
class Page;
class PageStack;
class Sidebar;

/// What the main window shows, a page and on the board's page a board, and the ways from one to
/// another. Follows the store: a board that is gone gives way to the Inbox. Main thread.
class Navigation final : public QObject {
    Q_OBJECT

public:
    /// What it leads through; all of it outlives the navigation.
    struct Views {
        Sidebar& sidebar;
        PageStack& pages;
        BoardPage& boardPage;
    };
    /// Whether the preferences are told of the board that is shown, and say which one to begin
    /// with: the boards that they name for a user are those of the user's own store.
    enum class LastBoard { forgotten, kept };
    Navigation(const Views& views, services::BoardService& boards, store::ModelContext& context,
               app::AppPreferences& preferences, LastBoard lastBoard, QObject* parent);

    /// The board that the preferences let the window begin with, or have behind the page that it
    /// begins with; none for the Inbox.
    static app::AppPreferences::BoardID launchBoardID(const app::AppPreferences& preferences,
                                                      LastBoard lastBoard);
    /// Shows what the preferences let the window begin with, and follows the store from now on.
    void start();
    /// The user has put other contents into the store: shows the board as it is there now, or the
    /// Inbox.
    void storeReplaced();

    PageKind currentPage() const;
    /// The page that is in sight.
    Page& page() const;
    /// Whether the board is what the window shows.
    bool isShown(const model::Board& board) const;
    /// Returns false when what is being edited cannot be left; then its page stays, and says why.
    bool showPage(PageKind page);
    void showBoard(model::Board& board);
    /// Shows the board and gives its list the keyboard.
    void openBoard(model::Board& board);
    /// Shows the entry on its board, chosen and in sight.
    void showEntry(model::Entry& entry);
    /// The board that is shown, or was before an archived one or before a page over all boards.
    /// False when there is none.
    bool showLastBoard();
    /// Goes from a page over all boards to the board, from an archived board to the list of them,
    /// from the search to where it was begun.
    void goBack();
    /// Goes to where the search was begun, without the keyboard.
    void leaveSearch();
    /// Gives it to the page that is shown.
    void takeKeyboard();
    /// Whether there is somewhere to go back to.
    bool canGoBack() const;

Q_SIGNALS:
    /// What is shown is another, or has another name.
    void changed();

private:
    /// False when what is being edited cannot be left.
    bool show(model::Board& board);
    /// Whether it stands in the sidebar.
    bool isListed(const model::Board& board) const;
    model::Board* lastBoard() const;
    void storeChanged(ChangeCause cause);
    /// `cause` says whose change has taken it away.
    void leaveSoon(const model::Board* board, ChangeCause cause);
    void leaveGoneBoard(const model::Board* board, ChangeCause cause);
    /// Says that another program has taken the board away, whose page had this title.
    void tellTaken(const model::Board& board, const QString& name, ChangeCause cause);
    void pageChanged();

    Views m_views;
    services::BoardService& m_boards;
    store::ModelContext& m_context;
    app::AppPreferences& m_preferences;
    LastBoard m_lastBoard;
    PageKind m_beforeSearch = PageKind::board;
    /// The board that was taken away last, and the message that says so, while there is one.
    struct Taken {
        base::Uuid board;
        ErrorBanner::MessageId message = 0;
    };
    Taken m_taken;
    /// Another program has archived it, and something is still typed on it.
    const model::Board* m_archivedUnderEdit = nullptr;
    base::Subscription m_changes;
};

} // namespace korvex::ui
