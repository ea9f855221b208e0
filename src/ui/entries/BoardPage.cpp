#include "ui/entries/BoardPage.h"

#include "ui/boards/ArchivedNotice.h"
#include "ui/boards/BoardHeader.h"
#include "ui/boards/BoardPicker.h"
#include "ui/kit/ErrorBanner.h"
#include "ui/kit/MenuItems.h"
#include "ui/kit/Refusal.h"
#include "ui/kit/Text.h"
#include "ui/todos/SchedulePopover.h"

#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QTimer>
#include <QVBoxLayout>

namespace korvex::ui {

BoardPage::BoardPage(const Workspace& workspace, const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_workspace(workspace),
      m_theme(theme),
      m_model(workspace.context, workspace.serializer, workspace.clock, workspace.dates),
      m_header(new BoardHeader(theme, this)),
      m_archivedNotice(new ArchivedNotice(theme, this)),
      m_banner(new ErrorBanner(theme, this)),
      m_emptyHint(new QLabel(tr("Nothing here yet. Type a todo, or paste several lines."), this)),
      m_list(new EntryListView(m_model, workspace.code, theme, this)),
      m_editing(m_model, *m_list, workspace.entries, workspace.code, workspace.clock, theme),
      m_attachments(workspace, *this),
      m_attachmentInput(m_model, *m_list, m_attachments, workspace.context, theme) {
    m_emptyHint->setWordWrap(true);
    m_emptyHint->setContentsMargins(18, 4, 18, 8);
    m_emptyHint->setForegroundRole(QPalette::PlaceholderText);
    m_emptyHint->hide();
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_header);
    column->addWidget(m_archivedNotice);
    column->addWidget(m_banner);
    column->addWidget(m_emptyHint);
    column->addWidget(m_list, 1);
    setFocusProxy(m_list);

    connect(m_header, &BoardHeader::iconRequested, this, &BoardPage::iconRequested);
    connect(m_header, &BoardHeader::menuRequested, this, &BoardPage::menuRequested);
    connect(m_archivedNotice, &ArchivedNotice::unarchiveRequested, this,
            &BoardPage::unarchiveRequested);
    connect(&m_model, &EntryListModel::countsChanged, this, &BoardPage::updateHeader);
    connect(&m_model, &QAbstractItemModel::rowsInserted, this, &BoardPage::updateHeader);
    connect(&m_model, &QAbstractItemModel::rowsRemoved, this, &BoardPage::updateHeader);
    connect(&theme, &Theme::changed, this, &BoardPage::updateHeader);
    connectList();
    connectAttachments();
    m_ticks = workspace.scheduleClock.didTick().connect(
        [this](base::Instant) { m_list->forgetLabels(); });
}

BoardPage::~BoardPage() = default;

void BoardPage::connectList() {
    connect(m_list, &EntryListView::editRequested, &m_editing, &EntryEditing::edit);
    connect(m_list, &EntryListView::newTodoRequested, &m_editing, &EntryEditing::startDraftAtEnd);
    connect(m_list, &EntryListView::toggleRequested, this, &BoardPage::toggle);
    connect(m_list, &EntryListView::completedToggled, this,
            [this] { m_model.setCompletedExpanded(!m_model.isCompletedExpanded()); });
    connect(m_list, &EntryListView::scheduleRequested, this,
            [this](int row) { openSchedule(*m_model.entry(row)); });
    connect(m_list, &EntryListView::moveRequested, this, [this](int row, int offset) {
        if (m_model.kind(row) == EntryListModel::RowKind::entry) {
            move(*m_model.entry(row), offset);
        }
    });
    connect(m_list, &EntryListView::dropped, this, &BoardPage::drop);
    connect(m_list, &EntryListView::menuRequested, this, &BoardPage::openMenu);
    connect(&m_editing, &EntryEditing::completionRequested, this,
            [this](model::Entry* entry) { complete(*entry); });
    connect(&m_editing, &EntryEditing::scheduleRequested, this,
            [this](model::Entry* entry) { openSchedule(*entry); });
    connect(&m_editing, &EntryEditing::moveRequested, this,
            [this](model::Entry* entry, int offset) { move(*entry, offset); });
    connect(&m_editing, &EntryEditing::typeChangeRequested, this,
            [this](model::Entry* entry) { changeType(*entry); });
    connect(&m_editing, &EntryEditing::boardChangeRequested, this,
            [this](model::Entry* entry) { chooseBoard(*entry); });
    connect(&m_editing, &EntryEditing::deletionRequested, this,
            [this](model::Entry* entry) { remove(*entry); });
}

void BoardPage::connectAttachments() {
    connect(&m_attachments, &AttachmentActions::refused, this, &BoardPage::showMessage);
    connect(&m_attachments, &AttachmentActions::done, this, [this] { m_banner->clear(); });
    const auto attachToEdited = [this](const QMimeData* offered) {
        if (auto* const entry = m_editing.storedEntry()) {
            m_attachments.attachOffered(*offered, *entry);
        }
    };
    connect(&m_editing, &EntryEditing::attachmentsPasted, this, attachToEdited);
    connect(&m_attachmentInput, &AttachmentInput::droppedOnDraft, this, attachToEdited);
    connect(&m_editing, &EntryEditing::menuOpening, this,
            [this](QMenu* menu, model::Entry* entry) { addAttachmentItems(*menu, entry); });
}

void BoardPage::attachFiles() {
    const int row = m_list->currentRow();
    auto* const entry = isReadOnly()         ? nullptr
                        : m_editing.isOpen() ? m_editing.storedEntry()
                        : row < 0            ? nullptr
                                             : m_model.entry(row);
    if (entry) {
        m_attachments.chooseFiles(*entry);
    }
}

void BoardPage::addAttachmentItems(QMenu& menu, model::Entry* entry) {
    menu.addSeparator();
    if (!isReadOnly()) {
        MenuItems(menu, *this)
            .add(tr("Attach files…"), Qt::CTRL | Qt::SHIFT | Qt::Key_A, [this] { attachFiles(); })
            .setEnabled(!entry || m_attachments.canAttachTo(*entry));
    }
    if (entry) {
        m_attachments.addAttachments(menu, *entry);
    }
    menu.addSeparator();
}

template <typename Operation>
bool BoardPage::perform(Operation&& operation) {
    const auto refused = refusal(operation);
    if (refused) {
        m_banner->showMessage(*refused);
    } else {
        m_banner->clear();
    }
    return !refused;
}

bool BoardPage::showBoard(model::Board& board) {
    if (m_model.board() == &board) {
        return true;
    }
    if (!leaveEditor()) {
        return false;
    }
    // Reads the entries; what follows cannot fail any more.
    if (!perform([&] { static_cast<void>(board.entries()); })) {
        return false;
    }
    m_model.setBoard(&board);
    m_list->scrollToTop();
    return true;
}

void BoardPage::startTodo() {
    if (!isReadOnly()) {
        m_editing.startDraftAtEnd();
    }
}

void BoardPage::startText() {
    if (isReadOnly() || !m_editing.leave()) {
        return;
    }
    const int row = m_list->currentRow();
    const bool isOpen = row >= 0 && m_model.kind(row) == EntryListModel::RowKind::entry;
    m_editing.startTextDraft(isOpen ? m_model.entry(row) : nullptr);
}

void BoardPage::focusList() {
    m_list->setFocus();
    if (!m_list->currentIndex().isValid() && m_model.rowCount() > 0) {
        m_list->setCurrentRow(0);
    }
}

bool BoardPage::showEntry(model::Entry& entry) {
    if (entry.board() != m_model.board() || !leaveEditor()) {
        return false;
    }
    if (entry.isCompletedTodo() && m_model.rowOf(entry) < 0) {
        m_model.setCompletedExpanded(true);
    }
    const int row = m_model.rowOf(entry);
    if (row < 0) {
        return false;
    }
    m_list->showRow(row);
    m_list->setFocus();
    return true;
}

void BoardPage::refresh() {
    m_editing.recordsChanged();
    m_model.refresh();
}

void BoardPage::showMessage(const QString& message) {
    m_banner->showMessage(message);
}

void BoardPage::keyPressEvent(QKeyEvent* event) {
    const int row = m_list->currentRow();
    auto* const entry = row < 0 || isReadOnly() ? nullptr : m_model.entry(row);
    if (entry && event->key() == Qt::Key_D && event->modifiers() == Qt::ControlModifier) {
        openSchedule(*entry);
        return;
    }
    if (event->key() == Qt::Key_A &&
        event->modifiers() == (Qt::ControlModifier | Qt::ShiftModifier)) {
        attachFiles();
        return;
    }
    if (entry && event->key() == Qt::Key_M &&
        event->modifiers() == (Qt::ControlModifier | Qt::ShiftModifier)) {
        chooseBoard(*entry);
        return;
    }
    if (entry && event->key() == Qt::Key_Delete && m_list->hasFocus()) {
        remove(*entry);
        return;
    }
    QWidget::keyPressEvent(event);
}

void BoardPage::toggle(int row) {
    auto& entry = *m_model.entry(row);
    if (!entry.isTodo()) {
        return;
    }
    if (entry.isCompleted()) {
        restore(entry);
    } else if (m_editing.entry() == &entry) {
        if (m_editing.leave()) {
            complete(entry);
        }
    } else {
        complete(entry);
    }
}

void BoardPage::complete(model::Entry& entry) {
    // Stored at once, so that nothing is lost; only its row stays a little longer.
    m_model.linger(entry);
    if (!perform([&] { m_workspace.entries.completeTodo(entry, m_workspace.now()); })) {
        m_model.release(entry);
        return;
    }
    QTimer::singleShot(kTickShown, this, [this, &entry] { endLingering(entry); });
}

void BoardPage::endLingering(const model::Entry& entry) {
    const int row = m_model.rowOf(entry);
    if (row < 0 || !m_model.isLingering(entry)) {
        return;
    }
    const bool wasCurrent = m_list->currentRow() == row;
    m_list->animateLeaving(entry, [this, &entry, wasCurrent] {
        if (wasCurrent && m_list->currentRow() == m_model.rowOf(entry)) {
            m_list->setCurrentRow(std::min(m_list->currentRow() + 1, m_model.rowCount() - 1));
        }
        m_model.release(entry);
    });
}

void BoardPage::restore(model::Entry& entry) {
    // A tick taken back while it is still seen puts the todo where it was.
    std::optional<std::int64_t> position;
    if (m_model.isLingering(entry)) {
        position = 0;
        for (int row = 0; row < m_model.rowOf(entry); ++row) {
            const auto* const above = m_model.entry(row);
            position = *position + (above && !above->isCompleted() ? 1 : 0);
        }
    }
    perform([&] { m_workspace.entries.restoreTodo(entry, m_workspace.now(), position); });
}

void BoardPage::move(model::Entry& entry, int offset) {
    if (entry.isCompleted()) {
        return;
    }
    perform([&] { m_workspace.entries.moveEntry(entry.id(), offset, *m_model.board()); });
    m_list->setCurrentRow(m_model.rowOf(entry));
}

void BoardPage::drop(const base::Uuid& id, int targetRow, model::EntryPlacement placement) {
    const auto* const target = m_model.entry(targetRow);
    if (!target || target->id() == id) {
        return;
    }
    perform([&] { m_workspace.entries.moveEntry(id, target->id(), placement, *m_model.board()); });
}

void BoardPage::changeType(model::Entry& entry) {
    const auto other = entry.isTodo() ? model::EntryType::text : model::EntryType::todo;
    perform([&] { m_workspace.entries.changeType(entry, other, m_workspace.now()); });
}

void BoardPage::remove(model::Entry& entry) {
    // What was typed is stored first, so that undoing brings it back too.
    if (m_editing.entry() == &entry && !m_editing.leaveForGood()) {
        return;
    }
    const int row = m_model.rowOf(entry);
    if (row < 0 || !entry.isLive()) {
        return;
    }
    const auto shown = shortened(m_model.text(row));
    if (!perform([&] { m_workspace.entries.deleteEntry(entry); })) {
        return;
    }
    m_list->setCurrentRow(std::min(row, m_model.rowCount() - 1));
    m_list->setFocus();
    if (!shown.isEmpty()) {
        m_banner->offer(tr("“%1” was deleted.").arg(shown), tr("Undo"), [this] { undo(); });
    }
}

void BoardPage::chooseBoard(model::Entry& entry) {
    auto* const picker =
        new BoardPicker(services::BoardService::activeBoards(m_workspace.boards.boards()),
                        tr("Move to board"), m_workspace, m_theme, window(), entry.board());
    connect(picker, &BoardPicker::chosen, this,
            [this, id = entry.id()](model::Board* board) { moveToBoard(id, *board); });
    picker->open();
}

void BoardPage::moveToBoard(const base::Uuid& id, model::Board& board) {
    auto* const entry = m_workspace.context.find<model::Entry>(id);
    if (!entry) {
        return;
    }
    const int row = m_model.rowOf(*entry);
    const auto shown = row < 0 ? QString() : shortened(m_model.text(row));
    if (!perform([&] { m_workspace.entries.moveEntry(*entry, board, m_workspace.now()); })) {
        return;
    }
    if (row >= 0 && m_model.rowOf(*entry) < 0) {
        m_list->setCurrentRow(std::min(row, m_model.rowCount() - 1));
    }
    m_list->setFocus();
    m_banner->offer(tr("“%1” was moved to %2.").arg(shown, toQString(board.name())), tr("Undo"),
                    [this] { undo(); });
}

template <typename Operation>
void BoardPage::takeBack(Operation&& operation) {
    if (!m_editing.leaveForGood()) {
        return;
    }
    std::vector<base::Uuid> restored;
    const auto changes = m_workspace.context.didChange().connect(
        [&](const store::ChangeSet& set) { restored = set.inserted; });
    perform(operation);
    for (const auto& id : restored) {
        const auto* const entry = m_workspace.context.find<model::Entry>(id);
        if (const int row = entry ? m_model.rowOf(*entry) : -1; row >= 0) {
            m_list->setCurrentRow(row);
            m_list->setFocus();
        }
    }
}

void BoardPage::undo() {
    takeBack([this] { m_workspace.undo.undo(); });
}

void BoardPage::redo() {
    takeBack([this] { m_workspace.undo.redo(); });
}

void BoardPage::openSchedule(model::Entry& entry) {
    const int row = m_model.rowOf(entry);
    if (!entry.isTodo() || entry.isCompleted() || row < 0) {
        return;
    }
    m_list->setCurrentRow(row);
    auto* const popover = new SchedulePopover(entry, m_workspace, m_theme, window());
    popover->openAt(m_list->scheduleAnchor(row));
    popover->setFocus();
}

void BoardPage::openMenu(int row, const QPoint& globalPosition) {
    auto& entry = *m_model.entry(row);
    const bool isOpen = m_model.kind(row) == EntryListModel::RowKind::entry;
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (isReadOnly()) {
        addAttachmentItems(*menu, &entry);
        if (menu->isEmpty()) {
            delete menu;
        } else {
            menu->popup(globalPosition);
        }
        return;
    }
    const MenuItems items(*menu, *this);
    if (isOpen) {
        items
            .add(tr("Edit"), Qt::Key_F2,
                 [this, &entry] { m_editing.edit(m_model.rowOf(entry), -1); })
            .setEnabled(m_model.isEditable(row));
        items.add(tr("Schedule…"), Qt::CTRL | Qt::Key_D, [this, &entry] { openSchedule(entry); })
            .setEnabled(entry.isTodo());
        items.add(tr("Complete"), Qt::CTRL | Qt::Key_Return, [this, &entry] { complete(entry); })
            .setEnabled(entry.isOpenTodo());
        menu->addSeparator();
        items.add(tr("Move up"), Qt::ALT | Qt::Key_Up, [this, &entry] { move(entry, -1); });
        items.add(tr("Move down"), Qt::ALT | Qt::Key_Down, [this, &entry] { move(entry, 1); });
        items.add(tr("New todo below"), {}, [this, &entry] { m_editing.startDraft(&entry); });
        items.add(tr("New text below"), Qt::CTRL | Qt::SHIFT | Qt::Key_T,
                  [this, &entry] { m_editing.startTextDraft(&entry); });
        menu->addSeparator();
        items
            .add(entry.isTodo() ? tr("Change to text") : tr("Change to todo"), {},
                 [this, &entry] { changeType(entry); })
            .setEnabled(m_model.isEditable(row));
    } else {
        items.add(tr("Restore"), Qt::Key_Space, [this, &entry] { restore(entry); });
    }
    addAttachmentItems(*menu, &entry);
    items.add(tr("Move to board…"), Qt::CTRL | Qt::SHIFT | Qt::Key_M,
              [this, &entry] { chooseBoard(entry); });
    items.add(tr("Delete"), Qt::Key_Delete, [this, &entry] { remove(entry); });
    menu->popup(globalPosition);
}

void BoardPage::updateHeader() {
    if (m_model.board()) {
        m_header->show(*m_model.board(), m_model.openTodoCount());
        const bool isEmpty = m_model.rowCount() == 1 && !m_model.hasDraft();
        m_emptyHint->setVisible(isEmpty && !isReadOnly());
        m_archivedNotice->setVisible(isReadOnly());
    }
}

} // namespace korvex::ui
