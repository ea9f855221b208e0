#include "model/ServiceErrors.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/entries/EntryEditing.h"
#include "ui/kit/MenuItems.h"
#include "ui/kit/Refusal.h"
#include "ui/kit/Text.h"

#include <QKeyEvent>
#include <QMenu>
#include <QScopedValueRollback>

namespace korvex::ui {

// The two editors, and what their keys and menus ask for.

using model::EntryType;

RowEditor& EntryEditing::editorFor(EntryType type) {
    if (type == EntryType::todo) {
        return *m_todoEditor;
    }
    if (!m_textEditor) {
        m_textEditor = std::make_unique<TextEditor>(m_workspace, m_theme, m_view.viewport());
        connectEditor(*m_textEditor);
        connectTextEditor();
    }
    return *m_textEditor;
}

void EntryEditing::connectEditor(RowEditor& editor) {
    editor.hide();
    connect(&editor, &RowEditor::neededHeightChanged, this, [this, &editor] {
        if (isOpen() && m_editor == &editor && m_view.editedRow() >= 0) {
            m_view.measureAgain(m_view.editedRow());
        }
    });
    connect(&editor, &RowEditor::revealRequested, this, [this, &editor](const QRect& part) {
        if (isOpen() && m_editor == &editor && m_view.editedRow() >= 0) {
            m_view.revealInEditor(part);
        }
    });
    connect(&editor, &RowEditor::discarded, this, &EntryEditing::discard);
    auto& input = editor.input();
    input.installEventFilter(this);
    input.setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&input, &QWidget::customContextMenuRequested, this,
            [this, &input](const QPoint& position) { openMenu(input.mapToGlobal(position)); });
}

bool EntryEditing::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && m_editor) {
        auto* const key = static_cast<QKeyEvent*>(event);
        const auto& document = *m_editor->input().document();
        if ((key->matches(QKeySequence::Undo) && !document.isUndoAvailable()) ||
            (key->matches(QKeySequence::Redo) && !document.isRedoAvailable())) {
            // Nothing was typed: the window takes back what was done before.
            key->ignore();
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

void EntryEditing::connectTodoEditor() {
    auto& field = m_todoEditor->field();
    connect(m_todoEditor.get(), &TodoEditor::scheduleClicked, &field,
            &TodoTextEdit::scheduleRequested);
    connect(&field, &TodoTextEdit::returnPressed, this, &EntryEditing::makeNext);
    connect(&field, &TodoTextEdit::backspacedAway, this, &EntryEditing::removeAndGoUp);
    connect(&field, &TodoTextEdit::walked, this, &EntryEditing::walk);
    connect(&field, &TodoTextEdit::linesPasted, this, &EntryEditing::pasteLines);
    connect(&field, &TodoTextEdit::limitReached, this, &EntryEditing::showLimit);
    connect(&field, &TodoTextEdit::attachmentsPasted, this, &EntryEditing::attachmentsPasted);
    connect(&field, &TodoTextEdit::escaped, this, &EntryEditing::leaveToList);
    connect(&field, &TodoTextEdit::completionRequested, this, [this] {
        forward([this](model::Entry* entry, int) { Q_EMIT completionRequested(entry); });
    });
    connect(&field, &TodoTextEdit::scheduleRequested, this, [this] {
        forward([this](model::Entry* entry, int) { Q_EMIT scheduleRequested(entry); });
    });
    connect(&field, &TodoTextEdit::moveRequested, this, &EntryEditing::moveAndGoOn);
}

void EntryEditing::connectTextEditor() {
    auto& field = m_textEditor->field();
    connect(&field, &RichTextEdit::walked, this, &EntryEditing::walk);
    connect(&field, &RichTextEdit::limitReached, this, &EntryEditing::showLimit);
    connect(&field, &RichTextEdit::attachmentsPasted, this, &EntryEditing::attachmentsPasted);
    connect(&field, &RichTextEdit::escaped, this, &EntryEditing::leaveToList);
    connect(&field, &RichTextEdit::storeRequested, this, &EntryEditing::storeAndStay);
    connect(&field, &RichTextEdit::splitRequested, this, &EntryEditing::split);
    connect(&field, &RichTextEdit::moveRequested, this, &EntryEditing::moveAndGoOn);
}

void EntryEditing::showLimit() {
    m_editor->showError(
        toQString(model::descriptionOf(model::EntryServiceErrorCase::contentTooLong)));
}

void EntryEditing::leaveToList() {
    if (leaveForGood()) {
        m_view.setFocus();
    }
}

/// Commands on the entry itself need it stored first; they go on with the editor closed.
template <typename Request>
void EntryEditing::forward(Request&& request) {
    if (store()) {
        auto* const entry = m_entry;
        const int caret = m_editor->caret();
        close();
        m_view.setFocus();
        if (entry) {
            request(entry, caret);
        }
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

model::Entry* EntryEditing::storedEntry() {
    if (m_target == Target::draft) {
        if (m_editor->isBlank()) {
            m_editor->showError(
                toQString(model::descriptionOf(model::EntryServiceErrorCase::emptyContent)));
            return nullptr;
        }
        storeAndStay();
    }
    return m_entry;
}

void EntryEditing::makeNext() {
    const bool wasEmptyDraft = m_target == Target::draft && m_editor->isBlank();
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
    openDraft(EntryType::todo, m_model.openDraft(after));
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
        // Down into a text begins at its top.
        edit(row, direction > 0 && !next->isTodo() ? 0 : -1);
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
        last = createTodos(contents, after).back();
    });
    if (refused) {
        m_editor->showError(*refused);
        return;
    }
    if (m_target == Target::draft) {
        m_todoEditor->setText({});
    } else {
        const auto original = toQString(m_entry->content());
        m_todoEditor->setText(text);
        m_todoEditor->setOriginal(original);
    }
    edit(m_model.rowOf(*last), -1);
}

void EntryEditing::openMenu(const QPoint& globalPosition) {
    auto* const menu = m_editor->makeMenu();
    menu->setParent(&m_view, menu->windowFlags());
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const MenuItems items(*menu, *this);
    menu->addSeparator();
    const bool isText = m_type == EntryType::text;
    if (isText) {
        items.add(tr("Split here"), Qt::CTRL | Qt::SHIFT | Qt::Key_Return, [this] { split(); })
            .setEnabled(m_textEditor->parts().has_value());
    }
    items.add(isText ? tr("Change to todo") : tr("Change to text"), {}, [this] { changeType(); })
        .setEnabled(!m_editor->isBlank());
    const auto moveToBoard = [this] {
        forward([this](model::Entry* entry, int) { Q_EMIT boardChangeRequested(entry); });
    };
    items.add(tr("Move to board…"), Qt::CTRL | Qt::SHIFT | Qt::Key_M, moveToBoard)
        .setEnabled(!m_editor->isBlank());
    Q_EMIT menuOpening(menu, m_entry);
    items.add(isText ? tr("Delete text") : tr("Delete todo"), {}, [this] {
        if (auto* const entry = m_entry) {
            Q_EMIT deletionRequested(entry);
        } else {
            discard();
        }
    });
    menu->popup(globalPosition);
}

} // namespace korvex::ui
