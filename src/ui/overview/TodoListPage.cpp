#include "ui/overview/TodoListPage.h"

#include "model/ServiceErrors.h"
#include "ui/boards/BoardLabel.h"
#include "ui/kit/controls/MenuItems.h"
#include "ui/kit/pages/PageHeader.h"
#include "ui/overview/TodoListView.h"

#include <unordered_set>

namespace korvex::ui {

TodoListPage::TodoListPage(const Workspace& workspace, const Theme& theme,
                           TodoListModel::Detail detail, const QString& title, QWidget* parent)
    : Page(theme, parent),
      m_workspace(workspace),
      m_model(workspace.scheduleClock, workspace.dates, detail),
      m_header(new PageHeader(title, theme)),
      m_list(new TodoListView(m_model, theme)),
      m_actions(*this, todoServices(workspace), workspace.undo, theme),
      m_ticks({.list = *this,
               .view = *m_list,
               .leaving = m_list->leaving(),
               .actions = m_actions,
               .runLoop = workspace.runLoop}) {
    m_list->setAccessibleName(title);
    layOut({m_header}, *m_list);
    connectList();
    m_clockTicks = workspace.scheduleClock.didTick().connect([this](base::Instant) { catchUp(); });
}

TodoListPage::~TodoListPage() = default;

void TodoListPage::connectList() {
    const auto onEntry = [this](auto&& action) {
        return [this, action](int row) { (this->*action)(*m_model.entry(row)); };
    };
    connect(m_list, &TodoListView::toggleRequested, this, onEntry(&TodoListPage::toggle));
    connect(m_list, &TodoListView::scheduleRequested, this, onEntry(&TodoListPage::openSchedule));
    connect(m_list, &TodoListView::deletionRequested, this, onEntry(&TodoListPage::remove));
    connect(m_list, &TodoListView::openRequested, this,
            [this](int row) { Q_EMIT entryOpenRequested(m_model.entry(row)); });
    connect(m_list, &TodoListView::menuRequested, this, &TodoListPage::openMenu);
}

QString TodoListPage::title() const {
    return m_header->title();
}

void TodoListPage::takeKeyboard() {
    m_list->setFocus();
    if (m_list->currentRow() < 0) {
        m_list->setCurrentRow(m_list->nearestTodo(0));
    }
}

bool TodoListPage::showRecord(const base::Uuid& id) {
    const auto* const entry = m_workspace.context.find<model::Entry>(id);
    return entry && m_list->goTo(m_model.rowOf(*entry));
}

void TodoListPage::scrollToTop() {
    m_list->scrollToTop();
}

void TodoListPage::forgetLabels() {
    m_list->forgetLabels();
}

void TodoListPage::showEvent(QShowEvent* event) {
    Page::showEvent(event);
    if (m_isBehind) {
        catchUp();
    }
}

void TodoListPage::catchUp() {
    m_isBehind = !isVisible();
    if (m_isBehind) {
        return;
    }
    follow([this] {
        setNow(m_workspace.scheduleClock.now(), m_workspace.dates.formats().calendar().timeZone());
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

void TodoListPage::recordsChanged(const store::ChangeSet& changes) {
    m_isBehind = m_isBehind || !isVisible();
    if (m_isBehind) {
        return;
    }
    m_list->entriesChanged({changes.updated.begin(), changes.updated.end()});
    follow([this] {
        followBoards();
        followNames();
    });
}

void TodoListPage::followBoards() {
    m_list->viewport()->update(); // icons and colours are drawn as they are now
}

void TodoListPage::followNames() {
    std::unordered_set<const model::Board*> boards;
    for (int row = 0; row < m_model.rowCount(); ++row) {
        const auto* const entry = m_model.entry(row);
        if (const auto* const board = entry ? entry->board() : nullptr) {
            boards.insert(board);
        }
    }
    QStringList names;
    for (const auto* const board : boards) {
        names.append(boardLabel(*board));
    }
    names.sort();
    m_list->setBoardNames(names);
}

void TodoListPage::groupsChanged(TodoListModel::Extent extent) {
    m_isBehind = m_isBehind || !isVisible();
    if (m_isBehind) {
        return;
    }
    follow([&] {
        m_model.setGroups(groups(), extent);
        followNames();
    });
    showNotes();
}

void TodoListPage::showNotes() {
    m_header->setNote(headerNote());
    if (m_model.rowCount() == 0) {
        const auto hint = emptyHint();
        setHint(hint.what, hint.next);
    } else {
        setHint({});
    }
}

bool TodoListPage::belongs(const model::Entry& entry) const {
    return entry.isCompleted() == (m_model.detail() == TodoListModel::Detail::completion);
}

void TodoListPage::hold(model::Entry& entry) {
    m_model.holdInPlace(entry);
    linger(entry.id());
}

void TodoListPage::letGo(model::Entry& entry) {
    m_model.letMove(entry);
    release(entry.id());
}

int TodoListPage::rowAfter(int row) const {
    return m_list->nearestTodo(row);
}

void TodoListPage::remove(model::Entry& entry) {
    const auto row = m_model.rowOf(entry);
    if (row < 0) {
        return;
    }
    m_actions.remove(entry, {.text = m_model.text(row), .goOn = [this, row] {
                                 m_list->setCurrentRow(m_list->nearestTodo(row));
                                 m_list->setFocus();
                             }});
}

void TodoListPage::openSchedule(model::Entry& entry) {
    if (!m_workspace.boards.allowsChanges()) {
        refuse(translated(model::EntryServiceErrorCase::readOnlyStore));
        return;
    }
    const auto row = m_model.rowOf(entry);
    if (entry.isCompleted() || row < 0) {
        return;
    }
    m_list->setCurrentRow(row);
    m_actions.openSchedule(entry, [this, id = entry.id()]() -> std::optional<QRect> {
        const auto* const found = m_workspace.context.find<model::Entry>(id);
        const auto at = found && isVisible() ? m_model.rowOf(*found) : -1;
        return at < 0 ? std::nullopt : std::optional(m_list->scheduleAnchor(at));
    });
}

void TodoListPage::openMenu(int row, const QPoint& globalPosition) {
    auto& entry = *m_model.entry(row);
    const bool canChange = m_workspace.boards.allowsChanges();
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const MenuItems items(*menu, *this);
    items.add(tr("Go to entry"), Qt::Key_Return,
              [this, &entry] { Q_EMIT entryOpenRequested(&entry); });
    menu->addSeparator();
    if (m_model.detail() == TodoListModel::Detail::due) {
        items.add(tr("Schedule…"), Qt::CTRL | Qt::Key_D, [this, &entry] { openSchedule(entry); })
            .setEnabled(canChange && !entry.isCompleted());
    }
    items
        .add(entry.isCompleted() ? tr("Restore") : tr("Complete"), Qt::CTRL | Qt::Key_Return,
             [this, &entry] { toggle(entry); })
        .setEnabled(canChange);
    menu->addSeparator();
    items.add(tr("Delete todo"), Qt::Key_Delete, [this, &entry] { remove(entry); })
        .setEnabled(canChange);
    menu->popup(globalPosition);
}

} // namespace korvex::ui
