#include "ui/entries/BoardPage.h"

#include "model/ServiceErrors.h"
#include "ui/boards/BoardHeader.h"
#include "ui/kit/overlays/Popover.h"
#include "ui/kit/pages/NoticeLine.h"
#include "ui/kit/words/Text.h"
#include "ui/text/OfferedFiles.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QTimer>

#include <algorithm>

namespace korvex::ui {

BoardPage::BoardPage(const Workspace& workspace, const Theme& theme, QWidget* parent)
    : Page(theme, parent),
      m_workspace(workspace),
      m_model(workspace.context, workspace.serializer, workspace.scheduleClock, workspace.dates),
      m_header(new BoardHeader(theme)),
      m_renaming(workspace.boards, workspace.clock, *m_header),
      m_archivedNotice(new NoticeLine({.icon = QStringLiteral("archive"),
                                       .text = tr("This board is archived."),
                                       .action = tr("Unarchive")},
                                      theme)),
      m_list(new EntryListView(m_model, workspace.code, theme)),
      m_editing(m_model, *m_list, workspace, theme),
      m_attachments({.context = workspace.context,
                     .entries = workspace.entries,
                     .serializer = workspace.serializer,
                     .copies = workspace.copies,
                     .clock = workspace.clock,
                     .threads = workspace.threads,
                     .runLoop = workspace.runLoop},
                    *this),
      m_attachmentInput(m_model, *m_list, m_attachments, workspace.context, theme),
      m_actions(parts(),
                {.context = workspace.context,
                 .boards = workspace.boards,
                 .undo = workspace.undo,
                 .folding = workspace.folding,
                 .runLoop = workspace.runLoop,
                 .todos = todoServices(workspace)},
                theme),
      m_menu(parts(), m_actions),
      m_pasting(*this, m_model, *m_list, workspace.entries, workspace.clock) {
    const bool canChange = workspace.boards.allowsChanges();
    m_header->setChangeable(canChange);
    m_archivedNotice->setActionEnabled(canChange);
    // Hears of them after who places the banner over the list.
    banner().installEventFilter(this);
    m_list->installEventFilter(this);
    layOut({m_header, m_archivedNotice}, *m_list);
    connectParts();
    connectList();
    connect(&theme, &Theme::changed, this, &BoardPage::updateHeader);
    m_ticks = workspace.scheduleClock.didTick().connect([this](base::Instant) {
        m_list->forgetLabels();
        m_editing.showDue();
    });
}

BoardPage::~BoardPage() = default;

EntryActions::Parts BoardPage::parts() {
    return {.page = *this,
            .model = m_model,
            .list = *m_list,
            .editing = m_editing,
            .attachments = m_attachments};
}

void BoardPage::connectParts() {
    connect(m_header, &BoardHeader::iconRequested, this, &BoardPage::iconRequested);
    connect(m_header, &BoardHeader::menuRequested, this, &BoardPage::menuRequested);
    connect(m_header, &BoardHeader::renamingLeft, this, &BoardPage::takeKeyboard);
    connect(m_header, &BoardHeader::renamed, this, [this](const QString& name) {
        endAnswer();
        if (const auto refused = m_renaming.store(*board(), name)) {
            m_renaming.isNameComingBack() ? m_header->refuse(*refused) : refuse(*refused);
        }
    });
    connect(m_archivedNotice, &NoticeLine::pressed, this, &BoardPage::unarchiveRequested);
    connect(&m_model, &EntryListModel::countsChanged, this, &BoardPage::updateHeader);
    connect(&m_model, &QAbstractItemModel::rowsInserted, this, &BoardPage::updateHeader);
    connect(&m_model, &QAbstractItemModel::rowsRemoved, this, &BoardPage::updateHeader);
    connect(&m_attachments, &AttachmentActions::refused, this, &BoardPage::refuse);
    connect(&m_attachments, &AttachmentActions::done, this, &BoardPage::endAnswer);
    connect(&m_editing, &EntryEditing::closed, this, &BoardPage::editingEnded);
    connect(&m_actions, &EntryActions::discardedWanted, this, [this](const app::Draft& draft) {
        Q_EMIT resumeRequested(
            draft, {.onTheirBoard = tr("This was discarded. Go on with it, or discard it."),
                    .elsewhere = tr("This was discarded. Its board is no longer there. Go on with "
                                    "it here, or discard it.")});
    });
    connect(&m_editing, &EntryEditing::noticed, this, &BoardPage::tellOfEditing);
    connect(&m_editing, &EntryEditing::opened, this, [this] {
        const auto* const entry = m_editing.entry();
        if (!m_isToldJustNow && !(entry && entry->id() == m_toldOf)) {
            banner().end(m_told);
        }
    });
    const auto attach = [this](const QMimeData* offered) { m_actions.attachOffered(*offered); };
    connect(&m_editing, &EntryEditing::attachmentsPasted, this, attach);
    connect(&m_attachmentInput, &AttachmentInput::droppedOnDraft, this, attach);
}

/// It ends when another entry is edited, but not with the step to that one: who has just left an
/// entry is still to read it.
void BoardPage::tellOfEditing(const QString& message) {
    m_told = banner().say({.text = message, .tone = ErrorBanner::Tone::notice}, m_told);
    const auto* const entry = m_editing.entry();
    m_toldOf = entry ? std::optional(entry->id()) : std::nullopt;
    m_isToldJustNow = true;
    QTimer::singleShot(0, this, [this] { m_isToldJustNow = false; });
}

/// All that the list asks for is carried out by the parts of the page, each its own share.
void BoardPage::connectList() {
    connect(m_list, &EntryListView::editRequested, &m_editing, &EntryEditing::edit);
    connect(m_list, &EntryListView::newTodoRequested, &m_editing, &EntryEditing::startDraftAtEnd);
    connect(m_list, &EntryListView::typed, &m_editing, &EntryEditing::startDraftWith);
    connect(m_list, &EntryListView::pasteRequested, this, &BoardPage::paste);
    connect(
        m_list, &EntryListView::textDropped, this,
        [this](const QMimeData* offered, const auto& place) { m_pasting.drop(*offered, place); });
    connect(m_list, &EntryListView::toggleRequested, &m_actions, &EntryActions::toggle);
    connect(m_list, &EntryListView::scheduleRequested, &m_actions,
            [this](int row) { m_actions.openSchedule(*m_model.entry(row)); });
    connect(m_list, &EntryListView::moveRequested, &m_actions,
            [this](int row, int offset) { m_actions.move(*m_model.entry(row), offset); });
    connect(m_list, &EntryListView::dropped, &m_actions, &EntryActions::drop);
    connect(m_list, &EntryListView::menuRequested, &m_menu, &EntryMenu::open);
    connect(m_list, &EntryListView::completedToggled, this, &BoardPage::toggleCompleted);
}

void BoardPage::paste() {
    const auto* const offered = QApplication::clipboard()->mimeData();
    // Files belong to an entry: without a current one there is none to attach them to.
    if (offered && !isForAttaching(*offered)) {
        m_pasting.paste(*offered);
    }
}

QString BoardPage::title() const {
    return board() ? toQString(board()->name()) : QString();
}

void BoardPage::takeKeyboard() {
    if (m_editing.isOpen()) {
        m_editing.takeKeyboard();
    } else {
        m_list->setFocus();
    }
}

bool BoardPage::leaveEditing() {
    m_header->leaveRenaming();
    if (m_renaming.isNameComingBack()) {
        return false; // it says why
    }
    const auto isLeft = m_editing.leaveForGood();
    if (!isLeft) {
        m_editing.takeKeyboard(); // it says why
    }
    return isLeft;
}

BoardListing& BoardPage::header() {
    return *m_header;
}

bool BoardPage::showBoard(model::Board& board) {
    if (m_model.board() == &board) {
        return true;
    }
    const auto told = m_told;
    if (!leave()) {
        return false;
    }
    // Reads the entries; what follows cannot fail any more. What is on offer goes on being so.
    if (const auto refused = refusal([&] { static_cast<void>(board.entries()); })) {
        refuse(*refused);
        return false;
    }
    m_model.setBoard(&board);
    m_list->scrollToTop();
    banner().end(told); // of an entry of the other board
    return true;
}

void BoardPage::showEntry(model::Entry& entry) {
    if (entry.board() != m_model.board() || !leave()) {
        return;
    }
    if (entry.isCompletedTodo() && m_model.rowOf(entry) < 0) {
        m_model.setCompletedExpanded(true);
    }
    if (const auto row = m_model.rowOf(entry); row >= 0) {
        m_list->showRow(row);
        m_list->setFocus();
    }
}

BoardPage::GivenWay BoardPage::giveWayTo(model::Board& board, ChangeCause cause) {
    const auto isSame = this->board() && this->board()->id() == board.id();
    const auto form =
        !isSame ? tr("This was typed on “%1”, which is no longer there. Go on with it here, or "
                     "discard it.")
        : cause == ChangeCause::replacementElsewhere
            ? tr("Another program has replaced “%1”. Go on with what was typed, or discard it.")
            : tr("“%1” was replaced meanwhile. Go on with what was typed, or discard it.");
    const auto why = form.arg(title());
    Popover::endAll(*window());
    const auto caret = m_editing.caret();
    const auto words = m_editing.takeAway();
    const auto isShown = showBoard(board);
    if (!words) {
        return isShown ? GivenWay::alone : GivenWay::no;
    }
    // Where the other board cannot be read, they stay on this one, or wait.
    if (!resume(*words, why, caret)) {
        Q_EMIT resumeRequested(*words, {.onTheirBoard = why, .elsewhere = why});
    }
    return isShown ? GivenWay::withWords : GivenWay::no;
}

bool BoardPage::resume(const app::Draft& draft, const QString& why, int caret) {
    if (isReadOnly()) {
        return false; // it could be neither stored nor left
    }
    const auto openEntry = [this](const std::optional<base::Uuid>& id) {
        auto* const entry = id ? m_workspace.context.find<model::Entry>(*id) : nullptr;
        const auto row = entry ? m_model.rowOf(*entry) : -1;
        return row >= 0 && m_model.kind(row) == EntryRowKind::entry ? entry : nullptr;
    };
    if (!draft.edited) {
        return m_editing.resume(draft, nullptr, openEntry(draft.after), why, caret);
    }
    auto* const edited = openEntry(draft.edited->entry);
    const auto isAsItWas = edited && edited->updatedAt() == draft.edited->updatedAt &&
                           edited->type() == draft.type &&
                           m_model.isEditable(m_model.rowOf(*edited));
    return m_editing.resume(draft, isAsItWas ? edited : nullptr,
                            edited ? edited : openEntry(draft.after), why, caret);
}

bool BoardPage::showRecord(const base::Uuid& id) {
    const auto* const entry = m_workspace.context.find<model::Entry>(id);
    return entry && m_list->goTo(m_model.rowOf(*entry));
}

bool BoardPage::showsArchivedBoard() const {
    return board() && board()->isLive() && board()->isArchived();
}

bool BoardPage::canAdd() {
    if (isReadOnly()) {
        refuse(showsArchivedBoard() ? tr("This board is archived.")
                                    : translated(model::EntryServiceErrorCase::readOnlyStore));
        return false;
    }
    if (!m_editing.leave()) {
        m_editing.takeKeyboard();
        tell(tr("What you typed is not stored yet. Something new can be started when it is stored "
                "or discarded."));
        return false;
    }
    return true;
}

/// What is opened is to be seen, as much of it as there is room for.
void BoardPage::toggleCompleted() {
    m_model.setCompletedExpanded(!m_model.isCompletedExpanded());
    if (m_model.isCompletedExpanded()) {
        m_list->scrollToRows(m_model.rowOf(EntryListModel::RowKind::completedHeading),
                             m_model.rowCount() - 1);
    }
}

void BoardPage::startTodo() {
    if (canAdd()) {
        m_editing.startDraftAtEnd();
    }
}

void BoardPage::startText() {
    if (!canAdd()) {
        return;
    }
    const auto row = m_list->currentRow();
    const auto isOpen = row >= 0 && m_model.kind(row) == EntryListModel::RowKind::entry;
    m_editing.startTextDraft(isOpen ? m_model.entry(row) : nullptr);
}

void BoardPage::focusList() {
    m_list->setFocus();
    if (!m_list->currentIndex().isValid() && m_model.rowCount() > 0) {
        m_list->setCurrentRow(0);
    }
}

void BoardPage::refresh() {
    m_editing.recordsChanged();
    m_model.refresh();
}

bool BoardPage::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (type == QEvent::Show || type == QEvent::Hide || type == QEvent::Move ||
        type == QEvent::Resize) {
        measureBanner();
    }
    return Page::eventFilter(watched, event);
}

void BoardPage::measureBanner() {
    const auto end = m_list->geometry().bottom() + 1;
    m_list->coverFoot(banner().isHidden() ? 0 : std::max(0, end - banner().y()));
}

void BoardPage::keyPressEvent(QKeyEvent* event) {
    const auto row = m_list->currentRow();
    auto* const entry = row < 0 || isReadOnly() ? nullptr : m_model.entry(row);
    const auto is = [event](Qt::Key key, Qt::KeyboardModifiers modifiers) {
        return event->key() == key && event->modifiers() == modifiers;
    };
    if (is(Qt::Key_A, Qt::ControlModifier | Qt::ShiftModifier)) {
        m_actions.attachFiles();
    } else if (entry && is(Qt::Key_D, Qt::ControlModifier)) {
        m_actions.openSchedule(*entry);
    } else if (entry && is(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier)) {
        m_actions.chooseBoard(*entry);
    } else if (entry && event->key() == Qt::Key_Delete && m_list->hasFocus()) {
        m_actions.remove(*entry);
    } else {
        Page::keyPressEvent(event);
    }
}

void BoardPage::updateHeader() {
    if (!m_model.board()) {
        return;
    }
    m_header->show(*m_model.board(), m_model.openTodoCount());
    const auto isEmpty = m_model.rowCount() == 1 && !m_model.hasDraft();
    if (isEmpty && !isReadOnly()) {
        setHint(tr("Nothing here yet."), tr("Type a todo, or paste several lines."));
    } else {
        setHint({});
    }
    m_archivedNotice->setHolds(showsArchivedBoard());
}

} // namespace korvex::ui
