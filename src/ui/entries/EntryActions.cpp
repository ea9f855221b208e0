#include "ui/entries/EntryActions.h"

#include "model/ServiceErrors.h"
#include "ui/boards/BoardPicker.h"
#include "ui/entries/OpenPlace.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Text.h"

#include <QPointer>

#include <algorithm>

namespace korvex::ui {

EntryActions::EntryActions(const Parts& parts, const Services& services, const Theme& theme)
    : m_parts(parts),
      m_services(services),
      m_theme(theme),
      m_todos(parts.page, services.todos, services.undo, theme),
      m_ticks({.list = *this,
               .view = parts.list,
               .leaving = parts.list.leaving(),
               .actions = m_todos,
               .runLoop = services.runLoop}) {
    connectEditing();
}

void EntryActions::connectEditing() {
    auto* const editing = &m_parts.editing;
    connect(editing, &EntryEditing::completionRequested, this,
            [this](model::Entry* entry) { complete(*entry); });
    connect(editing, &EntryEditing::scheduleRequested, this,
            [this](model::Entry* entry) { openSchedule(*entry); });
    connect(editing, &EntryEditing::moveRequested, this,
            [this](model::Entry* entry, int offset) { move(*entry, offset); });
    connect(editing, &EntryEditing::typeChangeRequested, this,
            [this](model::Entry* entry) { changeType(*entry); });
    connect(editing, &EntryEditing::boardChangeRequested, this,
            [this](model::Entry* entry) { chooseBoard(*entry); });
    connect(editing, &EntryEditing::deletionRequested, this,
            [this](model::Entry* entry) { remove(*entry); });
    connect(editing, &EntryEditing::discarded, this, &EntryActions::registerDiscarded);
}

void EntryActions::registerDiscarded(const app::Draft& draft) {
    const auto cost = draft.content.size() + (draft.richTextData ? draft.richTextData->size() : 0);
    m_services.undo.registerUndo("Discard", sizeof draft + cost,
                                 [self = QPointer(this), draft](base::Instant) {
                                     if (self) { // the words go with their window
                                         Q_EMIT self->discardedWanted(draft);
                                     }
                                 });
    m_todos.offerUndo(tr("What was typed was discarded."));
}

void EntryActions::toggle(int row) {
    auto& entry = *m_parts.model.entry(row);
    if (!entry.isTodo()) {
        return;
    }
    if (entry.isCompleted()) {
        restore(entry);
    } else if (m_parts.editing.entry() != &entry || m_parts.editing.leave()) {
        complete(entry);
    }
}

void EntryActions::restore(model::Entry& entry) {
    if (m_ticks.contains(entry)) {
        m_ticks.toggle(entry);
    } else {
        m_todos.restore(entry, std::nullopt);
    }
}

int EntryActions::tickedRow(const model::Entry& entry) const {
    const auto row = m_parts.model.rowOf(entry);
    return row >= 0 && m_parts.model.kind(row) == EntryListModel::RowKind::entry ? row : -1;
}

void EntryActions::move(model::Entry& entry, int offset) {
    if (entry.isCompleted()) {
        return;
    }
    m_parts.page.perform(
        [&] { m_services.todos.entries.moveEntry(entry.id(), offset, *m_parts.model.board()); });
    m_parts.list.setCurrentRow(m_parts.model.rowOf(entry));
}

void EntryActions::drop(const base::Uuid& id, const EntryReordering::Place& place) {
    const auto* const beside = m_parts.model.entry(place.row);
    const auto [after, before] = openPlace(m_parts.model, place);
    const auto& target = after ? after : before;
    const auto side = after ? model::EntryPlacement::after : model::EntryPlacement::before;
    if (!target || *target == id || (beside && beside->id() == id)) {
        return; // it stands there
    }
    m_parts.page.perform(
        [&] { m_services.todos.entries.moveEntry(id, *target, side, *m_parts.model.board()); });
}

void EntryActions::changeType(model::Entry& entry) {
    const auto other = entry.isTodo() ? model::EntryType::text : model::EntryType::todo;
    m_parts.page.perform(
        [&] { m_services.todos.entries.changeType(entry, other, m_services.todos.clock.now()); });
}

void EntryActions::remove(model::Entry& entry) {
    // What was typed is stored first, so that undoing brings it back too.
    if (m_parts.editing.entry() == &entry && !m_parts.editing.leaveForGood()) {
        return;
    }
    const auto row = m_parts.model.rowOf(entry);
    if (row < 0 || !entry.isLive()) {
        return;
    }
    m_todos.remove(entry,
                   {.text = m_parts.model.text(row), .goOn = [this, row] {
                        m_parts.list.setCurrentRow(std::min(row, m_parts.model.rowCount() - 1));
                        m_parts.list.setFocus();
                    }});
}

void EntryActions::openSchedule(model::Entry& entry) {
    const auto row = m_parts.model.rowOf(entry);
    if (!entry.isTodo() || entry.isCompleted() || row < 0) {
        return;
    }
    m_parts.list.setCurrentRow(row);
    m_todos.openSchedule(entry, [this, id = entry.id()]() -> std::optional<QRect> {
        const auto* const found = m_services.context.find<model::Entry>(id);
        const auto at = found && m_parts.page.isVisible() ? m_parts.model.rowOf(*found) : -1;
        return at < 0 ? std::nullopt : std::optional(m_parts.list.scheduleAnchor(at));
    });
}

void EntryActions::chooseBoard(model::Entry& entry) {
    auto boards = services::BoardService::activeBoards(m_services.boards.boards());
    std::erase(boards, entry.board());
    auto* const picker =
        new BoardPicker({.title = tr("Move to board"), .boards = std::move(boards)},
                        m_services.context, m_services.folding, m_theme, m_parts.page.window());
    connect(picker, &BoardPicker::chosen, this,
            [this, id = entry.id()](model::Board* board) { moveToBoard(id, *board); });
    picker->open();
}

void EntryActions::moveToBoard(const base::Uuid& id, model::Board& board) {
    const model::Entry* moved = nullptr;
    int row = -1;
    QString shown;
    bool isArchived = false;
    const auto isDone = m_parts.page.perform([&] {
        // From here on nobody writes: another program may have archived the board while it was
        // being chosen.
        const store::LockedStep step(m_services.context);
        isArchived = board.isLive() && board.isArchived();
        auto* const entry = m_services.context.find<model::Entry>(id);
        if (!entry || isArchived) {
            return;
        }
        row = m_parts.model.rowOf(*entry);
        shown = row < 0 ? QString() : isolated(shortened(m_parts.model.text(row)));
        m_services.todos.entries.moveEntry(*entry, board, m_services.todos.clock.now());
        moved = entry;
    });
    if (isDone && isArchived) {
        m_parts.page.refuse(tr("“%1” is archived. The entry stays where it is.")
                                .arg(isolated(toQString(board.name()))));
    }
    if (!isDone || !moved) {
        return;
    }
    if (row >= 0 && m_parts.model.rowOf(*moved) < 0) {
        m_parts.list.setCurrentRow(std::min(row, m_parts.model.rowCount() - 1));
    }
    m_parts.list.setFocus();
    m_todos.offerUndo(tr("“%1” was moved to %2.").arg(shown, isolated(toQString(board.name()))));
}

void EntryActions::attachFiles() {
    const auto row = m_parts.list.currentRow();
    if (m_parts.model.isReadOnly()) {
        return;
    }
    if (!m_parts.editing.isOpen()) {
        if (auto* const entry = row < 0 ? nullptr : m_parts.model.entry(row)) {
            m_parts.attachments.chooseFiles(*entry);
        }
    } else if (m_parts.editing.hasWords()) {
        m_parts.attachments.chooseFiles([this](const AttachmentActions::Files& files) {
            attachToEdited(
                [&](model::Entry& entry) { m_parts.attachments.attachFiles(files, entry); });
        });
    }
}

void EntryActions::attachOffered(const QMimeData& offered) {
    attachToEdited([&](model::Entry& entry) { m_parts.attachments.attachOffered(offered, entry); });
}

template <typename Attach>
void EntryActions::attachToEdited(Attach&& attach) {
    // A draft is stored for it: with its files it is one creation.
    const services::UndoManager::Group creation(m_services.undo);
    if (auto* const entry = m_parts.editing.storedEntry()) {
        attach(*entry);
    } else if (!m_parts.editing.isOpen()) {
        m_parts.page.refuse(translated(model::EntryServiceErrorCase::entryUnavailable));
    }
}

} // namespace korvex::ui
