#include "ui/EntryEditing.h"

#include "base/Text.h"
#include "ui/Refusal.h"

#include <QApplication>
#include <QScopedValueRollback>

namespace korvex::ui {

EntryEditing::EntryEditing(EntryListModel& model, EntryListView& view, const Workspace& workspace,
                           const Theme& theme)
    : m_model(model),
      m_view(view),
      m_workspace(workspace),
      m_editor(std::make_unique<TodoEditor>(theme, view.viewport())) {
    m_editor->hide();
    connect(m_editor.get(), &TodoEditor::neededHeightChanged, this, [this] {
        if (isOpen() && m_view.editedRow() >= 0) {
            m_view.measureAgain(m_view.editedRow());
        }
    });
    connect(m_editor.get(), &TodoEditor::scheduleClicked, &m_editor->field(),
            &TodoTextEdit::scheduleRequested);
    connect(m_editor.get(), &TodoEditor::discarded, this, &EntryEditing::discard);

    auto& field = m_editor->field();
    connect(&field, &TodoTextEdit::returnPressed, this, &EntryEditing::makeNext);
    connect(&field, &TodoTextEdit::backspacedAway, this, &EntryEditing::removeAndGoUp);
    connect(&field, &TodoTextEdit::walked, this, &EntryEditing::walk);
    connect(&field, &TodoTextEdit::linesPasted, this, &EntryEditing::pasteLines);
    // No new focus: another window or a menu has the keyboard for a while only.
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* before, QWidget* now) {
        if (isOpen() && now && m_editor->isAncestorOf(before) && !m_editor->isAncestorOf(now)) {
            leave();
        }
    });
    connect(&field, &TodoTextEdit::limitReached, this, [this] {
        m_editor->showError(
            toQString(services::descriptionOf(services::EntryServiceErrorCase::contentTooLong)));
    });
    connect(&field, &TodoTextEdit::escaped, this, [this] {
        if (leaveForGood()) {
            m_view.setFocus();
        }
    });
    // Commands on the todo itself need it stored first; they go on with the editor closed.
    const auto forward = [this](auto request) {
        if (store()) {
            auto* const entry = m_entry;
            close();
            m_view.setFocus();
            if (entry) {
                request(entry);
            }
        }
    };
    connect(&field, &TodoTextEdit::completionRequested, this, [this, forward] {
        forward([this](model::Entry* entry) { Q_EMIT completionRequested(entry); });
    });
    connect(&field, &TodoTextEdit::scheduleRequested, this, [this, forward] {
        forward([this](model::Entry* entry) { Q_EMIT scheduleRequested(entry); });
    });
    connect(&field, &TodoTextEdit::moveRequested, this, [this, forward](int offset) {
        const int caret = m_editor->field().caret();
        forward([&](model::Entry* entry) {
            Q_EMIT moveRequested(entry, offset);
            edit(m_model.rowOf(*entry), caret);
        });
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
    open(Target::stored, wanted, row, toQString(wanted->content()), caret);
}

void EntryEditing::startDraft(const model::Entry* after) {
    if (leave()) {
        open(Target::draft, nullptr, m_model.openDraft(after), QString(), 0);
    }
}

void EntryEditing::startDraftAtEnd() {
    if (leave()) {
        open(Target::draft, nullptr, m_model.openDraftAtEnd(), QString(), 0);
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
    if (m_target == Target::stored && m_editor->text().trimmed().isEmpty()) {
        m_editor->setText(m_original);
    }
    return leave();
}

void EntryEditing::recordsChanged() {
    if (m_target != Target::stored || m_isStoring) {
        return;
    }
    const bool isUntouched = m_editor->text() == m_original;
    if (!isStillHere()) {
        if (isUntouched) {
            close();
        } else {
            becomeDraft();
        }
        return;
    }
    m_editor->setDueLabel(dueLabelOf(*m_entry, m_workspace));
    const auto content = toQString(m_entry->content());
    if (content != m_original) {
        m_original = content;
        if (isUntouched) {
            const int caret = m_editor->field().caret();
            m_editor->setText(content);
            m_editor->field().setCaret(caret);
        }
    }
}

void EntryEditing::open(Target target, model::Entry* entry, int row, const QString& text,
                        int caret) {
    m_target = target;
    m_entry = entry;
    m_original = text;
    m_editor->setText(text);
    m_editor->setDueLabel(entry ? dueLabelOf(*entry, m_workspace) : DueLabel{});
    m_editor->field().setCaret(caret < 0 ? static_cast<int>(text.size()) : caret);
    m_view.placeEditor(*m_editor, row);
    m_editor->field().setFocus();
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

void EntryEditing::discard() {
    m_editor->setText(m_original);
    close();
    m_view.setFocus();
}

bool EntryEditing::store() {
    const auto text = m_editor->text();
    const QScopedValueRollback storing(m_isStoring, true);
    if (m_target == Target::draft) {
        return createFromDraft(text);
    }
    if (m_target == Target::none || text == m_original) {
        return true;
    }
    const auto refused =
        refusal([&] { m_workspace.entries.updateTodo(*m_entry, toUtf8(text), m_workspace.now()); });
    if (refused) {
        m_editor->showError(*refused);
        return false;
    }
    m_original = toQString(m_entry->content());
    return true;
}

bool EntryEditing::createFromDraft(const QString& text) {
    if (text.trimmed().isEmpty()) {
        return true;
    }
    const auto* const after = openPredecessor(m_model.rowOf(EntryListModel::RowKind::draft));
    const auto refused = refusal([&] { m_entry = create({toUtf8(text)}, after).front(); });
    if (refused) {
        m_editor->showError(*refused);
    }
    return !refused;
}

std::vector<model::Entry*> EntryEditing::create(const std::vector<std::string>& contents,
                                                const model::Entry* after) {
    services::NewTodos todos{
        .contents = contents, .board = *m_model.board(), .now = m_workspace.now()};
    if (after) {
        todos.after = after->id();
    } else if (const auto active = services::EntryService::activeEntries(*m_model.board());
               !active.empty()) {
        todos.before = active.front()->id();
    }
    return m_workspace.entries.createTodos(todos);
}

/// The nearest entry above a row that new todos can stand after: one that is still open.
const model::Entry* EntryEditing::openPredecessor(int row) const {
    for (--row; row >= 0; --row) {
        const auto* const entry = m_model.entry(row);
        if (entry && !entry->isCompleted()) {
            return entry;
        }
    }
    return nullptr;
}

void EntryEditing::makeNext() {
    const bool wasEmptyDraft = m_target == Target::draft && m_editor->text().trimmed().isEmpty();
    if (wasEmptyDraft) {
        // Return on a line left empty ends the writing.
        close();
        m_view.setFocus();
        return;
    }
    if (!store()) {
        return;
    }
    auto* const after = m_entry;
    m_model.closeDraft();
    open(Target::draft, nullptr, m_model.openDraft(after), QString(), 0);
}

void EntryEditing::removeAndGoUp() {
    if (m_target != Target::draft) {
        return;
    }
    const auto* const above = m_model.draftPredecessor();
    close();
    const int row = above ? m_model.rowOf(*above) : -1;
    if (row >= 0) {
        edit(row, -1);
    } else {
        m_view.setFocus();
    }
}

void EntryEditing::walk(int direction) {
    const int row = m_view.editedRow() + direction;
    if (row < 0 || row >= m_model.rowCount()) {
        return;
    }
    auto* const next = m_model.entry(row);
    const auto kind = m_model.kind(row);
    if (next && kind == EntryListModel::RowKind::entry) {
        edit(row, -1);
    } else if (leave()) {
        m_view.setCurrentRow(next ? m_model.rowOf(*next) : m_model.rowOf(kind));
        m_view.setFocus();
    }
}

void EntryEditing::pasteLines(const QString& text, const QStringList& others) {
    std::vector<std::string> contents;
    if (m_target == Target::draft) {
        contents.push_back(toUtf8(text));
    }
    for (const auto& line : others) {
        contents.push_back(toUtf8(line));
    }
    model::Entry* last = nullptr;
    const auto refused = refusal([&] {
        const QScopedValueRollback storing(m_isStoring, true);
        const auto* const after =
            m_entry ? m_entry : openPredecessor(m_model.rowOf(EntryListModel::RowKind::draft));
        last = create(contents, after).back();
    });
    if (refused) {
        m_editor->showError(*refused);
        return;
    }
    m_editor->setText(m_target == Target::draft ? QString() : text);
    edit(m_model.rowOf(*last), -1);
}

bool EntryEditing::isStillHere() const {
    return m_entry->isLive() && !m_entry->isCompleted() && m_entry->board() == m_model.board();
}

/// The todo was deleted or completed elsewhere while its text was changed here: the text lives on.
void EntryEditing::becomeDraft() {
    const auto text = m_editor->text();
    const int caret = m_editor->field().caret();
    const bool hadFocus = m_editor->field().hasFocus();
    const auto* const after = openPredecessor(m_view.editedRow());
    m_view.removeEditor();
    open(Target::draft, nullptr, m_model.openDraft(after), QString(), 0);
    m_editor->setText(text);
    m_editor->field().setCaret(caret);
    m_editor->showError(
        toQString(services::descriptionOf(services::EntryServiceErrorCase::entryUnavailable)));
    if (!hadFocus) {
        m_view.setFocus();
    }
}

} // namespace korvex::ui
