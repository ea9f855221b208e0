#pragma once

#include "ui/entries/DueButton.h"
#include "ui/entries/RowEditor.h"
#include "ui/todos/RowText.h"
#include "ui/todos/TodoTextEdit.h"

#include <optional>

namespace korvex::ui {

/// Edits a todo in its row. Main thread.
class TodoEditor final : public RowEditor {
    Q_OBJECT

public:
    TodoEditor(const Theme& theme, QWidget* parent);

    TodoTextEdit& field() { return *m_field; }
    QString typed() const { return m_field->typed(); }
    /// Lets the button beside the text or below it say this.
    void setDueLabel(const DueLabel& label);

    QTextEdit& input() override { return *m_field; }
    int caret() const override { return m_field->caret(); }
    void setCaret(int offset) override;
    richtext::AttributedString text() const override;
    void load(const richtext::AttributedString& stored) override;
    void change(const richtext::AttributedString& to) override;
    bool isChanged() const override;
    QMenu* makeMenu() override;

Q_SIGNALS:
    void scheduleClicked();

protected:
    int textHeight(const EntryRowRoom& room) override;
    QRect caretPlace() override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void applyTheme();
    /// What the editor shows, or how, is another.
    void arrangeAgain();
    const TodoArrangement& arrangement(int width);
    void place();

    TodoTextEdit* m_field;
    DueButton* m_due;
    /// Made when it is first asked for after a change, and for this width.
    std::optional<TodoArrangement> m_arrangement;
    int m_arrangedWidth = 0;
    QRect m_circle;
};

} // namespace korvex::ui
