#include "ui/entries/EntryEditors.h"

#include "model/ServiceErrors.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/kit/overlays/Popover.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/PastedLines.h"

#include <QApplication>
#include <QKeyEvent>

namespace korvex::ui {

EntryEditors::EntryEditors(const EntryListModel& model, richtext::CodeHighlighter& code,
                           const Theme& theme, QWidget& viewport)
    : m_model(model),
      m_code(code),
      m_theme(theme),
      m_viewport(viewport),
      m_todo(std::make_unique<TodoEditor>(theme, &viewport)) {
    connectEditor(*m_todo);
    connectTodo();
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* before, QWidget* now) {
        // A menu or another window, such as a dialog, has the keyboard for a while only. So has a
        // panel.
        if (now && now->window() == m_viewport.window() && isPartOfCurrent(before) &&
            !isPartOfCurrent(now)) {
            Q_EMIT left();
        }
    });
}

EntryEditors::~EntryEditors() = default;

bool EntryEditors::isPartOfCurrent(const QWidget* widget) const {
    return (m_current && m_current->owns(widget)) || Popover::holds(widget);
}

void EntryEditors::choose(model::EntryType type) {
    if (type == model::EntryType::todo) {
        m_current = m_todo.get();
        return;
    }
    if (!m_text) {
        m_text = std::make_unique<TextEditor>(m_code, m_theme, &m_viewport);
        connectEditor(*m_text);
        connectText();
    }
    m_current = m_text.get();
}

void EntryEditors::load(const model::Entry& entry) {
    m_current->load(textOf(entry));
    showDue(&entry);
}

void EntryEditors::clear() {
    m_current->load({});
    showDue(nullptr);
}

richtext::AttributedString EntryEditors::textOf(const model::Entry& entry) const {
    // The field of a todo has one kind of break between lines, and others are no change of the
    // text.
    return m_current == m_todo.get() ? richtext::RichTextSerializer::plainRichText(
                                           toUtf8(withLineFeeds(toQString(entry.content()))))
                                     : m_model.richText(entry);
}

void EntryEditors::showDue(const model::Entry* entry) {
    if (m_current == m_todo.get()) {
        m_todo->setDueLabel(entry ? m_model.dueLabel(*entry) : DueLabel{});
    }
}

void EntryEditors::showLimit() {
    m_current->showError(translated(model::EntryServiceErrorCase::contentTooLong));
}

bool EntryEditors::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && m_current) {
        auto* const key = static_cast<QKeyEvent*>(event);
        const auto& document = *m_current->input().document();
        const auto isUndo = key->matches(QKeySequence::Undo) || key->matches(QKeySequence::Redo);
        if (isUndo && !document.isUndoAvailable() && !document.isRedoAvailable()) {
            // Nothing was typed: the window takes back what was done before. An editor that has
            // steps of its own keeps both keys, or one too many would close it and lose them.
            key->ignore();
            return true;
        }
    }
    return QObject::eventFilter(watched, event);
}

void EntryEditors::connectEditor(RowEditor& editor) {
    editor.hide();
    connect(&editor, &RowEditor::neededHeightChanged, this, [this, &editor] {
        if (m_current == &editor) {
            Q_EMIT heightChanged();
        }
    });
    connect(&editor, &RowEditor::revealRequested, this, [this, &editor](const QRect& part) {
        if (m_current == &editor) {
            Q_EMIT revealRequested(part);
        }
    });
    connect(&editor, &RowEditor::discarded, this, &EntryEditors::discarded);
    auto& input = editor.input();
    connect(input.document(), &QTextDocument::contentsChanged, this, [this, &editor] {
        if (m_current == &editor) {
            Q_EMIT typed();
        }
    });
    input.installEventFilter(this);
    input.setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&input, &QWidget::customContextMenuRequested, this,
            [this, &input](const QPoint& position) {
                Q_EMIT menuRequested(input.mapToGlobal(position));
            });
}

void EntryEditors::connectTodo() {
    auto& field = m_todo->field();
    connect(m_todo.get(), &TodoEditor::scheduleClicked, this, &EntryEditors::scheduleRequested);
    connect(&field, &TodoTextEdit::returnPressed, this, &EntryEditors::nextRequested);
    connect(&field, &TodoTextEdit::backspacedAway, this, &EntryEditors::backspacedAway);
    connect(&field, &TodoTextEdit::walked, this, &EntryEditors::walked);
    connect(&field, &TodoTextEdit::linesComing, this, &EntryEditors::linesComing);
    connect(&field, &TodoTextEdit::linesPasted, this, &EntryEditors::linesPasted);
    connect(&field, &TodoTextEdit::limitReached, this, &EntryEditors::showLimit);
    connect(&field, &TodoTextEdit::attachmentsPasted, this, &EntryEditors::attachmentsPasted);
    connect(&field, &TodoTextEdit::escaped, this, &EntryEditors::escaped);
    connect(&field, &TodoTextEdit::completionRequested, this, &EntryEditors::completionRequested);
    connect(&field, &TodoTextEdit::scheduleRequested, this, &EntryEditors::scheduleRequested);
    connect(&field, &TodoTextEdit::moveRequested, this, &EntryEditors::moveRequested);
}

void EntryEditors::connectText() {
    auto& field = m_text->field();
    connect(&field, &RichTextEdit::walked, this, &EntryEditors::walked);
    connect(&field, &RichTextEdit::limitReached, this, &EntryEditors::showLimit);
    connect(&field, &RichTextEdit::attachmentsPasted, this, &EntryEditors::attachmentsPasted);
    connect(&field, &RichTextEdit::escaped, this, &EntryEditors::escaped);
    connect(&field, &RichTextEdit::storeRequested, this, &EntryEditors::storeRequested);
    connect(&field, &RichTextEdit::splitRequested, this, &EntryEditors::splitRequested);
    connect(&field, &RichTextEdit::moveRequested, this, &EntryEditors::moveRequested);
}

} // namespace korvex::ui
