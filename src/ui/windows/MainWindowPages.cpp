#include "ui/boards/ArchivedBoardsPage.h"
#include "ui/boards/BoardActions.h"
#include "ui/entries/BoardPage.h"
#include "ui/kit/ErrorBanner.h"
#include "ui/kit/Refusal.h"
#include "ui/kit/SearchField.h"
#include "ui/overview/CompletedPage.h"
#include "ui/overview/SearchPage.h"
#include "ui/overview/UpcomingPage.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/PageStack.h"
#include "ui/windows/Sidebar.h"

#include <QTimer>

#include <chrono>
#include <memory>
#include <utility>

namespace korvex::ui {

// What the window shows, and the ways from one page to another.

namespace {

/// Shorter than a frame.
constexpr std::chrono::milliseconds kPreparationSlice{8};

} // namespace

void MainWindow::addPages() {
    m_pages->add(PageKind::board,
                 {.title = {},
                  .make = [this] { return m_page; },
                  .focus = [this] { m_page->setFocus(); },
                  .showMessage = [this](const QString& message) { m_page->showMessage(message); }});
    addTodosPage<UpcomingPage>(PageKind::upcoming, tr("Upcoming"));
    addTodosPage<CompletedPage>(PageKind::completed, tr("Completed"));
    m_pages->add(PageKind::search, {.title = tr("Search"),
                                    .make = [this] { return makeSearchPage(); },
                                    .focus = [this] { m_searchPage->focusList(); },
                                    .storeChanged = [this] { m_searchPage->storeChanged(); },
                                    .showMessage =
                                        [this](const QString& message) {
                                            m_searchPage->banner().showMessage(message);
                                        }});
    m_pages->add(
        PageKind::archived,
        {.title = tr("Archived boards"),
         .make = [this] { return makeArchivedPage(); },
         .focus = [this] { m_archivedPage->focusList(); },
         .storeChanged =
             [this] { m_archivedPage->showBoards(m_sidebar->boards().archivedBoards()); },
         .showMessage = [this](const QString& message) { m_archivedPage->showMessage(message); }});
}

template <typename Page>
void MainWindow::addTodosPage(PageKind kind, const QString& title) {
    const auto page = std::make_shared<Page*>(nullptr);
    m_pages->add(kind,
                 {.title = title,
                  .make =
                      [this, page] {
                          *page = new Page(m_workspace, m_theme);
                          connect(*page, &Page::entryOpenRequested, this,
                                  [this](model::Entry* entry) { showEntry(*entry); });
                          return *page;
                      },
                  .focus = [page] { (*page)->focusList(); },
                  .showMessage =
                      [page](const QString& message) { (*page)->banner().showMessage(message); }});
}

void MainWindow::connectSidebar() {
    auto& field = m_sidebar->searchField();
    connect(&field, &SearchField::focused, this, &MainWindow::prepareSearch);
    connect(&field, &SearchField::textChanged, this, &MainWindow::search);
    connect(&field, &SearchField::walked, this, [this](int key) {
        if (m_pages->current() == PageKind::search) {
            m_searchPage->walk(key);
        }
    });
    connect(&field, &SearchField::openRequested, this, [this] {
        if (m_pages->current() == PageKind::search) {
            m_searchPage->openCurrent();
        }
    });
    connect(&field, &SearchField::escaped, this, [this] {
        leaveSearch();
        m_pages->focusCurrent();
    });
    connect(m_sidebar, &Sidebar::boardChosen, this,
            [this](model::Board* board) { showBoard(*board); });
    connect(
        m_sidebar, &Sidebar::boardMenuRequested, this,
        [this](model::Board* board, const QPoint& position) { openBoardMenu(*board, position); });
    connect(m_sidebar, &Sidebar::pageRequested, this, [this](PageKind page) {
        if (showPage(page)) {
            m_pages->focusCurrent();
        }
    });
    connect(m_sidebar, &Sidebar::entryDropped, this,
            [this](const base::Uuid& entry, model::Board* board) {
                m_page->moveToBoard(entry, *board);
            });
}

ArchivedBoardsPage* MainWindow::makeArchivedPage() {
    m_archivedPage = new ArchivedBoardsPage(m_workspace, m_theme);
    connect(m_archivedPage, &ArchivedBoardsPage::openRequested, this, [this](model::Board* board) {
        showBoard(*board);
        m_page->setFocus();
    });
    connect(m_archivedPage, &ArchivedBoardsPage::unarchiveRequested, this,
            [this](model::Board* board) { m_actions->setArchived(*board, false); });
    connect(m_archivedPage, &ArchivedBoardsPage::deletionRequested, this,
            [this](model::Board* board, const QRect& anchor) {
                m_actions->confirmDeletion(*board, anchor);
            });
    return m_archivedPage;
}

SearchPage* MainWindow::makeSearchPage() {
    m_searchPage = new SearchPage(m_workspace, m_theme);
    connect(m_searchPage, &SearchPage::entryOpenRequested, this,
            [this](model::Entry* entry) { showEntry(*entry); });
    connect(m_searchPage, &SearchPage::boardOpenRequested, this, [this](model::Board* board) {
        showBoard(*board);
        m_page->focusList();
    });
    return m_searchPage;
}

PageKind MainWindow::currentPage() const {
    return m_pages->current();
}

model::Board* MainWindow::lastBoard() {
    auto* const board = m_page->board();
    return board && m_sidebar->boards().rowOf(*board) >= 0 ? board : launchBoard();
}

void MainWindow::showBoard(model::Board& board) {
    const bool isShown = m_page->showBoard(board);
    // What is being edited there may not be left: then the page stays, and says why.
    m_pages->show(PageKind::board);
    pageChanged();
    if (isShown && m_sidebar->boards().rowOf(board) >= 0 &&
        m_workspace.preferences.mainBoardSelectedBoardID() != board.id()) {
        m_workspace.preferences.setMainBoardSelectedBoardID(board.id());
    }
}

void MainWindow::showEntry(model::Entry& entry) {
    if (auto* const board = entry.board()) {
        showBoard(*board);
        m_page->showEntry(entry);
    }
}

bool MainWindow::showPage(PageKind page) {
    const bool canLeave = m_page->leaveEditor();
    m_pages->show(canLeave ? page : PageKind::board);
    pageChanged();
    return canLeave;
}

void MainWindow::search(const QString& query) {
    if (query.trimmed().isEmpty()) {
        leaveSearch();
        return;
    }
    if (m_pages->current() != PageKind::search) {
        m_beforeSearch = m_pages->current();
        if (!showPage(PageKind::search)) {
            return;
        }
    }
    m_searchPage->search(query);
}

void MainWindow::leaveSearch() {
    if (m_pages->current() == PageKind::search) {
        m_pages->show(m_beforeSearch);
        pageChanged();
    } else {
        endSearch();
    }
}

void MainWindow::endSearch() {
    if (m_searchPage) {
        m_searchPage->clear();
    }
    m_sidebar->searchField().clear();
}

/// A search that finds its texts ready answers at once.
void MainWindow::prepareSearch() {
    if (std::exchange(m_isPreparingSearch, true)) {
        return;
    }
    QTimer::singleShot(0, this, [this] {
        m_isPreparingSearch = false;
        bool isMore = false;
        // What cannot be read now, the search will say.
        const auto refused =
            refusal([&] { isMore = m_workspace.search.prepare(kPreparationSlice); });
        if (!refused && isMore) {
            prepareSearch();
        }
    });
}

void MainWindow::countUpcoming() {
    const auto refused = refusal([this] {
        auto& upcoming = m_workspace.upcoming.get();
        const auto show = [this, &upcoming] {
            m_sidebar->setUpcomingCount(static_cast<int>(upcoming.count()));
        };
        m_upcomingChanges = upcoming.didChange().connect(show);
        show();
    });
    if (refused) {
        showError(*refused);
    }
}

void MainWindow::goBack() {
    if (m_pages->current() == PageKind::search) {
        leaveSearch();
        m_pages->focusCurrent();
        return;
    }
    const bool isFromArchived = m_pages->current() == PageKind::board && m_page->isReadOnly();
    if (isFromArchived) {
        showPage(PageKind::archived);
    } else if (auto* const board = lastBoard()) {
        showBoard(*board);
    }
    m_pages->focusCurrent();
}

void MainWindow::pageChanged() {
    if (m_pages->current() != PageKind::search) {
        endSearch();
    }
    m_sidebar->showChoice(m_pages->current(), m_page->board());
    const auto name = m_pages->current() != PageKind::board ? m_pages->title()
                      : m_page->board()                     ? toQString(m_page->board()->name())
                                                            : QString();
    setWindowTitle(name.isEmpty() ? QStringLiteral("Korvex") : tr("%1 – Korvex").arg(name));
}

void MainWindow::leaveGoneBoard(const model::Board* board) {
    const bool isGone = !board || m_sidebar->boards().rowOf(*board) < 0;
    auto* const inbox = m_workspace.boards.inboxBoard();
    if (isGone && inbox && m_page->board() == board) {
        m_page->showBoard(*inbox);
        pageChanged();
    }
}

void MainWindow::storeChanged() {
    m_sidebar->refresh();
    auto* const shown = m_page->board();
    const bool isListed = shown && m_sidebar->boards().rowOf(*shown) >= 0;
    const bool isLookedAt = shown && shown->isLive() && shown->isArchived() && m_page->isReadOnly();
    m_page->refresh();
    if (!isListed && !isLookedAt) {
        // Soon: what is typed there may be about to be stored, and is then to stay in sight with
        // the reason why it was not.
        QTimer::singleShot(0, this, [this, shown] { leaveGoneBoard(shown); });
    }
    if (m_pages->current() == PageKind::archived && m_sidebar->boards().archivedBoards().empty()) {
        goBack();
    }
    m_pages->storeChanged();
    pageChanged();
}

} // namespace korvex::ui
