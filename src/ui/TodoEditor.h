#pragma once

#include "ui/EntryRowLayout.h"
#include "ui/RowEditor.h"

#include <QStringList>
#include <QTextEdit>

class QToolButton;

namespace korvex::ui {

/// The text field of a todo: one paragraph that wraps, never longer than an entry may be. Turns
/// keys that lead out of the text into signals.
class TodoTextEdit final : public QTextEdit {
    Q_OBJECT

public:
    explicit TodoTextEdit(QWidget* parent = nullptr);

    /// UTF-16 offset of the caret.
    int caret() const { return textCursor().position(); }
    void setCaret(int position);

Q_SIGNALS:
    void returnPressed();
    void completionRequested();
    void scheduleRequested();
    void escaped();
    void backspacedAway();
    /// Out of the text, up (-1) or down (1).
    void walked(int direction);
    /// The todo itself is to change places.
    void moveRequested(int offset);
    /// Several lines were pasted: the text with the first of them, and the others.
    void linesPasted(const QString& text, const QStringList& others);
    void limitReached();
    /// What was pasted is no text but something to attach.
    void attachmentsPasted(const QMimeData* offered);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;
    bool canInsertFromMimeData(const QMimeData* source) const override;

private:
    /// Whether the selection may be replaced by this text; announces a refusal.
    bool allows(const QString& replacement);
    bool leadsOut(int direction) const;
    bool handledAsCommand(QKeyEvent* event);
};

/// Edits a todo in its row. Main thread.
class TodoEditor final : public RowEditor {
    Q_OBJECT

public:
    TodoEditor(const Theme& theme, QWidget* parent);

    TodoTextEdit& field() { return *m_field; }
    QString text() const { return m_field->toPlainText(); }
    void setText(const QString& text);
    /// The stored text is this now; what was typed stays.
    void setOriginal(const QString& text) { m_original = text; }
    /// What the button beside the text says; an empty label offers to make a schedule.
    void setDueLabel(const DueLabel& label);

    QTextEdit& input() override { return *m_field; }
    int caret() const override { return m_field->caret(); }
    void setCaret(int offset) override;
    bool isChanged() const override { return text() != m_original; }
    void revert() override { setText(m_original); }
    QMenu* makeMenu() override { return m_field->createStandardContextMenu(); }
    int neededHeight(int width) override;

Q_SIGNALS:
    void scheduleClicked();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void applyTheme();
    void place();
    TextArrangement arrangement(int room) const;

    TodoTextEdit* m_field;
    QString m_original;
    QToolButton* m_schedule;
    DueLabel m_dueLabel;
};

} // namespace korvex::ui
