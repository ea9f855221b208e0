#include "ui/entries/EntryEditing.h"

#include "model/Board.h"
#include "model/ServiceErrors.h"
#include "ui/kit/words/Text.h"

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
      m_notices(
          m_storing.noticed().connect([this](const QString& message) { Q_EMIT noticed(message); })),
      m_ownReplacements(
          workspace.context.container().didSave().connect([this](const store::ChangeSet& changes) {
              heardOf(changes, EditedEntry::Replaced::here);
          })),
      m_replacements(workspace.context.didChange().connect([this](const store::ChangeSet& changes) {
          heardOf(changes, EditedEntry::Replaced::elsewhere);
      })) {
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
                          const QString& why, int caret) {
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
    editor.setCaret(caret);
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
    if (isWaiting()) {
        m_typing.tryAgain();
    }
}

bool EntryEditing::isWaiting() {
    return isOpen() && !m_storing.isBusy() && m_editors.current().isRefused() &&
           m_storing.mayBeTakenLater();
}

/// One of this program is heard of first as what it is, and then as a change of the store.
void EntryEditing::heardOf(const store::ChangeSet& changes, EditedEntry::Replaced replaced) {
    const auto isConcerned = m_edited.isStored() && entry();
    if (isConcerned && changes.isReplacement && m_edited.replaced() == EditedEntry::Replaced::no) {
        m_edited.setReplaced(replaced);
    }
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
    m_edited.setReplaced(EditedEntry::Replaced::no); // it has come back under its identifier
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
    takeKeyboard(); // and into sight even where it stands as before
    Q_EMIT opened();
}

void EntryEditing::takeKeyboard() {
    m_editors.current().input().setFocus();
    m_editors.current().reveal();
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
        if (isWaiting()) {
            m_typing.refused();
        }
        m_editors.current().reveal();
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
        if (isWaiting()) {
            m_typing.refused();
        }
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

} // namespace korvex::ui
