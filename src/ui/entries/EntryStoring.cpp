#include "ui/entries/EntryStoring.h"

#include "model/Board.h"
#include "model/ServiceErrors.h"
#include "richtext/text/TextMerge.h"
#include "store/StoreError.h"
#include "ui/entries/OpenPlace.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Refusal.h"

#include <QScopedValueRollback>

namespace korvex::ui {

namespace {

constexpr const char* kEditTodo = "Edit Todo";

/// What stands in the place of a record that is gone, as after a restore, may say something else:
/// whoever typed is asked, and nothing is written over it.
void requireLive(const store::Record& record) {
    if (!record.isLive()) {
        throw model::EntryServiceError(model::EntryServiceErrorCase::entryUnavailable);
    }
}

/// What is told of an entry may be read when another one is edited already.
QString nameOf(const QString& text) {
    return isolated(shortened(text));
}

} // namespace

bool EntryStoring::store() {
    if (!m_edited.isOpen()) {
        return true;
    }
    if (const auto refused = tryToStore()) {
        refuse(*refused);
        return false;
    }
    return true;
}

void EntryStoring::storeSoFar() {
    if (!m_edited.isOpen()) {
        return;
    }
    if (!m_editors.current().isBlank()) {
        if (const auto refused = tryToStore()) {
            refuse(*refused);
        }
    } else if (m_edited.isDraft()) {
        m_drafts.forget();
        endMessage();
    }
}

void EntryStoring::refuse(const QString& reason) {
    auto& editor = m_editors.current();
    if (editor.isBlank()) {
        editor.showError(reason); // which the next letter mends
        return;
    }
    const auto keeping = m_drafts.keep()
                             ? tr("What you type is kept beside the store and offered again until "
                                  "it can be stored.")
                             : tr("What you type cannot be kept either. Copy it to another place "
                                  "before you close the window.");
    editor.showError(reason + QLatin1Char('\n') + keeping, RowEditor::Until::stored);
}

void EntryStoring::endMessage() {
    if (m_editors.current().says(RowEditor::Until::stored)) {
        m_editors.current().endMessage();
    }
}

bool EntryStoring::hasUnstored() {
    auto& editor = m_editors.current();
    if (m_edited.isDraft()) {
        return !editor.isBlank();
    }
    // What was stored while it was typed is gone with a deleted entry, and is in no undo here.
    const auto* const entry = m_edited.entry();
    const auto isLost = entry && !entry->isLive() && editor.isTypedInto();
    return isLost || editor.isChanged();
}

std::optional<app::Draft> EntryStoring::giveUp() {
    auto& editor = m_editors.current();
    auto* const entry = m_edited.entry();
    auto words = editor.isBlank() ? std::nullopt : std::optional(m_drafts.draft());
    const auto refused = refusal([&] {
        const QScopedValueRollback busy(m_isBusy, true);
        if (m_edited.isStored() && m_edited.isNew()) {
            m_entries.deleteEntry(*entry);
        } else if (m_edited.isStored() && !editor.stored().isEquivalentTo(editor.opened())) {
            // From here on nobody writes: what it was typed into is all that is stored, or is not.
            const store::LockedStep step(m_context);
            const auto isAsItWas = !m_edited.isChangedInStore();
            editor.change(editor.opened());
            update();
            if (words && words->edited && isAsItWas) {
                words->edited->updatedAt = entry->updatedAt();
            }
        }
    });
    if (refused) {
        // The user is let go all the same; what was stored before stays.
        m_noticed.emit(*refused);
    }
    m_drafts.forget();
    editor.revert();
    return words;
}

void EntryStoring::putBack() {
    m_editors.current().change(m_editors.current().opened());
}

void EntryStoring::begin() {
    m_session = {};
    m_drafts.begin();
    m_editors.current().setOpened(m_editors.current().stored());
}

bool EntryStoring::isEmptiedNewTodo() const {
    return m_edited.isStored() && m_edited.isNew() && m_edited.isTodo() &&
           m_editors.current().isBlank();
}

std::optional<QString> EntryStoring::tryToStore() {
    const QScopedValueRollback busy(m_isBusy, true);
    if (!hasUnstored()) {
        m_drafts.forget();
        endMessage();
        return std::nullopt;
    }
    auto refused = refusal([&] {
        m_mayBeTakenLater = false;
        try {
            createOrUpdate();
        } catch (const store::StoreError&) {
            m_mayBeTakenLater = true;
            throw;
        }
    });
    if (!refused) {
        stored();
    }
    return refused;
}

void EntryStoring::stored() {
    m_drafts.forget();
    m_edited.remember();
    auto& editor = m_editors.current();
    if (const auto* const entry = m_edited.entry()) {
        // A text stays as it is typed, which may be more than is stored of it.
        editor.setStored(m_edited.isTodo() ? m_editors.textOf(*entry) : editor.text());
    }
    endMessage();
}

void EntryStoring::takeInOthers() {
    auto& editor = m_editors.current();
    const auto theirs = m_editors.textOf(*m_edited.entry());
    const auto merge = richtext::merged(editor.stored(), editor.text(), theirs);
    if (merge.hasBoth && m_edited.isTodo()) {
        // A todo has one line: the other one becomes a todo when this one is stored.
        return;
    }
    const auto opened = richtext::merged(editor.stored(), editor.opened(), theirs);
    editor.setOpened(opened.hasBoth ? theirs : opened.text);
    editor.change(merge.text);
    // As a step of the editor, one undo too many would take another's words away, and store that.
    editor.forgetSteps();
    editor.setStored(theirs);
    m_edited.remember();
    // What another has written is not taken back with what was typed.
    m_session = {};
    if (merge.hasBoth) {
        m_noticed.emit(tr("Another program changed the same part of “%1” meanwhile. Both versions "
                          "stand in it, yours first.")
                           .arg(nameOf(toQString(merge.text.text()))));
    }
}

void EntryStoring::settleDraft() {
    m_edited.becomeStored();
    m_model.settleDraft(*m_edited.entry());
}

model::Entry* EntryStoring::split() {
    // What was written so far is stored as one: a refusal loses nothing, nor does an undo.
    if (!m_editors.text().parts() || !store()) {
        return nullptr;
    }
    if (m_edited.isDraft()) {
        settleDraft();
    }
    // The text may have taken in what another program has written.
    const auto parts = m_editors.text().parts();
    if (!parts) {
        return nullptr;
    }
    model::Entry* second = nullptr;
    const auto refused = refusal([&] {
        const QScopedValueRollback busy(m_isBusy, true);
        second = &m_entries.splitText(*m_edited.entry(), parts->before, parts->after, m_clock.now(),
                                      "Split Text");
    });
    if (refused) {
        m_editors.current().showError(*refused);
    }
    return second;
}

model::Entry* EntryStoring::addLines(const QStringList& lines) {
    // What the paste makes of the text is no longer the same step as what was typed.
    m_session = {};
    std::vector<std::string> contents;
    for (const auto& line : lines) {
        contents.push_back(toUtf8(line));
    }
    model::Entry* last = nullptr;
    const auto refused = refusal([&] {
        const QScopedValueRollback busy(m_isBusy, true);
        const auto* const entry = m_edited.entry();
        last = createTodos(contents, entry ? entry : predecessorOfDraft(), nullptr).back();
    });
    if (refused) {
        m_editors.current().showError(*refused);
    }
    return last;
}

void EntryStoring::createOrUpdate() {
    if (m_edited.isDraft()) {
        create();
    } else if (isEmptiedNewTodo()) {
        m_entries.deleteEntry(*m_edited.entry());
    } else {
        update();
    }
}

void EntryStoring::create() {
    const store::LockedStep step(m_context);
    requireLive(*m_model.board());
    const auto* const after = predecessorOfDraft();
    m_edited.setCreated(
        m_edited.isTodo()
            ? *createTodos({toUtf8(m_editors.todo().typed())}, after, &m_session).front()
            : createText(after));
}

void EntryStoring::update() {
    // From here on nobody writes: what is taken in is all there is.
    const store::LockedStep step(m_context);
    auto& entry = *m_edited.entry();
    requireLive(entry);
    std::optional<services::UndoManager::Group> both;
    if (entry.type() == m_edited.type() && m_edited.isChangedInStore()) {
        takeInOthers();
        if (m_edited.isChangedInStore()) {
            // Taken back, the other's version stands where it stood, and not a second time.
            both.emplace(m_undo, kEditTodo);
            keepOthersTodo(entry);
        }
    }
    if (m_edited.isTodo()) {
        m_entries.updateTodo(entry, toUtf8(m_editors.todo().typed()), m_clock.now(), &m_session);
    } else {
        m_entries.updateText(entry, m_editors.text().text(), m_clock.now(), &m_session);
    }
}

/// What another has made of the todo under edit lives on as a todo of its own.
void EntryStoring::keepOthersTodo(const model::Entry& entry) {
    m_entries.createTodos({.contents = {entry.content()},
                           .board = *m_model.board(),
                           .after = entry.id(),
                           .now = m_clock.now(),
                           .undoName = kEditTodo});
    m_editors.current().setStored(m_editors.textOf(entry));
    m_edited.remember();
    m_session = {};
    m_noticed.emit(tr("Another program changed “%1” meanwhile. Its version stands below yours.")
                       .arg(nameOf(m_editors.todo().typed())));
}

const model::Entry* EntryStoring::predecessorOfDraft() const {
    return m_model.openEntryAbove(m_model.rowOf(EntryRowKind::draft));
}

std::vector<model::Entry*> EntryStoring::createTodos(const std::vector<std::string>& contents,
                                                     const model::Entry* after,
                                                     services::EditingSession* session) {
    const auto place = placeAfter(after, *m_model.board());
    return m_entries.createTodos({.contents = contents,
                                  .board = *m_model.board(),
                                  .after = place.after,
                                  .before = place.before,
                                  .now = m_clock.now(),
                                  .undoName = contents.size() == 1 ? "New Todo" : "New Todos",
                                  .session = session});
}

model::Entry& EntryStoring::createText(const model::Entry* after) {
    const auto text = m_editors.text().text();
    const auto place = placeAfter(after, *m_model.board());
    return m_entries.createText({.rich = text,
                                 .board = *m_model.board(),
                                 .after = place.after,
                                 .before = place.before,
                                 .now = m_clock.now(),
                                 .undoName = "New Text",
                                 .session = &m_session});
}

} // namespace korvex::ui
