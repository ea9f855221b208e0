#pragma once

#include "ui/EntryRowLayout.h"
#include "ui/Theme.h"

#include <QFrame>
#include <QStringList>
#include <QTextEdit>

class QLabel;
class QPushButton;
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

/// Edits a todo in its row: the text and under it, when something was refused, why. Main thread.
class TodoEditor final : public QFrame {
    Q_OBJECT

public:
    TodoEditor(const Theme& theme, QWidget* parent);

    TodoTextEdit& field() { return *m_field; }
    QString text() const { return m_field->toPlainText(); }
    void setText(const QString& text);
    /// What the button beside the text says; an empty label offers to make a schedule.
    void setDueLabel(const DueLabel& label);
    void showError(const QString& message);
    void clearError();
    bool hasError() const;
    /// The height that the row needs at this width.
    int neededHeight(int width);

Q_SIGNALS:
    void neededHeightChanged();
    void scheduleClicked();
    /// The user gives up what was refused.
    void discarded();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void applyTheme();
    void place();
    TextArrangement arrangement(int room) const;

    const Theme& m_theme;
    TodoTextEdit* m_field;
    QToolButton* m_schedule;
    DueLabel m_dueLabel;
    QLabel* m_error;
    QPushButton* m_discard;
};

} // namespace korvex::ui
