#include "ui/entries/EntryEditing.h"

#include "model/Board.h"
#include "model/ServiceErrors.h"
#include "ui/kit/controls/MenuItems.h"
#include "ui/kit/words/Text.h"

#include <QMenu>

namespace korvex::ui {

using model::EntryType;

EntryEditing::EntryEditing(EntryListModel& model, EntryListView& view, const Workspace& workspace,
                           const Theme& theme)
    : m_model(model),
      m_view(view),
      m_editors(model, workspace.code, theme, *view.viewport()),
      m_drafts(model, m_edited, m_editors, workspace.drafts, workspace.serializer, workspace.clock),
      m_storing(model, m_edited, m_editors, m_drafts, workspace.entries, workspace.undo,
                workspace.context, workspace.clock),
      m_undo(workspace.undo),
      m_typing(workspace.runLoop, [this] { storeSoFar(); }),
      m_notices(m_storing.noticed().connect(
          [this](const QString& message) { Q_EMIT noticed(message); })) {
    connectEditors();
}

void EntryEditing::connectEditors() {
    connect(&m_editors, &EntryEditors::typed, this, [this] {
        if (isOpen() && !m_storing.isBusy()) {
            m_typing.typed();
        }
    });
    connect(&m_editors, &EntryEditors::left, this, &EntryEditing::leave);
    connect(&m_editors, &EntryEditors::heightChanged, this, [this] {
        if (isOpen() && m_view.editedRow() >= 0) {
            m_view.measureAgain(m_view.editedRow());
        }
    });
    connect(&m_editors, &EntryEditors::revealRequested, this, [this](const QRect& part) {
        if (isOpen() && m_view.editedRow() >= 0) {
            m_view.revealInEditor(part);
        }
    });
    connect(&m_editors, &EntryEditors::discarded, this, &EntryEditing::discard);
    connect(&m_editors, &EntryEditors::escaped, this, &EntryEditing::leaveToList);
    connect(&m_editors, &EntryEditors::menuRequested, this, &EntryEditing::openMenu);
    connect(&m_editors, &EntryEditors::walked, this, &EntryEditing::walk);
    connect(&m_editors, &EntryEditors::nextRequested, this, &EntryEditing::makeNext);
    connect(&m_editors, &EntryEditors::backspacedAway, this, &EntryEditing::removeAndGoUp);
    // What was typed until then is a step of its own, which stays when the paste is taken back;
    // and what another has written meanwhile is in the text that the lines are pasted into.
    connect(&m_editors, &EntryEditors::linesComing, this, &EntryEditing::storeSoFar);
    connect(&m_editors, &EntryEditors::linesPasted, this, &EntryEditing::pasteLines);
    connect(&m_editors, &EntryEditors::storeRequested, this, &EntryEditing::storeAndStay);
    connect(&m_editors, &EntryEditors::splitRequested, this, &EntryEditing::split);
    connect(&m_editors, &EntryEditors::completionRequested, this, [this] {
        forward([this](model::Entry* entry, int) { Q_EMIT completionRequested(entry); });
    });
    connect(&m_editors, &EntryEditors::scheduleRequested, this, [this] {
        forward([this](model::Entry* entry, int) { Q_EMIT scheduleRequested(entry); });
    });
    connect(&m_editors, &EntryEditors::moveRequested, this, &EntryEditing::moveAndGoOn);
    connect(&m_editors, &EntryEditors::attachmentsPasted, this, &EntryEditing::attachmentsPasted);
}

void EntryEditing::edit(int row, int caret) {
    auto* const wanted = row < 0 ? nullptr : m_model.entry(row);
    if (!leave() || !wanted) {
        return;
    }
    row = m_model.rowOf(*wanted);
    if (row < 0) {
        return;
    }
    if (!m_model.isEditable(row)) {
        m_view.setCurrentRow(row);
        m_view.setFocus();
        return;
    }
    openStored(*wanted, row, caret);
}

void EntryEditing::startDraft(const model::Entry* after) {
    if (leave()) {
        openDraft(EntryType::todo, m_model.openDraft(after));
    }
}

void EntryEditing::startDraftAtEnd() {
    if (leave()) {
        openDraft(EntryType::todo, m_model.openDraftAtEnd());
    }
}

void EntryEditing::startDraftWith(const QString& typed) {
    startDraftAtEnd();
    if (m_edited.isDraft()) {
        m_editors.todo().field().insertPlainText(typed);
    }
}

void EntryEditing::startTextDraft(const model::Entry* after) {
    if (leave()) {
        openDraft(EntryType::text, after ? m_model.openDraft(after) : m_model.openDraftAtEnd());
    }
}

bool EntryEditing::leave() {
    if (!isOpen() || m_storing.isBusy()) {
        return true;
    }
    if (!store()) {
        return false;
    }
    close();
    return true;
}

bool EntryEditing::leaveForGood() {
    if (m_edited.isStored() && m_edited.isTodo() && !m_edited.isNew() &&
        m_editors.current().isBlank()) {
        m_storing.putBack();
    }
    return leave();
}

bool EntryEditing::resume(const app::Draft& draft, model::Entry* edited, const model::Entry* after,
                          const QString& why) {
    if (!leave()) {
        return false;
    }
    if (edited) {
        openStored(*edited, m_model.rowOf(*edited), -1);
    } else {
        openDraft(draft.type, m_model.openDraft(after));
    }
    auto& editor = m_editors.current();
    editor.change(m_drafts.textOf(draft));
    editor.setCaret(-1);
    m_drafts.resume(draft);
    m_drafts.keep(); // one that was just given up is kept no more
    editor.showNotice(why);
    // It is stored when the user goes on with it or leaves it, and until then can be given up.
    m_typing.stop();
    return true;
}

std::optional<app::Draft> EntryEditing::takeAway() {
    if (leaveForGood()) {
        return std::nullopt;
    }
    auto draft = m_editors.current().isBlank() ? std::nullopt : std::optional(m_drafts.draft());
    close();
    return draft;
}

bool EntryEditing::hasWords() {
    const auto isEmpty = m_edited.isDraft() && m_editors.current().isBlank();
    if (isEmpty) {
        m_editors.current().showError(translated(model::EntryServiceErrorCase::emptyContent));
    }
    return !isEmpty;
}

model::Entry* EntryEditing::storedEntry() {
    if (!hasWords()) {
        return nullptr;
    }
    if (m_edited.isDraft()) {
        storeAndStay();
    }
    return entry();
}

void EntryEditing::recordsChanged() {
    if (isOpen()) {
        m_drafts.rememberPlace();
    }
    followRecords(m_view.editedRow());
}

void EntryEditing::showDue() {
    if (m_edited.isStored() && entry()) {
        m_editors.showDue(entry());
    }
}

void EntryEditing::followRecords(int row) {
    if (!m_edited.isStored() || !entry() || m_storing.isBusy()) {
        return;
    }
    if (const auto* const board = m_model.board(); !board || !board->isLive()) {
        return; // the page is about to give way to another board, and takes away what was typed
    }
    if (!m_edited.isStillOn(m_model.board())) {
        if (m_storing.hasUnstored()) {
            becomeDraft(row);
        } else {
            close();
        }
        return;
    }
    auto& editor = m_editors.current();
    showDue();
    if (!m_edited.isChangedInStore()) {
        return;
    }
    if (!editor.isChanged() && !editor.isTypedInto()) {
        const auto caret = editor.caret();
        m_edited.remember();
        m_editors.load(*entry());
        editor.setCaret(caret);
        m_storing.begin();
        m_typing.stop();
    } else {
        m_storing.takeInOthers();
    }
}

void EntryEditing::openStored(model::Entry& entry, int row, int caret) {
    m_edited.open(entry);
    m_edited.remember();
    m_editors.choose(m_edited.type());
    m_editors.load(entry);
    show(row, caret);
}

void EntryEditing::openDraft(EntryType type, int row) {
    m_edited.openDraft(type);
    m_editors.choose(type);
    m_editors.clear();
    show(row, 0);
}

void EntryEditing::show(int row, int caret) {
    auto& editor = m_editors.current();
    m_storing.begin();
    m_typing.stop();
    m_view.placeEditor(editor, row);
    editor.setCaret(caret);
    editor.input().setFocus();
    editor.reveal(); // even where it stands as before
}

void EntryEditing::close() {
    const auto wasDraft = m_edited.isDraft();
    const auto* const last = entry();
    m_typing.stop();
    m_edited.close();
    m_editors.current().endMessage();
    if (wasDraft && last) {
        m_model.settleDraft(*last);
    }
    m_view.removeEditor();
    m_model.closeDraft();
    if (const auto row = last ? m_model.rowOf(*last) : -1; row >= 0) {
        m_view.setCurrentRow(row);
    }
    Q_EMIT closed();
}

void EntryEditing::closeToList() {
    close();
    m_view.setFocus();
}

void EntryEditing::discard() {
    if (!isOpen()) {
        return;
    }
    const auto words = m_storing.giveUp();
    closeToList();
    if (words) {
        Q_EMIT discarded(*words);
    }
}

bool EntryEditing::store() {
    const auto row = m_view.editedRow();
    const auto isStored = m_storing.store();
    if (!isStored) {
        followRecords(row); // nobody was told while it was busy
    }
    return isStored;
}

void EntryEditing::storeAndStay() {
    if (!store()) {
        return;
    }
    if (!entry()) {
        closeToList();
    } else {
        settle();
    }
}

void EntryEditing::storeSoFar() {
    if (!m_storing.isBusy()) {
        const auto row = m_view.editedRow();
        m_storing.storeSoFar();
        followRecords(row);
        settle();
    }
}

void EntryEditing::settle() {
    if (m_edited.isDraft() && entry()) {
        // The user is in the middle of a word: the editor stays where it is on the screen.
        m_storing.settleDraft();
        if (const auto row = m_model.rowOf(*entry()); m_view.editedRow() != row) {
            m_view.placeEditor(m_editors.current(), row);
        }
    }
}

void EntryEditing::split() {
    if (const auto* const second = m_storing.split()) {
        close();
        edit(m_model.rowOf(*second), 0);
    } else if (entry() && m_view.editedRow() != m_model.rowOf(*entry())) {
        m_view.placeEditor(m_editors.current(), m_model.rowOf(*entry()));
    }
}

/// The entry was deleted, completed, moved or made another type elsewhere while its text was
/// changed here: the text lives on.
void EntryEditing::becomeDraft(int row) {
    const auto& gone = *entry();
    const auto canFollow = gone.isLive() && !gone.isCompleted() && gone.board() == m_model.board();
    const auto* const after = canFollow ? &gone : m_model.openEntryAbove(row);
    const auto what = m_edited.whatBecameOfIt();
    m_edited.becomeDraft();
    // Nothing of a new entry is stored: giving it up leaves nothing.
    auto& editor = m_editors.current();
    editor.setStored({});
    editor.setOpened({});
    m_editors.showDue(nullptr);
    m_view.placeEditor(editor, m_model.openDraft(after));
    // The words are in no store any more, and come into it when the user goes on: else the message
    // would be gone before it is read.
    m_typing.stop();
    m_drafts.keep();
    editor.showNotice(what);
}

/// Commands on the entry itself need it stored first; they go on with the editor closed.
template <typename Request>
void EntryEditing::forward(Request&& request) {
    if (store()) {
        auto* const stored = entry();
        const auto caret = m_editors.current().caret();
        closeToList();
        if (stored) {
            request(stored, caret);
        }
    }
}

void EntryEditing::leaveToList() {
    if (leaveForGood()) {
        m_view.setFocus();
    }
}

void EntryEditing::moveAndGoOn(int offset) {
    forward([&](model::Entry* entry, int caret) {
        Q_EMIT moveRequested(entry, offset);
        edit(m_model.rowOf(*entry), caret);
    });
}

void EntryEditing::changeType() {
    forward([this](model::Entry* entry, int caret) {
        Q_EMIT typeChangeRequested(entry);
        edit(m_model.rowOf(*entry), caret);
    });
}

void EntryEditing::makeNext() {
    const auto isEmptyDraft = m_edited.isNew() && m_editors.current().isBlank();
    if ((!isEmptyDraft && deleteEmptied()) || !store()) {
        return;
    }
    if (isEmptyDraft) {
        // Return on a line left empty ends the writing.
        closeToList();
        return;
    }
    const auto* const after = entry();
    m_model.closeDraft();
    Q_EMIT closed();
    openDraft(EntryType::todo, m_model.openDraft(after));
}

bool EntryEditing::deleteEmptied() {
    auto* const emptied = entry();
    if (!m_edited.isTodo() || !m_edited.isStored() || !m_editors.current().isBlank()) {
        return false;
    }
    // Undoing brings back what it said before it was emptied.
    m_storing.putBack();
    if (store()) {
        Q_EMIT deletionRequested(emptied);
    }
    return true;
}

void EntryEditing::removeAndGoUp() {
    const auto place = m_view.editedRow();
    const auto* const above = place > 0 ? m_model.entry(place - 1) : nullptr;
    const auto* const emptied = entry();
    if (m_edited.isNew() ? !leave() : deleteEmptied() && emptied->isLive()) {
        return; // that was refused
    }
    const auto row = above ? m_model.rowOf(*above) : -1;
    if (row >= 0) {
        edit(row, -1);
    } else {
        m_view.setFocus();
    }
}

void EntryEditing::walk(int direction) {
    const auto row = m_view.editedRow() + direction;
    if (row < 0 || row >= m_model.rowCount()) {
        return;
    }
    const auto* const next = m_model.entry(row);
    const auto kind = m_model.kind(row);
    if (next && kind == EntryRowKind::entry) {
        // Down into a text begins at its top.
        edit(row, direction > 0 && !next->isTodo() ? 0 : -1);
    } else if (leave()) {
        m_view.setCurrentRow(next ? m_model.rowOf(*next) : m_model.rowOf(kind));
        m_view.setFocus();
    }
}

void EntryEditing::pasteLines(const QString& text, const QStringList& others) {
    if (!isOpen()) {
        return; // the entry has just been found to be gone
    }
    // The end of the text has gone with the last line: neither without the other.
    const services::UndoManager::Group paste(m_undo, "Paste");
    const auto isDraft = m_edited.isDraft();
    if (const auto* const last =
            m_storing.addLines(isDraft ? QStringList(text) + others : others)) {
        auto& editor = m_editors.current();
        if (isDraft) {
            editor.revert(); // all of it is stored elsewhere
        } else {
            editor.change(richtext::AttributedString(text.toStdU16String()));
        }
        edit(m_model.rowOf(*last), -1);
    }
}

void EntryEditing::openMenu(const QPoint& globalPosition) {
    auto& editor = m_editors.current();
    auto* const menu = editor.makeMenu();
    menu->setParent(&m_view, menu->windowFlags());
    menu->setAttribute(Qt::WA_DeleteOnClose);
    // Another program may end the editing that the menu is of.
    connect(this, &EntryEditing::closed, menu, &QMenu::close);
    const MenuItems items(*menu, *this);
    menu->addSeparator();
    const auto isText = !m_edited.isTodo();
    if (isText) {
        items.add(tr("Split here"), Qt::CTRL | Qt::SHIFT | Qt::Key_Return, [this] { split(); })
            .setEnabled(m_editors.text().parts().has_value());
    }
    items.add(isText ? tr("Change to todo") : tr("Change to text"), {}, [this] { changeType(); })
        .setEnabled(!editor.isBlank());
    const auto moveToBoard = [this] {
        forward([this](model::Entry* entry, int) { Q_EMIT boardChangeRequested(entry); });
    };
    items.add(tr("Move to board…"), Qt::CTRL | Qt::SHIFT | Qt::Key_M, moveToBoard)
        .setEnabled(!editor.isBlank());
    Q_EMIT menuOpening(menu, entry());
    items.add(isText ? tr("Delete text") : tr("Delete todo"), {}, [this] {
        if (auto* const stored = m_edited.isStored() ? entry() : nullptr) {
            Q_EMIT deletionRequested(stored);
        } else {
            discard();
        }
    });
    menu->popup(globalPosition);
}

} // namespace korvex::ui
