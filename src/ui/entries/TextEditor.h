#pragma once

#include "richtext/code/CodeHighlighter.h"
#include "richtext/text/AttributedString.h"
#include "ui/entries/RowEditor.h"

#include <QPointer>

#include <optional>

namespace korvex::ui {

class CodeColors;
class FormatBar;
class RichTextEdit;

/// Edits a text entry in its row, where its text stands anyway; the format bar floats beside the
/// row, over the list. Main thread.
class TextEditor final : public RowEditor {
    Q_OBJECT

public:
    TextEditor(richtext::CodeHighlighter& code, const Theme& theme, QWidget* parent);
    ~TextEditor() override;

    RichTextEdit& field() { return *m_field; }
    /// The text before and after the caret, for two entries. Absent where there is nothing to
    /// split: inside a table, and where one part would be blank.
    struct Parts {
        richtext::AttributedString before;
        richtext::AttributedString after;
    };
    std::optional<Parts> parts() const;

    QTextEdit& input() override;
    int caret() const override;
    void setCaret(int offset) override;
    richtext::AttributedString text() const override;
    void load(const richtext::AttributedString& stored) override;
    void change(const richtext::AttributedString& to) override;
    bool isChanged() const override;
    QMenu* makeMenu() override;
    void placeInSight() override;
    bool owns(const QWidget* widget) const override;

protected:
    int textHeight(const EntryRowRoom& room) override;
    int wholeWidth() const override;
    QRect caretPlace() override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void applyTheme();
    void place();
    void placeBar();
    int contentHeight() const;
    void checkHeight();

    RichTextEdit* m_field;
    QPointer<FormatBar> m_bar;
    CodeColors* m_colors;
    /// Up to which the row may reach for a wide table.
    int m_mostWidth = 0;
    int m_contentHeight = 0;
    int m_wholeWidth = 0;
};

} // namespace korvex::ui
