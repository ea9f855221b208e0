#include "ui/windows/Sidebar.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/SidebarRow.h"
#include "ui/kit/controls/SearchField.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/kit/overlays/Overlay.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Refusal.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QTimer>
#include <QToolButton>

#include <algorithm>
#include <utility>

namespace korvex::ui {

namespace {

/// In pixels at the standard font size and any smaller one.
constexpr int kMinimumWidth = 180;
constexpr int kMaximumWidth = 360;

/// Rows that lead to pages are a list to who hears of them.
QWidget* listOf(const QString& name, std::initializer_list<SidebarRow*> rows, QWidget* parent) {
    auto* const list = new QWidget(parent);
    list->setAccessibleName(name);
    Accessibility::setRole(*list, QAccessible::List);
    auto* const column = new QVBoxLayout(list);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    for (auto* const row : rows) {
        column->addWidget(row);
    }
    return list;
}

} // namespace

Sidebar::Sidebar(services::BoardService& boards, store::ModelContext& context,
                 const base::Clock& clock, const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_boards(boards),
      m_clock(clock),
      m_theme(theme),
      m_model(boards, context),
      m_renaming(boards, clock, *this),
      m_column(new QVBoxLayout(this)),
      m_top(new QHBoxLayout),
      m_heading(new QHBoxLayout),
      m_search(new SearchField(theme, this)),
      m_upcoming(new SidebarRow(QStringLiteral("calendar-dots"), tr("Upcoming"), theme, this)),
      m_completed(new SidebarRow(QStringLiteral("check-circle"), tr("Completed"), theme, this)),
      m_title(new QLabel(tr("Boards"), this)),
      m_add(new QToolButton(this)),
      m_list(new BoardListView(m_model, theme, this)),
      m_banner(new ErrorBanner(theme, this)),
      m_archived(new SidebarRow(QStringLiteral("archive"), tr("Archived boards"), theme, this)) {
    setAccessibleName(tr("Sidebar"));
    Accessibility::setRole(*this, QAccessible::Grouping);
    m_search->setAccessibleName(tr("Search all boards"));
    m_search->setToolTip(tr("Search all boards (Ctrl+F)"));
    m_title->setAlignment(lineStart());
    m_title->setForegroundRole(QPalette::PlaceholderText);
    m_add->setAutoRaise(true);
    m_add->setFocusPolicy(Qt::TabFocus);
    m_add->setAccessibleName(tr("New board"));
    m_add->setToolTip(tr("New board (Ctrl+Shift+N)"));
    m_add->setEnabled(boards.allowsChanges());
    layOut();

    connect(m_add, &QToolButton::clicked, this, &Sidebar::createBoard);
    connectRows();
    connect(m_list, &BoardListView::boardChosen, this, &Sidebar::boardChosen);
    connect(m_list, &BoardListView::menuRequested, this, &Sidebar::boardMenuRequested);
    connect(m_list, &BoardListView::renamed, this,
            [this](model::Board* board, const QString& name) {
                m_banner->end(m_message);
                if (const auto refused = m_renaming.store(*board, name)) {
                    showMessage(*refused);
                }
            });
    connect(m_list, &BoardListView::renamingEnded, this, [this] { m_creation.reset(); });
    // Once the editor is gone, whose row goes with it.
    connect(m_list, &BoardListView::renamingGivenUp, this, &Sidebar::takeBackCreation,
            Qt::QueuedConnection);
    connect(m_list, &BoardListView::dropped, this, &Sidebar::move);
    connect(m_list, &BoardListView::moveRequested, this, &Sidebar::moveRequested);
    connect(m_list, &BoardListView::entryDropped, this, &Sidebar::entryDropped);
    connect(m_list, &BoardListView::clicked, this, &Sidebar::boardPicked);
    connect(m_list, &BoardListView::returnPressed, this, &Sidebar::boardPicked);
    connect(&theme, &Theme::changed, this, &Sidebar::applyTheme);
    applyTheme();
}

void Sidebar::layOut() {
    m_top->addWidget(m_search);
    m_heading->addWidget(m_title, 1);
    m_heading->addWidget(m_add);
    m_column->setSpacing(0);
    m_column->addLayout(m_top);
    m_column->addWidget(listOf(tr("Pages"), {m_upcoming, m_completed}, this));
    m_column->addLayout(m_heading);
    m_column->addWidget(m_list);
    m_column->addStretch();
    m_column->addWidget(listOf(tr("More pages"), {m_archived}, this));
    m_archived->hide();
    new Overlay(*m_banner, *this, Overlay::Place::foot, m_theme, Space::medium);
}

void Sidebar::connectRows() {
    const auto lead = [this](SidebarRow* row, PageKind page) {
        connect(row, &SidebarRow::clicked, this, [this, page] { Q_EMIT pageRequested(page); });
        connect(row, &SidebarRow::walked, this,
                [this, row](int direction) { walk(row, direction); });
        connect(row, &SidebarRow::walkedToEnd, this, &Sidebar::walkToEnd);
    };
    lead(m_upcoming, PageKind::upcoming);
    lead(m_completed, PageKind::completed);
    lead(m_archived, PageKind::archived);
    connect(m_list, &BoardListView::leftUpwards, this,
            [this] { m_completed->setFocus(Qt::OtherFocusReason); });
    connect(m_list, &BoardListView::leftDownwards, this, [this] {
        if (!m_archived->isHidden()) {
            m_archived->setFocus(Qt::OtherFocusReason);
        }
    });
}

/// The arrows lead through the sidebar as if it were one list.
void Sidebar::walk(const SidebarRow* from, int direction) {
    if (from == m_upcoming) {
        (direction < 0 ? static_cast<QWidget*>(m_search) : m_completed)->setFocus();
    } else if (from == m_completed && direction < 0) {
        m_upcoming->setFocus();
    } else if (from == m_completed) {
        m_list->focusEnd(BoardListView::End::top);
    } else if (direction < 0) {
        m_list->focusEnd(BoardListView::End::bottom);
    }
}

void Sidebar::walkToEnd(int direction) {
    if (direction < 0) {
        m_upcoming->setFocus();
    } else if (m_archived->isHidden()) {
        m_list->focusEnd(BoardListView::End::bottom);
    } else {
        m_archived->setFocus();
    }
}

void Sidebar::showChoice(PageKind page, const model::Board* board) {
    m_choice = {page, board ? std::optional(board->id()) : std::nullopt};
    m_upcoming->setChecked(page == PageKind::upcoming);
    m_completed->setChecked(page == PageKind::completed);
    const auto isListed = board && m_model.rowOf(*board) >= 0;
    // An archived board that is looked at belongs to the archived ones.
    m_archived->setChecked(page == PageKind::archived || (page == PageKind::board && !isListed));
    if (page == PageKind::board && isListed) {
        m_list->setCurrentBoard(*board);
    } else {
        m_list->clearChoice();
    }
}

void Sidebar::takeKeyboard() {
    for (auto* const row : {m_upcoming, m_completed, m_archived}) {
        if (row->isChecked()) {
            row->setFocus();
            return;
        }
    }
    m_list->setFocus();
}

int Sidebar::searchHeight() const {
    return m_search->geometry().bottom() + 1 + m_search->y();
}

void Sidebar::setUpcoming(int count, int reminders) {
    m_upcoming->setCount(count);
    m_upcoming->setMark(reminders > 0 ? QStringLiteral("bell-fill") : QString());
    if (reminders > 0) {
        m_upcoming->setAccessibleDescription(tr("%1, %Ln reminder(s) came due", nullptr, reminders)
                                                 .arg(m_upcoming->accessibleDescription()));
    }
    m_upcoming->setToolTip(reminders > 0
                               ? tr("Upcoming: %Ln reminder(s) came due", nullptr, reminders)
                               : m_upcoming->text());
}

void Sidebar::refresh() {
    if (const auto refused = refusal([&] { m_model.refresh(); })) {
        showMessage(*refused);
    }
    m_archived->setVisible(!m_model.archivedBoards().empty());
    countSoon();
}

void Sidebar::countSoon() {
    if (m_isCountDue) {
        return;
    }
    m_isCountDue = true;
    QTimer::singleShot(0, this, [this] {
        m_isCountDue = false;
        if (const auto refused = refusal([&] { m_model.countTodos(); })) {
            showMessage(*refused);
        }
    });
}

void Sidebar::createBoard() {
    model::Board* created = nullptr;
    const auto refused = refusal([&] {
        created = &m_boards.createBoard(
            toUtf8(tr("New board")), m_clock.now(),
            {.color = model::rawValue(nextColor(m_boards.boards(), m_theme.colors()))});
    });
    if (refused) {
        showMessage(*refused);
        return;
    }
    m_banner->end(m_message);
    // A search has ended by now.
    const auto before = m_choice.page == PageKind::search ? Choice() : m_choice;
    Q_EMIT boardChosen(created);
    rename(*created);
    m_creation = {created->id(), before};
}

void Sidebar::takeBackCreation() {
    const auto creation = std::exchange(m_creation, std::nullopt);
    auto* const board = creation ? m_boards.board(creation->board) : nullptr;
    if (!board) {
        return;
    }
    const auto refused = refusal([&] {
        if (board->entries().empty()) { // or somebody has begun to use it
            m_boards.deleteBoard(*board);
        }
    });
    if (refused) {
        showMessage(*refused);
    } else {
        choose(creation->before);
    }
    Q_EMIT creationGivenUp();
}

void Sidebar::choose(const Choice& choice) {
    if (choice.page != PageKind::board) {
        Q_EMIT pageRequested(choice.page);
    } else if (auto* const board = m_boards.board(choice.board.value_or(base::Uuid()))) {
        Q_EMIT boardChosen(board);
    }
}

void Sidebar::rename(model::Board& board, const QString& typed) {
    if (m_model.rowOf(board) >= 0) {
        m_list->rename(board, typed);
    }
}

std::optional<QRect> Sidebar::placeOf(const model::Board& board) const {
    const auto row = m_model.rowOf(board);
    if (row < 0 || !m_list->isVisible()) {
        return std::nullopt;
    }
    const auto rect = m_list->visualRect(m_model.index(row, 0));
    return QRect(m_list->viewport()->mapToGlobal(rect.topLeft()), rect.size());
}

bool Sidebar::leave() {
    m_list->endRenaming();
    return !m_renaming.isNameComingBack();
}

void Sidebar::move(const base::Uuid& id, const base::Uuid& target,
                   model::EntryPlacement placement) {
    if (id == target) {
        return;
    }
    const auto refused = refusal([&] { m_boards.moveBoard(id, target, placement, m_clock.now()); });
    if (refused) {
        showMessage(*refused);
    }
}

void Sidebar::showMessage(const QString& message) {
    m_message = m_banner->say({.text = message}, m_message);
}

void Sidebar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), m_theme.colors().sidebar);
    painter.fillRect(mirrored(QRect(width() - kLine, 0, kLine, height()), rect()),
                     m_theme.colors().hairline);
}

QSize Sidebar::minimumSizeHint() const {
    return {std::max(kMinimumWidth, m_theme.scaled(kMinimumWidth)),
            QWidget::minimumSizeHint().height()};
}

void Sidebar::applyTheme() {
    const auto& colors = m_theme.colors();
    m_title->setFont(Theme::strong(m_theme.smallFont()));
    const auto sign = m_theme.extent(Extent::icon);
    const auto control = m_theme.extent(Extent::control);
    m_add->setIcon(IconSet::icon(QStringLiteral("plus"), colors.secondaryText));
    m_add->setIconSize({sign, sign});
    m_add->setFixedSize(control, control);

    const auto side = m_theme.space(Space::medium);
    const auto apart = m_theme.space(Space::large);
    m_column->setContentsMargins(mirrored(QMargins(0, 0, kLine, side))); // beside the hairline
    m_top->setContentsMargins(side, apart, side, side);
    // Its words begin over the icons of the boards, its sign ends over their counts.
    m_heading->setContentsMargins(
        mirrored(QMargins(2 * side, apart, 2 * side - (control - sign) / 2, 0)));
    setMaximumWidth(std::max(kMaximumWidth, m_theme.scaled(kMaximumWidth)));
    updateGeometry();
    update();
}

} // namespace korvex::ui
