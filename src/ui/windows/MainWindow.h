#pragma once

#include "ui/boards/BoardActions.h"
#include "ui/windows/DraftOffers.h"
#include "ui/windows/Navigation.h"
#include "ui/windows/SearchSession.h"
#include "ui/windows/SidebarPlace.h"
#include "ui/windows/WindowActions.h"
#include "ui/windows/WindowLayout.h"
#include "ui/workspace/Workspace.h"

#include <QWidget>

#include <memory>
#include <string>
#include <vector>

namespace korvex::ui {

class NoticeLine;
class Page;
class SettingsWindow;

/// The main window: the sidebar at the left; at the right the chosen board, or a page over all
/// boards. Main thread.
class MainWindow final : public QWidget {
    Q_OBJECT

public:
    MainWindow(const Workspace& workspace, const Theme& theme);
    ~MainWindow() override;

    /// Shows what the user should know, over the board.
    void showNotices(const std::vector<std::string>& notices);
    /// Shows it on the page that is in sight.
    void showError(const QString& message);
    /// Shows what the link leads to, or says that it is not there.
    void openLink(const std::string& url);
    /// The program ends, whatever the window would say to that: what is being edited is stored, or
    /// else kept as a draft, and where the window stands is kept. From then on it closes without
    /// asking.
    void storeAll();
    /// Closes the window, unless something holds it up, and ends the program also where it stays
    /// ready without windows.
    void quit();
    /// Shows what an earlier run could not store.
    void offerDrafts() { m_drafts.start(); }

Q_SIGNALS:
    /// The board's content has been drawn for the first time: now there is time for the rest.
    void firstPainted();
    /// The window has closed because the user ends the program.
    void quitAccepted();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void layOut();
    void addPages();
    template <typename TodosPage>
    Page* makeTodosPage();
    Page* makeSearchPage();
    Page* makeArchivedPage();
    void connectSidebar();
    void connectBoardPage();
    /// Ends all that is being edited, as far as it can be stored. False when something cannot.
    bool leaveAll();
    /// Says that the board was put away, with a button that takes it back.
    void offerToUnarchive(const model::Board* board);
    void openSettings();
    /// Whether what the settings are doing is to end with the window.
    void askToEnd(const QString& loss);
    /// Whether the program goes on without the window.
    bool staysReady() const;
    /// Whether it is to, from now on.
    void askToStay();
    /// On the page that is in sight, until what it gives ends.
    base::Subscription say(const QString& notice);
    void closeWhenDone();
    void showTitle();
    void countUpcoming();

    const Workspace& m_workspace;
    const Theme& m_theme;
    QSplitter* m_splitter;
    Sidebar* m_sidebar;
    /// Says that the store can only be read.
    NoticeLine* m_storeNotice;
    PageStack* m_pages;
    BoardPage* m_boardPage;
    BoardActions m_boardActions;
    Navigation m_navigation;
    SearchSession m_search;
    SidebarPlace m_sidebarPlace;
    WindowActions m_actions;
    DraftOffers m_drafts;
    WindowLayout m_layout;
    base::Subscription m_upcomingChanges;
    base::Subscription m_missedChanges;
    /// Null until it is first asked for.
    std::unique_ptr<SettingsWindow> m_settings;
    enum class WhenAtWork {
        asks,
        waits, ///< until what was being done has ended: it leaves nothing half done
        closes,
    };
    WhenAtWork m_whenAtWork = WhenAtWork::asks;
    /// Says that it waits.
    base::Subscription m_waiting;
    bool m_wasPainted = false;
    bool m_isQuitting = false;
    bool m_wasClosed = false;
};

} // namespace korvex::ui
