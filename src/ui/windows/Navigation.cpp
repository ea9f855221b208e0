#include "ui/windows/Navigation.h"

#include "ui/entries/BoardPage.h"
#include "ui/windows/PageStack.h"
#include "ui/windows/Sidebar.h"

#include <QTimer>

#include <utility>

namespace korvex::ui {

Navigation::Navigation(const Views& views, services::BoardService& boards,
                       store::ModelContext& context, app::AppPreferences& preferences,
                       LastBoard lastBoard, QObject* parent)
    : QObject(parent),
      m_views(views),
      m_boards(boards),
      m_context(context),
      m_preferences(preferences),
      m_lastBoard(lastBoard) {}

void Navigation::start() {
    m_changes = m_context.didChange().connect(
        [this](const store::ChangeSet& changes) { storeChanged(causeOf(changes)); });
    connect(&m_views.boardPage, &BoardPage::editingEnded, this, [this] {
        if (const auto* const board = std::exchange(m_archivedUnderEdit, nullptr)) {
            leaveSoon(board, ChangeCause::anotherProgram);
        }
    });
    m_views.sidebar.refresh();
    if (auto* const board = m_boards.launchBoard(launchBoardID(m_preferences, m_lastBoard))) {
        show(*board); // it may stand in for the one that the user saw last
    }
    if (m_preferences.launchDestination() == app::AppPreferences::LaunchDestination::upcoming) {
        showPage(PageKind::upcoming);
    }
    takeKeyboard();
}

app::AppPreferences::BoardID Navigation::launchBoardID(const app::AppPreferences& preferences,
                                                       LastBoard lastBoard) {
    if (lastBoard == LastBoard::forgotten) {
        return std::nullopt;
    }
    return preferences.launchDestination() == app::AppPreferences::LaunchDestination::board
               ? preferences.launchBoardID()
               : preferences.mainBoardSelectedBoardID();
}

PageKind Navigation::currentPage() const {
    return m_views.pages.currentKind();
}

Page& Navigation::page() const {
    return m_views.pages.current();
}

bool Navigation::isShown(const model::Board& board) const {
    return currentPage() == PageKind::board && m_views.boardPage.board() == &board;
}

bool Navigation::showPage(PageKind page) {
    const auto before = currentPage();
    const auto isShown = m_views.pages.show(page);
    if (isShown && page == PageKind::search && before != page) {
        m_beforeSearch = before;
    }
    pageChanged();
    return isShown;
}

bool Navigation::show(model::Board& board) {
    const auto isShown = m_views.boardPage.showBoard(board);
    // What is being edited there may not be left: then the page stays, and says why.
    m_views.pages.show(PageKind::board);
    pageChanged();
    return isShown;
}

void Navigation::showBoard(model::Board& board) {
    if (show(board) && isListed(board) && m_lastBoard == LastBoard::kept &&
        m_preferences.mainBoardSelectedBoardID() != board.id()) {
        m_preferences.setMainBoardSelectedBoardID(board.id());
    }
}

void Navigation::openBoard(model::Board& board) {
    showBoard(board);
    m_views.boardPage.focusList();
}

void Navigation::showEntry(model::Entry& entry) {
    if (auto* const board = entry.board()) {
        showBoard(*board);
        m_views.boardPage.showEntry(entry);
    }
}

bool Navigation::showLastBoard() {
    auto* const board = lastBoard();
    if (board) {
        showBoard(*board);
    }
    return board != nullptr;
}

bool Navigation::canGoBack() const {
    return currentPage() != PageKind::board || m_views.boardPage.showsArchivedBoard();
}

void Navigation::goBack() {
    if (currentPage() == PageKind::search) {
        leaveSearch();
    } else if (currentPage() == PageKind::board && m_views.boardPage.showsArchivedBoard()) {
        showPage(PageKind::archived);
    } else {
        showLastBoard();
    }
    takeKeyboard();
}

void Navigation::takeKeyboard() {
    m_views.pages.current().takeKeyboard();
}

void Navigation::leaveSearch() {
    m_views.pages.show(m_beforeSearch);
    pageChanged();
}

bool Navigation::isListed(const model::Board& board) const {
    return m_views.sidebar.boards().rowOf(board) >= 0;
}

model::Board* Navigation::lastBoard() const {
    auto* const board = m_views.boardPage.board();
    if (board && isListed(*board)) {
        return board;
    }
    return m_boards.launchBoard(
        m_lastBoard == LastBoard::kept ? m_preferences.mainBoardSelectedBoardID() : std::nullopt);
}

void Navigation::storeChanged(ChangeCause cause) {
    auto& page = m_views.boardPage;
    m_views.sidebar.refresh();
    if (const auto* const back = m_taken.message != 0 ? m_boards.board(m_taken.board) : nullptr;
        back && isListed(*back)) {
        page.banner().end(std::exchange(m_taken, {}).message);
    }
    auto* const shown = page.board();
    const auto isInPlace = shown && isListed(*shown);
    const auto isLookedAt =
        shown && shown->isLive() && shown->isArchived() && page.entries().isArchived();
    page.refresh();
    if (!isInPlace && !isLookedAt) {
        // What is typed there may be about to be stored, and is then to stay in sight with the
        // reason why it was not.
        leaveSoon(shown, cause);
    }
    if (currentPage() == PageKind::archived && m_views.sidebar.boards().archivedBoards().empty()) {
        goBack();
    }
    m_views.pages.current().storeChanged();
    pageChanged();
}

void Navigation::storeReplaced() {
    // Before anybody takes it for the work of another program.
    leaveGoneBoard(m_views.boardPage.board(), ChangeCause::thisWindow);
}

void Navigation::leaveSoon(const model::Board* board, ChangeCause cause) {
    QTimer::singleShot(0, this, [this, board, cause] { leaveGoneBoard(board, cause); });
}

void Navigation::leaveGoneBoard(const model::Board* board, ChangeCause cause) {
    auto& page = m_views.boardPage;
    // After a restore the same board is another record.
    auto* const again = board ? m_boards.board(board->id()) : nullptr;
    auto* const next = again && isListed(*again) ? again : m_boards.inboxBoard();
    const auto isGone = !board || !isListed(*board);
    if (!isGone || !next || page.board() != board) {
        return;
    }
    const auto name = page.title();
    const auto isOfOthers = cause != ChangeCause::thisWindow;
    if (isOfOthers && board && board->isLive() && page.isEditing()) {
        // What is typed belongs there to its end: gone on with elsewhere, it would be two halves.
        m_archivedUnderEdit = board;
        tellTaken(*board, name, cause);
        return;
    }
    const auto givenWay = page.giveWayTo(*next, cause);
    if (givenWay == BoardPage::GivenWay::alone && board && next != again && isOfOthers) {
        tellTaken(*board, name, cause);
    }
    pageChanged();
}

/// Until the board is back.
void Navigation::tellTaken(const model::Board& board, const QString& name, ChangeCause cause) {
    const auto form = cause == ChangeCause::replacementElsewhere
                          ? tr("“%1” is gone: another program has replaced all boards.")
                      : board.isLive() ? tr("Another program archived “%1”.")
                                       : tr("Another program deleted “%1”.");
    const auto text = form.arg(name);
    m_taken = {board.id(), m_views.boardPage.banner().say({.text = text,
                                                           .tone = ErrorBanner::Tone::notice,
                                                           .lasts = ErrorBanner::Lasts::shortly},
                                                          m_taken.message)};
}

void Navigation::pageChanged() {
    m_views.sidebar.showChoice(currentPage(), m_views.boardPage.board());
    Q_EMIT changed();
}

} // namespace korvex::ui
