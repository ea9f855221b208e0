#include "ui/widget/WidgetWindow.h"

#include "app/Links.h"
#include "schedule/TodoWidgetConfiguration.h"
#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/boards/BoardPicker.h"
#include "ui/kit/pages/PageHint.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/Shapes.h"
#include "ui/kit/words/Refusal.h"
#include "ui/kit/words/Text.h"
#include "ui/widget/WidgetHeader.h"
#include "ui/widget/WidgetPage.h"
#include "ui/widget/WidgetScreens.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>
#include <QVBoxLayout>
#include <QWindow>

#include <chrono>
#include <utility>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size.
constexpr int kFirstWidth = 300;
constexpr int kFirstHeight = 360;
constexpr int kLeastWidth = 200;
constexpr int kLeastHeight = 140;
/// A window that is being moved stands in many a place before it has one.
constexpr std::chrono::milliseconds kSettled{400};
/// The keyboard of a window: keys that work anywhere take it for a moment, and give it back.
constexpr std::chrono::milliseconds kGone{500};
/// Whoever places it by keys moves it on sooner; no window manager says when that has ended.
constexpr std::chrono::milliseconds kPlaced{30'000};

} // namespace

WidgetWindow::WidgetWindow(const app::RememberedWidget& remembered,
                           const WidgetSurroundings& surroundings)
    : m_remembered(remembered),
      m_surroundings(surroundings),
      m_header(new WidgetHeader(surroundings.theme, this)),
      m_hint(new PageHint(surroundings.theme)) {
    if (surroundings.desktop.knowsBelow()) {
        setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
        setWindowFlag(Qt::WindowStaysOnBottomHint, m_remembered.isBelow);
    }
    // It comes with the desktop. Who asks for it gets the keyboard there by `bringForward`.
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_AlwaysShowToolTips); // it seldom has the keyboard
    setMouseTracking(true);
    auto* const column = new QVBoxLayout(this);
    column->setSpacing(0);
    column->addWidget(m_header);
    column->addWidget(m_hint, 1);
    connect(&m_header->board(), &QAbstractButton::clicked, this, &WidgetWindow::openBoard);
    connect(&m_header->board(), &WidgetBoardButton::dragged, this, &WidgetWindow::startMoving);
    connect(m_header, &WidgetHeader::choiceRequested, this, &WidgetWindow::chooseBoard);
    connect(m_header, &WidgetHeader::menuRequested, this,
            [this] { popUp(m_header->menuAnchor().bottomLeft() + QPoint(0, 1)); });
    connect(&surroundings.theme, &Theme::changed, this, &WidgetWindow::applyTheme);
    m_storeChanges = surroundings.store.didChange().connect([this] { followStore(); });
    m_storeEnds = surroundings.store.willClose().connect([this] { dropPage(); });
    applyTheme();
    followStore();
}

WidgetWindow::~WidgetWindow() = default;

QSize WidgetWindow::firstSize(const Theme& theme) {
    return {theme.scaled(kFirstWidth), theme.scaled(kFirstHeight)};
}

bool WidgetWindow::isOf(const base::Uuid& board) const {
    const auto* const shown = m_page ? m_page->board() : nullptr;
    return shown ? shown->id() == board : m_remembered.board == board;
}

void WidgetWindow::showAt(const QRect& otherwise) {
    if (!m_remembered.hasPlace()) {
        m_remembered.x = otherwise.x();
        m_remembered.y = otherwise.y();
        m_remembered.width = otherwise.width();
        m_remembered.height = otherwise.height();
    }
    followScreens();
    winId(); // the window itself, which is to be told before it is seen
    m_surroundings.desktop.prepare(*windowHandle());
    m_wasShown = true;
    show();
}

void WidgetWindow::bringForward() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    beCalled();
    raise();
    m_surroundings.desktop.giveKeyboard(*windowHandle());
}

void WidgetWindow::followScreens() {
    const QRect wanted(m_remembered.x, m_remembered.y, m_remembered.width, m_remembered.height);
    m_fitted = WidgetScreens::fitted(wanted, minimumSize());
    if (geometry() != m_fitted) {
        setGeometry(m_fitted);
    }
}

void WidgetWindow::followStore() {
    if (m_surroundings.store.open()) {
        makePage();
    } else {
        endAnswer();
    }
    showBoard();
}

void WidgetWindow::refuse(const QString& reason) {
    if (m_page) {
        m_page->refuse(reason);
    } else {
        m_hint->say(translated(m_surroundings.store.reason()), reason);
    }
}

void WidgetWindow::endAnswer() {
    if (m_page) {
        m_page->endAnswer();
    } else {
        m_hint->say(translated(m_surroundings.store.reason()), {});
    }
}

void WidgetWindow::makePage() {
    if (m_page) {
        return;
    }
    m_hint->say({}, {});
    m_page = new WidgetPage(m_remembered.board,
                            {.store = m_surroundings.store,
                             .dates = m_surroundings.dates,
                             .runLoop = m_surroundings.runLoop},
                            m_surroundings.theme, this);
    static_cast<QVBoxLayout*>(layout())->addWidget(m_page, 1);
    m_page->show();
    connect(m_page, &WidgetPage::changed, this, &WidgetWindow::showBoard);
    connect(m_page, &WidgetPage::entryOpenRequested, this, &WidgetWindow::openEntry);
}

void WidgetWindow::dropPage() {
    Popover::endAll(*this);
    delete std::exchange(m_page, nullptr);
}

void WidgetWindow::showBoard() {
    m_header->setHasChoice(m_page != nullptr);
    const auto& colors = m_surroundings.theme.colors();
    const auto* const board = m_page ? m_page->board() : nullptr;
    if (board) {
        m_header->board().show({.name = toQString(board->name()),
                                .icon = boardIconName(board->iconSystemName()),
                                .color = iconColorOf(*board, colors),
                                .openCount = m_page->openCount()});
        setWindowTitle(toQString(board->name()));
    } else {
        m_header->board().show({.name = QStringLiteral("Korvex"),
                                .icon = QStringLiteral("squares-four-fill"),
                                .color = colors.secondaryText});
        setWindowTitle(QStringLiteral("Korvex"));
    }
}

void WidgetWindow::openBoard() {
    const auto* const board = m_page ? m_page->board() : nullptr;
    // Of one that is not to be read, or is gone, the app says what is to be said.
    openLink(m_remembered.board ? app::boardUrl(board ? board->id() : *m_remembered.board)
                                : std::string(app::kInboxUrl));
}

void WidgetWindow::openEntry(const base::Uuid& entry) {
    openLink(app::entryUrl(entry));
}

void WidgetWindow::openLink(const std::string& url) {
    endAnswer();
    m_surroundings.desktop.open(url, [window = QPointer(this)](WidgetDesktop::Refusal why) {
        if (window) {
            window->refuse(why == WidgetDesktop::Refusal::notInstalled
                               ? tr("The desktop app (korvex-desktop) is not installed.")
                               : tr("Korvex does not answer."));
        }
    });
}

void WidgetWindow::chooseBoard() {
    if (!m_page) {
        return;
    }
    auto& open = *m_surroundings.store.open();
    std::vector<model::Board*> boards;
    const auto refused = refusal([&] {
        for (const auto& each : schedule::WidgetBoardQuery(open.boards).suggestedEntities()) {
            boards.push_back(open.boards.board(each.id));
        }
    });
    if (refused) {
        m_page->refuse(*refused);
        return;
    }
    auto* const picker =
        new BoardPicker({.title = translated(schedule::TodoWidgetConfiguration::kTitle),
                         .boards = std::move(boards)},
                        open.context, m_surroundings.folding, m_surroundings.theme, this);
    picker->setOpener(m_header->choiceButton());
    connect(picker, &BoardPicker::chosen, this,
            [this](const model::Board* board) { setBoard(board->id()); });
    picker->open();
}

void WidgetWindow::setBoard(const base::Uuid& board) {
    m_remembered.board = board;
    if (m_page) {
        m_page->setBoard(board);
    }
    Q_EMIT placed();
}

void WidgetWindow::popUp(const QPoint& globalPosition) {
    makeMenu()->popup(globalPosition);
}

QMenu* WidgetWindow::makeMenu() {
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(tr("Open Board in Korvex"), this, &WidgetWindow::openBoard);
    menu->addAction(translated(schedule::TodoWidgetConfiguration::kTitle) + QStringLiteral("…"),
                    this, &WidgetWindow::chooseBoard)
        ->setEnabled(m_page != nullptr);
    menu->addSeparator();
    addPlacing(*menu);
    menu->addSeparator();
    menu->addAction(tr("Add Widget"), this, &WidgetWindow::addRequested);
    menu->addAction(tr("Remove Widget"), this, &WidgetWindow::removeRequested);
    menu->addAction(tr("Close All Widgets"), this, &WidgetWindow::closeAllRequested);
    return menu;
}

void WidgetWindow::addPlacing(QMenu& menu) {
    auto& desktop = m_surroundings.desktop;
    auto* const below = menu.addAction(tr("Keep Below Other Windows"));
    below->setCheckable(true);
    if (desktop.knowsBelow()) {
        below->setChecked(m_remembered.isBelow);
        connect(below, &QAction::toggled, this, &WidgetWindow::setBelow);
        addPlacingByKeys(menu);
    } else {
        below->setEnabled(false);
        menu.addAction(tr("This desktop lets no window do that."))->setEnabled(false);
    }
    auto* const atLogin = menu.addAction(tr("Show Widgets When You Log In"));
    atLogin->setCheckable(true);
    const auto starts = desktop.startsAtLogin();
    atLogin->setChecked(starts.value_or(false));
    atLogin->setEnabled(starts.has_value());
    connect(atLogin, &QAction::toggled, this, [this](bool isOn) {
        using AtLogin = WidgetDesktop::AtLogin;
        const auto error =
            m_surroundings.desktop.setAtLogin(isOn ? AtLogin::start : AtLogin::doNothing);
        if (error) {
            refuse(
                tr("That could not be changed: %1.").arg(QString::fromStdString(error.message())));
        }
    });
}

void WidgetWindow::addPlacingByKeys(QMenu& menu) {
    using Placing = WidgetDesktop::Placing;
    const auto add = [&](const QString& text, Placing what) {
        // Queued: until the menu is gone it has the keyboard.
        connect(
            menu.addAction(text), &QAction::triggered, this,
            [this, what] {
                beCalled();
                m_isPlacedByKeys = true;
                m_surroundings.desktop.placeByKeys(*windowHandle(), what);
            },
            Qt::QueuedConnection);
    };
    add(tr("Move by Arrow Keys"), Placing::move);
    add(tr("Resize by Arrow Keys"), Placing::resize);
}

void WidgetWindow::standBelow(Below below) {
    // Without taking the window down, as the widget's own function would.
    if (m_surroundings.desktop.knowsBelow()) {
        windowHandle()->setFlag(Qt::WindowStaysOnBottomHint, below == Below::yes);
    }
}

void WidgetWindow::setBelow(bool isBelow) {
    m_remembered.isBelow = isBelow;
    // One that has the keyboard goes below when that goes.
    if (const auto waits = m_isCalled && (isActiveWindow() || m_losing); !isBelow || !waits) {
        standBelow(isBelow ? Below::yes : Below::no);
    }
    overrideWindowFlags(windowFlags().setFlag(Qt::WindowStaysOnBottomHint, isBelow));
    Q_EMIT placed();
}

void WidgetWindow::startMoving(const QPoint& globalPosition) {
    if (!windowHandle()->startSystemMove()) {
        m_moving = globalPosition - pos();
    }
}

Qt::Edges WidgetWindow::edgesAt(const QPoint& position) const {
    if (!windowFlags().testFlag(Qt::FramelessWindowHint)) {
        return {};
    }
    const auto near = m_surroundings.theme.space(Space::small);
    const auto corner = m_surroundings.theme.space(Space::wide);
    Qt::Edges edges;
    const auto isAtSide = position.x() < near || position.x() >= width() - near;
    const auto isAtEnd = position.y() < near || position.y() >= height() - near;
    // Along a side the corners reach further: they are hard to meet.
    const auto reachX = isAtEnd ? corner : near;
    const auto reachY = isAtSide ? corner : near;
    edges.setFlag(Qt::LeftEdge, position.x() < reachX && (isAtSide || isAtEnd));
    edges.setFlag(Qt::RightEdge, position.x() >= width() - reachX && (isAtSide || isAtEnd));
    edges.setFlag(Qt::TopEdge, position.y() < reachY && (isAtSide || isAtEnd));
    edges.setFlag(Qt::BottomEdge, position.y() >= height() - reachY && (isAtSide || isAtEnd));
    return edges;
}

void WidgetWindow::mousePressEvent(QMouseEvent* event) {
    const auto edges = edgesAt(event->position().toPoint());
    if (event->button() == Qt::LeftButton && edges) {
        windowHandle()->startSystemResize(edges);
    }
}

void WidgetWindow::mouseMoveEvent(QMouseEvent* event) {
    if (m_moving) {
        move(event->globalPosition().toPoint() - *m_moving);
        return;
    }
    const auto edges = edgesAt(event->position().toPoint());
    const auto isX = edges.testAnyFlags(Qt::LeftEdge | Qt::RightEdge);
    const auto isY = edges.testAnyFlags(Qt::TopEdge | Qt::BottomEdge);
    const auto isFalling =
        edges.testFlag(Qt::LeftEdge) == edges.testFlag(Qt::TopEdge); // top left, bottom right
    setCursor(isX && isY ? (isFalling ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor)
              : isX      ? Qt::SizeHorCursor
              : isY      ? Qt::SizeVerCursor
                         : Qt::ArrowCursor);
}

void WidgetWindow::mouseReleaseEvent(QMouseEvent*) {
    m_moving.reset();
}

void WidgetWindow::leaveEvent(QEvent* event) {
    unsetCursor();
    QWidget::leaveEvent(event);
}

void WidgetWindow::contextMenuEvent(QContextMenuEvent* event) {
    popUp(event->reason() == QContextMenuEvent::Keyboard
              ? m_header->menuAnchor().bottomLeft() + QPoint(0, 1)
              : event->globalPos());
}

void WidgetWindow::keyPressEvent(QKeyEvent* event) {
    if ((event->key() == Qt::Key_Down || event->key() == Qt::Key_Up) && m_page) {
        m_page->takeKeyboard(); // from the header into the list
    } else {
        QWidget::keyPressEvent(event);
    }
}

void WidgetWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    rememberPlace();
}

void WidgetWindow::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    rememberPlace();
}

void WidgetWindow::rememberPlace() {
    if (!m_wasShown) {
        return;
    }
    if (m_isPlacedByKeys && m_losing) {
        followKeyboard(); // it is still being placed
    }
    m_isMoved = true;
    m_saving = m_surroundings.runLoop.callAfter(kSettled, [this] {
        const auto before = m_remembered;
        settle();
        if (m_remembered != before) {
            Q_EMIT placed();
        }
    });
}

void WidgetWindow::settle() {
    const auto place = geometry();
    if (!std::exchange(m_isMoved, false) || place == m_fitted) {
        return;
    }
    m_fitted = place;
    m_remembered.x = place.x();
    m_remembered.y = place.y();
    m_remembered.width = place.width();
    m_remembered.height = place.height();
}

void WidgetWindow::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && m_isCalled) {
        followKeyboard();
    }
}

void WidgetWindow::beCalled() {
    m_isCalled = true;
    if (isActiveWindow()) {
        followKeyboard();
    }
}

void WidgetWindow::followKeyboard() {
    m_losing.reset();
    if (isActiveWindow()) {
        m_isPlacedByKeys = false;
        standBelow(Below::no); // keys are to lead to nothing that lies under other windows
        raise();
    } else {
        m_losing = m_surroundings.runLoop.callAfter(m_isPlacedByKeys ? kPlaced : kGone, [this] {
            m_isCalled = false;
            m_isPlacedByKeys = false;
            standBelow(m_remembered.isBelow ? Below::yes : Below::no);
        });
    }
}

void WidgetWindow::closeEvent(QCloseEvent* event) {
    QWidget::closeEvent(event);
    Q_EMIT closed();
}

void WidgetWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const auto& colors = m_surroundings.theme.colors();
    painter.fillRect(rect(), colors.content);
    if (windowFlags().testFlag(Qt::FramelessWindowHint)) {
        painter.setPen(QPen(colors.border, kLine));
        painter.drawRect(rect().adjusted(0, 0, -1, -1));
    }
    if (!std::exchange(m_isPainted, true)) {
        QMetaObject::invokeMethod(this, &WidgetWindow::firstPainted, Qt::QueuedConnection);
    }
}

void WidgetWindow::applyTheme() {
    const auto& theme = m_surroundings.theme;
    const auto edge =
        windowFlags().testFlag(Qt::FramelessWindowHint) ? theme.space(Space::small) : 0;
    layout()->setContentsMargins(edge, edge, edge, edge);
    setMinimumSize(theme.scaled(kLeastWidth), theme.scaled(kLeastHeight));
    if (m_wasShown) {
        followScreens(); // it may have become larger
    }
    showBoard();
    update();
}

} // namespace korvex::ui
