#pragma once

#include "ui/windows/PageKind.h"
#include "ui/workspace/Workspace.h"

#include <QWidget>

class QAction;
class QMenu;
class QSplitter;

namespace korvex::ui {

class ArchivedBoardsPage;
class BoardActions;
class BoardPage;
class PageStack;
class SearchPage;
class Sidebar;
class Theme;

/// The main window: the sidebar at the left; at the right the chosen board, or a page over all
/// boards. Main thread.
class MainWindow final : public QWidget {
    Q_OBJECT

public:
    MainWindow(const Workspace& workspace, const Theme& theme);
    ~MainWindow() override;

    /// Shows what the user should know, over the board.
    void showNotices(const std::vector<std::string>& notices);
    /// On the page that is in sight.
    void showError(const QString& message);
    void comeForward();

    void showBoard(model::Board& board);
    /// On its board, chosen and in sight.
    void showEntry(model::Entry& entry);
    /// False when what is being edited cannot be left.
    bool showPage(PageKind page);
    /// From a page over all boards to the board, from an archived board to the list of them.
    void goBack();

    Sidebar& sidebar() { return *m_sidebar; }
    BoardPage& boardPage() { return *m_page; }
    PageKind currentPage() const;

Q_SIGNALS:
    /// The board's content has been drawn for the first time: now there is time for the rest.
    void firstPainted();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void addPages();
    void connectSidebar();
    void addShortcuts();
    void addUndoActions();
    void updateUndoActions();
    void restoreLayout();
    void saveLayout();
    model::Board* launchBoard();
    /// The board's page shows it, or showed it before an archived one.
    model::Board* lastBoard();
    void storeChanged();
    void leaveGoneBoard(const model::Board* board);
    /// The sidebar and the title follow what is shown.
    void pageChanged();
    ArchivedBoardsPage* makeArchivedPage();
    SearchPage* makeSearchPage();
    template <typename Page>
    void addTodosPage(PageKind kind, const QString& title);
    void search(const QString& query);
    /// To where one was before.
    void leaveSearch();
    /// The field is empty whenever something else is shown.
    void endSearch();
    void prepareSearch();
    void countUpcoming();
    void startTodo();
    void startText();
    void pickBoard();
    template <typename OnBoard, typename Elsewhere>
    void takeBack(OnBoard&& onBoard, Elsewhere&& elsewhere);
    void openBoardMenu(model::Board& board, const QPoint& globalPosition);
    void openPageMenu(const QPoint& globalPosition);

    const Workspace& m_workspace;
    const Theme& m_theme;
    QSplitter* m_splitter;
    Sidebar* m_sidebar;
    PageStack* m_pages;
    BoardPage* m_page;
    ArchivedBoardsPage* m_archivedPage = nullptr;
    SearchPage* m_searchPage = nullptr;
    PageKind m_beforeSearch = PageKind::board;
    bool m_isPreparingSearch = false;
    BoardActions* m_actions;
    QAction* m_undo = nullptr;
    QAction* m_redo = nullptr;
    QAction* m_find = nullptr;
    QAction* m_goToBoard = nullptr;
    base::Subscription m_changes;
    base::Subscription m_undoChanges;
    base::Subscription m_upcomingChanges;
    bool m_wasPainted = false;
};

} // namespace korvex::ui
