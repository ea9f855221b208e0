#pragma once

#include "ui/entries/EntryListModel.h"
#include "ui/entries/TextEditor.h"
#include "ui/entries/TodoEditor.h"

#include <QMimeData>
#include <QObject>

#include <memory>

namespace korvex::ui {

/// The two editors that can stand in the place of a row, one for todos and one for texts, of which
/// one at a time is in use. Passes on what their keys and menus ask for. Main thread.
class EntryEditors final : public QObject {
    Q_OBJECT

public:
    EntryEditors(const EntryListModel& model, richtext::CodeHighlighter& code, const Theme& theme,
                 QWidget& viewport);
    ~EntryEditors() override;

    /// Takes the editor for this type into use.
    void choose(model::EntryType type);
    /// The editor in use; there must be one.
    RowEditor& current() { return *m_current; }
    TodoEditor& todo() { return *m_todo; }
    /// The editor of texts, which is there once a text was edited.
    TextEditor& text() { return *m_text; }

    /// The editor in use shows what the store has.
    void load(const model::Entry& entry);
    /// The editor in use is empty.
    void clear();
    /// What the store has of the entry's text, as the editor in use shows it.
    richtext::AttributedString textOf(const model::Entry& entry) const;
    /// Shows when the entry is due; nothing for null.
    void showDue(const model::Entry* entry);

Q_SIGNALS:
    /// The text in the editor in use has changed.
    void typed();
    /// The keyboard went to something else in the window.
    void left();
    void heightChanged();
    void revealRequested(const QRect& part);
    /// What was typed is given up.
    void discarded();
    void escaped();
    void menuRequested(const QPoint& globalPosition);
    /// The caret is to go up (-1) or down (1) over the edge of the text.
    void walked(int direction);
    /// Return was pressed at the end of a todo.
    void nextRequested();
    /// Backspace was pressed in an empty todo.
    void backspacedAway();
    void linesComing();
    void linesPasted(const QString& text, const QStringList& others);
    void storeRequested();
    void splitRequested();
    void completionRequested();
    void scheduleRequested();
    void moveRequested(int offset);
    void attachmentsPasted(const QMimeData* offered);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void connectEditor(RowEditor& editor);
    void connectTodo();
    void connectText();
    /// The editor in use, or a panel that serves it.
    bool isPartOfCurrent(const QWidget* widget) const;
    void showLimit();

    const EntryListModel& m_model;
    richtext::CodeHighlighter& m_code;
    const Theme& m_theme;
    QWidget& m_viewport;
    std::unique_ptr<TodoEditor> m_todo;
    /// The editor of texts is made when the first one is edited.
    std::unique_ptr<TextEditor> m_text;
    RowEditor* m_current = nullptr;
};

} // namespace korvex::ui
