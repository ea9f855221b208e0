#include "ui/entries/EntryStoring.h"

#include "services/EntryOrder.h"
#include "ui/kit/Refusal.h"

#include <QScopedValueRollback>

namespace korvex::ui {

namespace {

/// Directly after an entry, at the very front for null.
template <typename New>
void placeAfter(const model::Entry* after, New& entry) {
    if (after) {
        entry.after = after->id();
    } else if (const auto active = services::activeEntries(entry.board); !active.empty()) {
        entry.before = active.front()->id();
    }
}

} // namespace

bool EntryStoring::store() {
    const QScopedValueRollback busy(m_isBusy, true);
    if (!m_edited.isOpen()) {
        return true;
    }
    auto& editor = m_editors.current();
    const auto isDraft = m_edited.isDraft();
    if (isDraft ? editor.isBlank() : !editor.isChanged()) {
        return true;
    }
    const auto refused = refusal([&] {
        if (isDraft) {
            create();
        } else {
            update();
        }
    });
    if (refused) {
        editor.showError(*refused);
        return false;
    }
    m_edited.remember();
    if (const auto* const entry = m_edited.entry()) {
        m_editors.setStored(*entry);
    }
    return true;
}

void EntryStoring::settleDraft() {
    m_edited.becomeStored();
    m_model.settleDraft(*m_edited.entry());
}

model::Entry* EntryStoring::split() {
    const auto parts = m_editors.text().parts();
    // What was written so far is stored as one: a refusal loses nothing, nor does an undo.
    if (!parts || !store()) {
        return nullptr;
    }
    if (m_edited.isDraft()) {
        settleDraft();
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

model::Entry* EntryStoring::addLines(const QString& text, const QStringList& others) {
    std::vector<std::string> contents;
    if (m_edited.isDraft()) {
        contents.push_back(toUtf8(text));
    }
    for (const auto& line : others) {
        contents.push_back(toUtf8(line));
    }
    model::Entry* last = nullptr;
    const auto refused = refusal([&] {
        const QScopedValueRollback busy(m_isBusy, true);
        const auto* const entry = m_edited.entry();
        last = createTodos(contents, entry ? entry : predecessorOfDraft()).back();
    });
    auto& editor = m_editors.todo();
    if (refused) {
        editor.showError(*refused);
    } else if (m_edited.isDraft()) {
        editor.setText({});
    } else {
        editor.setText(text);
        editor.setOriginal(toQString(m_edited.entry()->content()));
    }
    return last;
}

void EntryStoring::create() {
    const auto* const after = predecessorOfDraft();
    m_edited.setCreated(m_edited.isTodo()
                            ? *createTodos({toUtf8(m_editors.todo().text())}, after).front()
                            : createText(after));
}

void EntryStoring::update() {
    auto& entry = *m_edited.entry();
    if (m_edited.isTodo()) {
        m_entries.updateTodo(entry, toUtf8(m_editors.todo().text()), m_clock.now());
    } else {
        m_entries.updateText(entry, m_editors.text().text(), m_clock.now());
    }
}

const model::Entry* EntryStoring::predecessorOfDraft() const {
    return m_model.openEntryAbove(m_model.rowOf(EntryRowKind::draft));
}

std::vector<model::Entry*> EntryStoring::createTodos(const std::vector<std::string>& contents,
                                                     const model::Entry* after) {
    services::NewTodos todos{.contents = contents,
                             .board = *m_model.board(),
                             .now = m_clock.now(),
                             .undoName = contents.size() == 1 ? "New Todo" : "New Todos"};
    placeAfter(after, todos);
    return m_entries.createTodos(todos);
}

model::Entry& EntryStoring::createText(const model::Entry* after) {
    const auto text = m_editors.text().text();
    services::NewText entry{
        .rich = text, .board = *m_model.board(), .now = m_clock.now(), .undoName = "New Text"};
    placeAfter(after, entry);
    return m_entries.createText(entry);
}

} // namespace korvex::ui
