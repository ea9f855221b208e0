#include "ui/overview/TodoGroupPage.h"

#include "ui/boards/BoardLabel.h"
#include "ui/kit/ErrorBanner.h"
#include "ui/kit/MenuItems.h"
#include "ui/overview/TodoGroupView.h"
#include "ui/todos/SchedulePopover.h"

#include <QLabel>
#include <QMenu>
#include <QTimer>
#include <QVBoxLayout>

namespace korvex::ui {

namespace {

constexpr int kSideMargin = 18;

} // namespace

TodoGroupPage::TodoGroupPage(const Workspace& workspace, const Theme& theme,
                             TodoGroupModel::Detail detail, const QString& title, QWidget* parent)
    : QWidget(parent),
      m_workspace(workspace),
      m_theme(theme),
      m_model(workspace.clock, workspace.dates, detail),
      m_column(new QVBoxLayout(this)),
      m_title(new QLabel(title, this)),
      m_note(new QLabel(this)),
      m_banner(new ErrorBanner(theme, this)),
      m_emptyHint(new QLabel(this)),
      m_list(new TodoGroupView(m_model, theme, this)) {
    m_list->setAccessibleName(title);
    m_title->setWordWrap(true); // so that a large font does not keep the window wide
    m_note->setWordWrap(true);
    m_note->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_emptyHint->setWordWrap(true);
    m_emptyHint->setContentsMargins(kSideMargin, 4, kSideMargin, 8);
    m_emptyHint->setForegroundRole(QPalette::PlaceholderText);
    m_emptyHint->hide();
    auto* const header = new QHBoxLayout;
    header->setContentsMargins(kSideMargin, 16, kSideMargin, 10);
    header->addWidget(m_title, 1);
    header->addWidget(m_note);
    m_column->setContentsMargins(0, 0, 0, 0);
    m_column->setSpacing(0);
    m_column->addLayout(header);
    m_column->addWidget(m_banner);
    m_column->addWidget(m_emptyHint);
    m_column->addWidget(m_list, 1);
    setFocusProxy(m_list);

    connectList();
    connect(&theme, &Theme::changed, this, &TodoGroupPage::applyTheme);
    applyTheme();
    m_ticks = workspace.scheduleClock.didTick().connect([this](base::Instant) { catchUp(); });
}

TodoGroupPage::~TodoGroupPage() = default;

void TodoGroupPage::connectList() {
    const auto onEntry = [this](auto&& action) {
        return [this, action](int row) { (this->*action)(*m_model.entry(row)); };
    };
    connect(m_list, &TodoGroupView::toggleRequested, this, onEntry(&TodoGroupPage::toggle));
    connect(m_list, &TodoGroupView::scheduleRequested, this, onEntry(&TodoGroupPage::openSchedule));
    connect(m_list, &TodoGroupView::deletionRequested, this, onEntry(&TodoGroupPage::remove));
    connect(m_list, &TodoGroupView::openRequested, this,
            [this](int row) { Q_EMIT entryOpenRequested(m_model.entry(row)); });
    connect(m_list, &TodoGroupView::menuRequested, this, &TodoGroupPage::openMenu);
}

void TodoGroupPage::insertBar(QWidget& bar) {
    m_column->insertWidget(m_column->indexOf(m_emptyHint), &bar);
    auto* last = &bar;
    while (bar.isAncestorOf(last->nextInFocusChain())) {
        last = last->nextInFocusChain();
    }
    setTabOrder(last, m_list);
}

void TodoGroupPage::focusList() {
    m_list->setFocus();
    if (m_list->currentRow() < 0) {
        m_list->setCurrentRow(m_list->nearestTodo(0));
    }
}

void TodoGroupPage::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (m_isBehind) {
        catchUp();
    }
}

void TodoGroupPage::catchUp() {
    m_isBehind = !isVisible();
    if (m_isBehind) {
        return;
    }
    perform([this] {
        setNow(m_workspace.now(), m_workspace.dates.formats().calendar().timeZone());
        followBoards();
    });
    if (!m_isFollowing) {
        // After those who keep the groups: then rows of what is gone have left before.
        m_isFollowing = true;
        m_changes = m_workspace.context.didChange().connect(
            [this](const store::ChangeSet& changes) { recordsChanged(changes); });
    }
    groupsChanged();
    m_list->forgetLabels();
}

void TodoGroupPage::recordsChanged(const store::ChangeSet& changes) {
    m_isBehind = m_isBehind || !isVisible();
    if (m_isBehind) {
        return;
    }
    m_list->entriesChanged({changes.updated.begin(), changes.updated.end()});
    perform([this] { followBoards(); });
}

void TodoGroupPage::followBoards() {
    QStringList names;
    for (const auto* const board : m_workspace.boards.boards()) {
        if (shows(*board)) {
            names.append(boardLabel(*board));
        }
    }
    m_list->setBoardNames(names);
    m_list->viewport()->update(); // icons and colours are drawn as they are now
}

void TodoGroupPage::groupsChanged(TodoGroupModel::Extent extent) {
    m_isBehind = m_isBehind || !isVisible();
    if (m_isBehind) {
        return;
    }
    perform([&] { m_model.setGroups(groups(), extent); });
    showNotes();
}

void TodoGroupPage::showNotes() {
    m_note->setText(headerNote());
    m_emptyHint->setText(emptyHint());
    m_emptyHint->setVisible(m_model.rowCount() == 0);
}

bool TodoGroupPage::belongs(const model::Entry& entry) const {
    return entry.isCompleted() == (m_model.detail() == TodoGroupModel::Detail::completion);
}

void TodoGroupPage::toggle(model::Entry& entry) {
    if (belongs(entry)) {
        tickAway(entry);
    } else {
        takeBack(entry);
    }
}

void TodoGroupPage::tickAway(model::Entry& entry) {
    const int attempt = ++m_attempts;
    if (m_lingering.contains(&entry)) {
        release(entry.id()); // taken back before: it lingers where it is now
    }
    m_lingering[&entry] = {attempt, entry.sortOrder(), entry.completedAt()};
    m_model.holdInPlace(entry);
    linger(entry.id());
    // Stored at once, so that nothing is lost; only the row stays a little longer.
    const bool isDone = perform([&] {
        if (entry.isCompleted()) {
            m_workspace.entries.restoreTodo(entry, m_workspace.now());
        } else {
            m_workspace.entries.completeTodo(entry, m_workspace.now());
        }
    });
    if (!isDone) {
        letGo(entry, attempt);
        return;
    }
    m_banner->clear();
    QTimer::singleShot(kTickShown, this, [this, &entry, attempt] { endLingering(entry, attempt); });
}

/// As if nothing had been: to the place, or with the moment of completion, that it had.
void TodoGroupPage::takeBack(model::Entry& entry) {
    const auto before = m_lingering.find(&entry);
    if (before == m_lingering.end()) {
        return;
    }
    perform([&] {
        if (entry.isCompleted()) {
            m_workspace.entries.restoreTodo(entry, m_workspace.now(), before->second.sortOrder);
        } else {
            m_workspace.entries.completeTodo(entry, m_workspace.now(), before->second.completedAt);
        }
    });
}

void TodoGroupPage::endLingering(model::Entry& entry, int attempt) {
    const auto found = m_lingering.find(&entry);
    if (found == m_lingering.end() || found->second.attempt != attempt) {
        return;
    }
    if (isVisible() && !belongs(entry) && m_model.rowOf(entry) >= 0) {
        m_list->animateLeaving(entry, [this, &entry, attempt] { letGo(entry, attempt); });
    } else {
        letGo(entry, attempt);
    }
}

void TodoGroupPage::letGo(model::Entry& entry, int attempt) {
    const auto found = m_lingering.find(&entry);
    if (found == m_lingering.end() || found->second.attempt != attempt) {
        return; // ticked once more meanwhile
    }
    m_lingering.erase(found);
    const int row = m_model.rowOf(entry);
    const bool wasCurrent = row >= 0 && m_list->currentRow() == row;
    m_model.letMove(entry);
    release(entry.id());
    if (wasCurrent && m_model.rowOf(entry) < 0) {
        m_list->setCurrentRow(m_list->nearestTodo(row));
    }
}

void TodoGroupPage::remove(model::Entry& entry) {
    const int row = m_model.rowOf(entry);
    if (row < 0) {
        return;
    }
    const auto text = shortened(m_model.text(row));
    if (!perform([&] { m_workspace.entries.deleteEntry(entry); })) {
        return;
    }
    m_list->setCurrentRow(m_list->nearestTodo(row));
    m_list->setFocus();
    m_banner->offer(tr("“%1” was deleted.").arg(text), tr("Undo"),
                    [this] { perform([this] { m_workspace.undo.undo(); }); });
}

void TodoGroupPage::openSchedule(model::Entry& entry) {
    const int row = m_model.rowOf(entry);
    if (entry.isCompleted() || row < 0) {
        return;
    }
    m_list->setCurrentRow(row);
    auto* const popover = new SchedulePopover(entry, m_workspace, m_theme, window());
    popover->openAt(m_list->detailRect(row));
    popover->setFocus();
}

void TodoGroupPage::openMenu(int row, const QPoint& globalPosition) {
    auto& entry = *m_model.entry(row);
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const MenuItems items(*menu, *this);
    items.add(tr("Go to entry"), Qt::Key_Return,
              [this, &entry] { Q_EMIT entryOpenRequested(&entry); });
    menu->addSeparator();
    if (m_model.detail() == TodoGroupModel::Detail::due) {
        items.add(tr("Schedule…"), Qt::CTRL | Qt::Key_D, [this, &entry] { openSchedule(entry); })
            .setEnabled(!entry.isCompleted());
    }
    items.add(entry.isCompleted() ? tr("Restore") : tr("Complete"), Qt::CTRL | Qt::Key_Return,
              [this, &entry] { toggle(entry); });
    menu->addSeparator();
    items.add(tr("Delete"), Qt::Key_Delete, [this, &entry] { remove(entry); });
    menu->popup(globalPosition);
}

void TodoGroupPage::applyTheme() {
    m_title->setFont(m_theme.titleFont());
    m_note->setFont(m_theme.font());
    auto quiet = m_note->palette();
    quiet.setColor(QPalette::WindowText, m_theme.colors().secondaryText);
    m_note->setPalette(quiet);
}

void TodoGroupPage::showRefusal(const QString& message) {
    m_banner->showMessage(message);
}

} // namespace korvex::ui
