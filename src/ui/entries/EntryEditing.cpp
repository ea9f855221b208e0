#include "ui/entries/EntryEditing.h"

#include "model/ServiceErrors.h"
#include "richtext/stored/EntryText.h"
#include "services/EntryOrder.h"
#include "ui/kit/Popover.h"
#include "ui/kit/Refusal.h"

#include <QApplication>
#include <QScopedValueRollback>

namespace korvex::ui {

using model::EntryType;

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

EntryEditing::EntryEditing(EntryListModel& model, EntryListView& view, const Workspace& workspace,
                           const Theme& theme)
    : m_model(model),
      m_view(view),
      m_workspace(workspace),
      m_theme(theme),
      m_todoEditor(std::make_unique<TodoEditor>(theme, view.viewport())) {
    connectEditor(*m_todoEditor);
    connectTodoEditor();
    // No new focus: another window or a menu has the keyboard for a while only. So has a panel.
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* before, QWidget* now) {
        const auto belongsHere = [this](const QWidget* widget) {
            for (; widget; widget = widget->parentWidget()) {
                if (widget == m_editor || qobject_cast<const Popover*>(widget)) {
                    return true;
                }
            }
            return false;
        };
        if (isOpen() && now && belongsHere(before) && !belongsHere(now)) {
            leave();
        }
    });
}

EntryEditing::~EntryEditing() = default;

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

void EntryEditing::startTextDraft(const model::Entry* after) {
    if (leave()) {
        openDraft(EntryType::text, after ? m_model.openDraft(after) : m_model.openDraftAtEnd());
    }
}

bool EntryEditing::leave() {
    if (!isOpen() || m_isStoring) {
        return true;
    }
    if (!store()) {
        return false;
    }
    close();
    return true;
}

bool EntryEditing::leaveForGood() {
    if (m_target == Target::stored && m_type == EntryType::todo && m_editor->isBlank()) {
        m_editor->revert();
    }
    return leave();
}

void EntryEditing::discard() {
    m_editor->revert();
    close();
    m_view.setFocus();
}

void EntryEditing::recordsChanged() {
    if (m_target != Target::stored || m_isStoring) {
        return;
    }
    const bool isUntouched = !m_editor->isChanged();
    if (!isStillHere()) {
        if (isUntouched) {
            close();
        } else {
            becomeDraft();
        }
        return;
    }
    if (m_type == EntryType::todo) {
        m_todoEditor->setDueLabel(dueLabelOf(*m_entry, m_workspace.now(), m_workspace.dates));
    }
    if (!isStoredChanged()) {
        return;
    }
    if (isUntouched) {
        const int caret = m_editor->caret();
        load(*m_entry);
        m_editor->setCaret(caret);
    } else if (m_type == EntryType::todo) {
        m_todoEditor->setOriginal(toQString(m_entry->content()));
    }
}

void EntryEditing::openStored(model::Entry& entry, int row, int caret) {
    m_target = Target::stored;
    m_type = entry.type();
    m_entry = &entry;
    m_editor = &editorFor(m_type);
    load(entry);
    show(*m_editor, row, caret);
}

void EntryEditing::openDraft(EntryType type, int row) {
    m_target = Target::draft;
    m_type = type;
    m_entry = nullptr;
    m_editor = &editorFor(type);
    if (type == EntryType::todo) {
        m_todoEditor->setText({});
        m_todoEditor->setDueLabel({});
    } else {
        m_textEditor->setText({});
    }
    show(*m_editor, row, 0);
}

void EntryEditing::show(RowEditor& editor, int row, int caret) {
    m_view.placeEditor(editor, row);
    editor.setCaret(caret);
    editor.input().setFocus();
}

void EntryEditing::close() {
    const auto target = std::exchange(m_target, Target::none);
    auto* const entry = std::exchange(m_entry, nullptr);
    m_view.removeEditor();
    if (target == Target::draft) {
        m_model.closeDraft();
    }
    if (entry) {
        if (const int row = m_model.rowOf(*entry); row >= 0) {
            m_view.setCurrentRow(row);
        }
    }
}

void EntryEditing::load(const model::Entry& entry) {
    m_storedContent = entry.content();
    m_storedText = entry.richTextData();
    if (m_type == EntryType::todo) {
        m_todoEditor->setText(toQString(entry.content()));
        m_todoEditor->setDueLabel(dueLabelOf(entry, m_workspace.now(), m_workspace.dates));
    } else {
        m_textEditor->setText(richtext::richText(entry, m_workspace.serializer));
    }
}

bool EntryEditing::store() {
    const QScopedValueRollback storing(m_isStoring, true);
    const bool isDraft = m_target == Target::draft;
    if (m_target == Target::none || (isDraft ? m_editor->isBlank() : !m_editor->isChanged())) {
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
        m_editor->showError(*refused);
        return false;
    }
    if (!m_entry->isLive()) {
        m_entry = nullptr; // emptied
        return true;
    }
    m_storedContent = m_entry->content();
    m_storedText = m_entry->richTextData();
    if (m_type == EntryType::todo) {
        m_todoEditor->setOriginal(toQString(m_storedContent));
    } else {
        m_textEditor->setStored();
    }
    return true;
}

void EntryEditing::create() {
    const auto* const after = openPredecessor(m_model.rowOf(EntryListModel::RowKind::draft));
    m_entry = m_type == EntryType::todo ? createTodos({toUtf8(m_todoEditor->text())}, after).front()
                                        : &createText(m_textEditor->text(), after);
}

void EntryEditing::update() {
    if (m_type == EntryType::todo) {
        m_workspace.entries.updateTodo(*m_entry, toUtf8(m_todoEditor->text()), m_workspace.now());
    } else {
        m_workspace.entries.updateText(*m_entry, m_textEditor->text(), m_workspace.now());
    }
}

bool EntryEditing::isStoredChanged() const {
    return m_entry->content() != m_storedContent || m_entry->richTextData() != m_storedText;
}

std::vector<model::Entry*> EntryEditing::createTodos(const std::vector<std::string>& contents,
                                                     const model::Entry* after) {
    services::NewTodos todos{
        .contents = contents, .board = *m_model.board(), .now = m_workspace.now()};
    placeAfter(after, todos);
    return m_workspace.entries.createTodos(todos);
}

model::Entry& EntryEditing::createText(const richtext::AttributedString& text,
                                       const model::Entry* after) {
    services::NewText entry{.rich = text, .board = *m_model.board(), .now = m_workspace.now()};
    placeAfter(after, entry);
    return m_workspace.entries.createText(entry);
}

/// The nearest entry above a row that new ones can stand after: one that is still open.
const model::Entry* EntryEditing::openPredecessor(int row) const {
    for (--row; row >= 0; --row) {
        const auto* const entry = m_model.entry(row);
        if (entry && !entry->isCompleted()) {
            return entry;
        }
    }
    return nullptr;
}

void EntryEditing::storeAndStay() {
    if (!store()) {
        return;
    }
    if (!m_entry) {
        close();
        m_view.setFocus();
    } else if (m_target == Target::draft) {
        m_target = Target::stored;
        m_model.closeDraft();
        m_view.placeEditor(*m_editor, m_model.rowOf(*m_entry));
    }
}

void EntryEditing::split() {
    const auto parts = m_textEditor->parts();
    if (!parts) {
        return;
    }
    model::Entry* second = nullptr;
    const auto refused = refusal([&] {
        const QScopedValueRollback storing(m_isStoring, true);
        if (m_target == Target::draft) {
            // What was written so far is stored as one, so that a refusal loses nothing.
            create();
            m_target = Target::stored;
            m_model.closeDraft();
        }
        second = &m_workspace.entries.splitText(*m_entry, parts->before, parts->after,
                                                m_workspace.now());
    });
    if (!refused) {
        close();
        edit(m_model.rowOf(*second), 0);
        return;
    }
    if (m_entry && m_view.editedRow() != m_model.rowOf(*m_entry)) {
        m_view.placeEditor(*m_editor, m_model.rowOf(*m_entry));
    }
    m_editor->showError(*refused);
}

bool EntryEditing::isStillHere() const {
    return m_entry->isLive() && !m_entry->isCompleted() && m_entry->type() == m_type &&
           m_entry->board() == m_model.board();
}

/// The entry was deleted, completed, moved or made another type elsewhere while its text was
/// changed here: the text lives on.
void EntryEditing::becomeDraft() {
    const bool canFollow =
        m_entry->isLive() && !m_entry->isCompleted() && m_entry->board() == m_model.board();
    const auto* const after = canFollow ? m_entry : openPredecessor(m_view.editedRow());
    m_target = Target::draft;
    m_entry = nullptr;
    if (m_type == EntryType::todo) {
        m_todoEditor->setDueLabel({});
    }
    m_view.placeEditor(*m_editor, m_model.openDraft(after));
    m_editor->showError(
        toQString(model::descriptionOf(model::EntryServiceErrorCase::entryUnavailable)));
}

} // namespace korvex::ui
