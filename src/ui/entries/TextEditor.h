#pragma once

#include "richtext/code/CodeHighlighter.h"
#include "richtext/text/AttributedString.h"
#include "ui/entries/RowEditor.h"

#include <optional>

namespace korvex::ui {

class CodeColors;
class FormatBar;
class RichTextEdit;

/// Edits a text entry in its row, with the format bar above the text. Main thread.
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
    int wholeWidth() const override;

protected:
    int textHeight(int width) override;
    QRect caretPlace() override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void applyTheme();
    void place();
    int contentHeight() const;
    void checkHeight();

    RichTextEdit* m_field;
    FormatBar* m_bar;
    CodeColors* m_colors;
    int m_contentHeight = 0;
    int m_wholeWidth = 0;
};

} // namespace korvex::ui
