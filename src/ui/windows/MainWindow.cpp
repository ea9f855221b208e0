#include "ui/windows/MainWindow.h"

#include "app/Links.h"
#include "model/ServiceErrors.h"
#include "services/SurvivingBoard.h"
#include "ui/boards/ArchivedBoardsPage.h"
#include "ui/entries/BoardPage.h"
#include "ui/kit/overlays/ConfirmationSheet.h"
#include "ui/kit/pages/NoticeLine.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Refusal.h"
#include "ui/kit/words/Text.h"
#include "ui/overview/CompletedPage.h"
#include "ui/overview/SearchPage.h"
#include "ui/overview/UpcomingPage.h"
#include "ui/settings/SettingsPanes.h"
#include "ui/settings/SettingsWindow.h"
#include "ui/settings/ShortcutWords.h"
#include "ui/settings/UnkeptLine.h"
#include "ui/windows/PageStack.h"
#include "ui/windows/Sidebar.h"
#include "ui/workspace/ProgramName.h"
#include "ui/workspace/WindowPlace.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QSplitter>
#include <QTimer>
#include <QUrl>
#include <QVBoxLayout>

#include <utility>

namespace korvex::ui {

namespace {

constexpr QSize kSmallestSize(360, 320);

} // namespace

MainWindow::MainWindow(const Workspace& workspace, const Theme& theme)
    : m_workspace(workspace),
      m_theme(theme),
      m_splitter(new QSplitter(this)),
      m_sidebar(new Sidebar(workspace.boards, workspace.context, workspace.clock, theme)),
      m_storeNotice(new NoticeLine({.icon = QStringLiteral("lock-simple"),
                                    .text = tr("The store can only be read: its file or folder "
                                               "cannot be written. Nothing can be changed.")},
                                   theme, NoticeLine::Place::atTop)),
      m_pages(new PageStack),
      m_boardPage(new BoardPage(workspace, theme)),
      m_boardActions(workspace.boards, workspace.clock, theme, *this),
      m_navigation({.sidebar = *m_sidebar, .pages = *m_pages, .boardPage = *m_boardPage},
                   workspace.boards, workspace.context, workspace.preferences,
                   workspace.isUsersOwn ? Navigation::LastBoard::kept
                                        : Navigation::LastBoard::forgotten,
                   this),
      m_search(m_sidebar->searchField(), m_navigation, workspace.search, this),
      m_sidebarPlace(*this, *m_splitter, *m_sidebar, theme),
      m_actions({.window = *this,
                 .sidebar = *m_sidebar,
                 .sidebarPlace = m_sidebarPlace,
                 .boardPage = *m_boardPage,
                 .boardActions = m_boardActions,
                 .navigation = m_navigation},
                {.context = workspace.context,
                 .undo = workspace.undo,
                 .folding = workspace.folding,
                 .preferences = workspace.preferences},
                theme),
      m_drafts(workspace, m_navigation, *m_boardPage, this),
      m_layout(*this, m_sidebarPlace, workspace.defaults) {
    setWindowTitle(programName(workspace));
    Accessibility::setRole(*this, QAccessible::Window);
    setMinimumSize(kSmallestSize);
    layOut();
    addPages();
    m_pages->show(PageKind::board);
    connectSidebar();
    connectBoardPage();
    connect(&m_navigation, &Navigation::changed, this, &MainWindow::showTitle);
    connect(&m_boardActions, &BoardActions::refused, this, &MainWindow::showError);
    connect(&m_boardActions, &BoardActions::archived, this, &MainWindow::offerToUnarchive);
    connect(m_pages, &PageStack::undoRequested, &m_actions, &WindowActions::undo);
    connect(&m_actions, &WindowActions::settingsRequested, this, &MainWindow::openSettings);
    connect(&m_actions, &WindowActions::quitRequested, this, &MainWindow::quit);
    m_layout.restore();
    m_navigation.start();
    m_pages->current().installEventFilter(this);
}

MainWindow::~MainWindow() = default;

void MainWindow::layOut() {
    m_splitter->addWidget(m_sidebar);
    auto* const shown = new QWidget;
    auto* const lines = new QVBoxLayout(shown);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setSpacing(0);
    lines->addWidget(m_storeNotice);
    lines->addWidget(new UnkeptLine(m_workspace.defaults, m_theme, shown));
    lines->addWidget(m_pages, 1);
    m_splitter->addWidget(shown);
    m_storeNotice->setHolds(!m_workspace.context.container().allowsSave());
    m_splitter->setHandleWidth(1);
    m_splitter->setChildrenCollapsible(false);
    m_splitter->setStretchFactor(1, 1);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(m_splitter);
}

void MainWindow::addPages() {
    m_pages->add(PageKind::board, [this] { return m_boardPage; });
    m_pages->add(PageKind::upcoming, [this] { return makeTodosPage<UpcomingPage>(); });
    m_pages->add(PageKind::completed, [this] { return makeTodosPage<CompletedPage>(); });
    m_pages->add(PageKind::search, [this] { return makeSearchPage(); });
    m_pages->add(PageKind::archived, [this] { return makeArchivedPage(); });
}

template <typename TodosPage>
Page* MainWindow::makeTodosPage() {
    auto* const page = new TodosPage(m_workspace, m_theme);
    connect(page, &TodosPage::entryOpenRequested, this,
            [this](model::Entry* entry) { m_navigation.showEntry(*entry); });
    return page;
}

Page* MainWindow::makeSearchPage() {
    auto* const page = new SearchPage(m_workspace, m_theme);
    connect(page, &SearchPage::entryOpenRequested, this,
            [this](model::Entry* entry) { m_navigation.showEntry(*entry); });
    connect(page, &SearchPage::boardOpenRequested, this,
            [this](model::Board* board) { m_navigation.openBoard(*board); });
    m_search.setPage(*page);
    return page;
}

Page* MainWindow::makeArchivedPage() {
    auto* const page = new ArchivedBoardsPage(m_workspace.boards, m_workspace.context, m_theme);
    connect(page, &ArchivedBoardsPage::openRequested, this, [this](model::Board* board) {
        m_navigation.showBoard(*board);
        m_navigation.takeKeyboard();
    });
    connect(page, &ArchivedBoardsPage::unarchiveRequested, this,
            [this](model::Board* board) { m_boardActions.unarchive(*board); });
    connect(page, &ArchivedBoardsPage::deletionRequested, this,
            [this](model::Board* board) { m_boardActions.confirmDeletion(*board); });
    return page;
}

void MainWindow::connectSidebar() {
    connect(m_sidebar, &Sidebar::boardChosen, this,
            [this](model::Board* board) { m_navigation.showBoard(*board); });
    connect(m_sidebar, &Sidebar::pageRequested, this, [this](PageKind page) {
        if (m_navigation.showPage(page)) {
            m_navigation.takeKeyboard();
        }
    });
    connect(m_sidebar, &Sidebar::creationGivenUp, &m_navigation, &Navigation::takeKeyboard);
    connect(m_sidebar, &Sidebar::moveRequested, this,
            [this](model::Board* board, int offset) { m_boardActions.move(*board, offset); });
    connect(m_sidebar, &Sidebar::boardPicked, &m_sidebarPlace, &SidebarPlace::leavePage);
    connect(&m_sidebarPlace, &SidebarPlace::left, &m_navigation, &Navigation::takeKeyboard);
    connect(&m_navigation, &Navigation::changed, this, [this] {
        m_sidebarPlace.setSearching(m_navigation.currentPage() == PageKind::search);
    });
    connect(m_sidebar, &Sidebar::entryDropped, this,
            [this](const base::Uuid& entry, model::Board* board) {
                m_boardPage->actions().moveToBoard(entry, *board);
            });
}

void MainWindow::connectBoardPage() {
    connect(m_boardPage, &BoardPage::iconRequested, this, [this](const QRect& anchor) {
        m_boardActions.chooseIcon(*m_boardPage->board(), anchor);
    });
    connect(m_boardPage, &BoardPage::unarchiveRequested, this,
            [this] { m_boardActions.unarchive(*m_boardPage->board()); });
    connect(&m_boardPage->entries(), &EntryListModel::countsChanged, this, [this] {
        auto* const board = m_boardPage->board();
        if (board && m_sidebar->boards().rowOf(*board) >= 0) {
            m_sidebar->boards().setOpenTodoCount(*board, m_boardPage->entries().openTodoCount());
        }
    });
}

void MainWindow::offerToUnarchive(const model::Board* board) {
    const auto name = isolated(toQString(board->name()));
    const auto wasShown = m_navigation.isShown(*board);
    m_pages->current().offer(tr("“%1” was archived.").arg(name), tr("Undo"),
                             [this, id = board->id(), wasShown] {
                                 auto* const again = m_workspace.boards.board(id);
                                 if (!again) {
                                     return;
                                 }
                                 m_boardActions.unarchive(*again);
                                 if (wasShown && !again->isArchived()) {
                                     m_navigation.openBoard(*again);
                                 }
                             });
}

void MainWindow::openSettings() {
    if (!m_settings) {
        EditingWindows windows{
            .settleEdits = [this]() -> std::optional<QString> {
                return leaveAll() ? std::nullopt
                                  : std::optional(tr("Your open edits could not be saved. Resolve "
                                                     "the save error before using a backup."));
            },
            .holdUp =
                [this] {
                    auto said = say(tr("Replacing your boards and entries. Windows answer again in "
                                       "a moment."));
                    m_pages->current().banner().repaint();
                    return said;
                },
            .storeReplaced = [this] { m_navigation.storeReplaced(); }};
        m_settings = std::make_unique<SettingsWindow>(
            settingsPanes(m_workspace, std::move(windows), m_theme), programName(m_workspace),
            m_workspace.defaults, m_theme);
        // Later, since that ends the window which asks.
        connect(m_settings.get(), &SettingsWindow::quitRequested, this, &MainWindow::quit,
                Qt::QueuedConnection);
        connect(m_settings.get(), &SettingsWindow::workEnded, this, &MainWindow::closeWhenDone,
                Qt::QueuedConnection);
    }
    m_settings->comeForward();
}

base::Subscription MainWindow::say(const QString& notice) {
    auto& banner = m_pages->current().banner();
    const auto id = banner.say({.text = notice, .tone = ErrorBanner::Tone::notice});
    return base::Subscription([&banner, id] { banner.end(id); });
}

void MainWindow::showTitle() {
    const auto name = m_pages->current().title();
    const auto program = programName(m_workspace);
    setWindowTitle(name.isEmpty() ? program : tr("%1 – %2").arg(name, program));
}

void MainWindow::countUpcoming() {
    const auto refused = refusal([this] {
        auto& upcoming = m_workspace.upcoming.get();
        auto& missed = m_workspace.missedReminders.get();
        const auto show = [this, &upcoming, &missed] {
            m_sidebar->setUpcoming(static_cast<int>(upcoming.count()),
                                   static_cast<int>(missed.count()));
        };
        m_upcomingChanges = upcoming.didChange().connect(show);
        m_missedChanges = missed.didChange().connect(show);
        show();
    });
    if (refused) {
        showError(*refused);
    }
}

void MainWindow::showNotices(const std::vector<std::string>& notices) {
    QStringList lines;
    for (const auto& notice : notices) {
        lines.append(toQString(notice));
    }
    if (!lines.isEmpty()) {
        m_boardPage->banner().say(
            {.text = lines.join(QLatin1Char('\n')), .tone = ErrorBanner::Tone::notice});
    }
}

void MainWindow::showError(const QString& message) {
    m_pages->current().refuse(message);
}

void MainWindow::openLink(const std::string& url) {
    m_pages->current().endAnswer();
    const base::Logger log(m_workspace.log, "Links");
    auto& context = m_workspace.context;
    const auto link = app::Link::parse(url);
    // One that leads nowhere is still a widget's, or a notification's.
    const auto isOurs = app::hasOurScheme(url);
    const auto isOfBoard = isOurs && QUrl(toQString(url)).host() == QLatin1String("board");
    model::Board* board = nullptr;
    model::Entry* entry = nullptr;
    auto code = model::EntryServiceError(model::EntryServiceErrorCase::entryUnavailable).code();
    const auto refused = refusal([&] {
        try {
            context.refresh(); // it may be newer than what is shown
            if (link && link->kind == app::Link::Kind::entry) {
                entry = context.find<model::Entry>(link->id);
            } else if (link) {
                const auto& boards = m_workspace.boards;
                board = link->kind == app::Link::Kind::inbox
                            ? boards.inboxBoard()
                            : services::survivingBoard(boards, link->id);
            }
        } catch (const base::Error& error) {
            code = error.code();
            throw;
        }
    });
    if (board) {
        m_navigation.openBoard(*board);
        return;
    }
    if (entry && entry->board()) {
        m_navigation.showEntry(*entry);
        return;
    }
    log.warning(isOfBoard ? "Unable to open widget board: " + std::to_string(code)
                : isOurs  ? "Could not open notification entry"
                          : "Could not open what is no link");
    if (refused) {
        showError(*refused);
        return;
    }
    // It may have been deleted since the link was made: that is no fault.
    m_pages->current().tell(!link       ? tr("The link leads to nothing in Korvex.")
                            : isOfBoard ? tr("The board that the link leads to is not there.")
                                        : tr("The entry that the link leads to is not there any "
                                             "more."));
}

bool MainWindow::eventFilter(QObject* watched, QEvent* event) {
    if (!m_wasPainted && event->type() == QEvent::Paint) {
        m_wasPainted = true;
        watched->removeEventFilter(this);
        // Once this paint has reached the screen.
        QTimer::singleShot(0, this, [this] {
            Q_EMIT firstPainted();
            countUpcoming();
        });
    }
    return QWidget::eventFilter(watched, event);
}

void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && m_sidebarPlace.isOver()) {
        m_sidebarPlace.leavePage();
    } else if (event->key() == Qt::Key_Escape && m_navigation.canGoBack()) {
        m_navigation.goBack();
    } else {
        QWidget::keyPressEvent(event);
    }
}

void MainWindow::storeAll() {
    m_whenAtWork = WhenAtWork::closes;
    m_waiting.cancel();
    m_layout.save();
    static_cast<void>(leaveAll());
    if (m_settings) {
        m_settings->takeTyped();
    }
}

/// As a press outside of all that is being edited: panels, the name of a board, the entry.
bool MainWindow::leaveAll() {
    const auto isNamed = m_sidebar->leave();
    return m_pages->current().leave() && isNamed;
}

bool MainWindow::staysReady() const {
    const auto* const setup = m_workspace.quickEntry;
    if (m_isQuitting || !setup) {
        return false;
    }
    using WhenClosed = app::AppPreferences::WhenClosed;
    switch (m_workspace.preferences.whenClosed()) {
    case WhenClosed::asks: // only where there are keys to tell of
        return setup->hotkey.isReady();
    case WhenClosed::staysReady:
        return setup->hotkey.mayBeReady();
    case WhenClosed::ends:
        break;
    }
    return false;
}

void MainWindow::quit() {
    m_isQuitting = true;
    close();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    m_isQuitting = m_isQuitting && !event->spontaneous(); // that was another time
    m_layout.save();
    // What could not be stored stays in sight, with the reason.
    event->setAccepted(leaveAll());
    if (event->isAccepted() && m_settings && !m_settings->leave()) {
        m_settings->comeForward();
        event->ignore();
    }
    if (event->isAccepted() && m_settings && m_whenAtWork != WhenAtWork::closes) {
        if (const auto loss = m_settings->loss(); !loss.isEmpty()) {
            askToEnd(loss);
            event->ignore();
        }
    }
    if (event->isAccepted() && m_whenAtWork != WhenAtWork::closes && staysReady() &&
        m_workspace.preferences.whenClosed() == app::AppPreferences::WhenClosed::asks) {
        askToStay();
        event->ignore();
    }
    if (event->isAccepted()) {
        m_settings.reset();
        m_wasClosed = true;
        if (std::exchange(m_isQuitting, false)) {
            Q_EMIT quitAccepted();
        }
    }
}

/// Window managers put one that comes back elsewhere.
void MainWindow::showEvent(QShowEvent* event) {
    if (!event->spontaneous() && std::exchange(m_wasClosed, false)) {
        m_layout.restore();
    }
    QWidget::showEvent(event);
}

void MainWindow::askToStay() {
    bringForward(*this); // it may be closed while it is minimised, and would ask unseen
    auto& hotkey = m_workspace.quickEntry->hotkey;
    auto* const sheet = new ConfirmationSheet(
        tr("Keep Quick Entry ready when this window is closed? Korvex then goes on in the "
           "background: %1 opens Quick Entry from anywhere, and starting Korvex again brings this "
           "window back. You can change this in the settings.")
            .arg(readyKeys(hotkey)),
        tr("Keep Ready"), m_theme, this);
    sheet->offerInstead(tr("Quit"));
    using WhenClosed = app::AppPreferences::WhenClosed;
    connect(sheet, &ConfirmationSheet::confirmed, this, [this] {
        m_workspace.preferences.setWhenClosed(WhenClosed::staysReady);
        close();
    });
    connect(sheet, &ConfirmationSheet::declined, this, [this] {
        m_workspace.preferences.setWhenClosed(WhenClosed::ends);
        quit();
    });
    sheet->ask();
}

void MainWindow::askToEnd(const QString& loss) {
    bringForward(*this);
    if (m_whenAtWork == WhenAtWork::waits) {
        return;
    }
    auto* const sheet =
        new ConfirmationSheet(loss, staysReady() ? tr("Close") : tr("Quit"), m_theme, this);
    connect(sheet, &ConfirmationSheet::confirmed, this, [this] {
        m_whenAtWork = WhenAtWork::waits;
        m_waiting =
            say(staysReady() ? tr("The window closes as soon as what it is doing is cancelled.")
                             : tr("Korvex quits as soon as what it is doing is cancelled."));
        m_settings->cancelWork();
        closeWhenDone(); // it may have ended before the answer
    });
    sheet->ask();
}

void MainWindow::closeWhenDone() {
    if (m_whenAtWork == WhenAtWork::waits && m_settings->loss().isEmpty()) {
        m_whenAtWork = WhenAtWork::asks;
        m_waiting.cancel();
        close();
    }
}

} // namespace korvex::ui
