#pragma once

#include <QStringList>
#include <QTextEdit>

class QMimeData;

namespace korvex::ui {

/// The text field of a todo: one paragraph that wraps, never longer than an entry may be. Turns
/// keys that lead out of the text into signals.
class TodoTextEdit final : public QTextEdit {
    Q_OBJECT

public:
    explicit TodoTextEdit(QWidget* parent = nullptr);

    /// Every character as it is, with a line feed for every break: `toPlainText` makes other ones
    /// of some spaces too.
    QString typed() const;
    /// UTF-16 offset of the caret.
    int caret() const { return textCursor().position(); }
    void setCaret(int position);

Q_SIGNALS:
    void returnPressed();
    void completionRequested();
    void scheduleRequested();
    void escaped();
    void backspacedAway();
    /// The caret is to go out of the text, up (-1) or down (1).
    void walked(int direction);
    /// The todo itself is to change places.
    void moveRequested(int offset);
    /// Several lines are pasted, and the text is still without them.
    void linesComing();
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

} // namespace korvex::ui
