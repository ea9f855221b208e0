#pragma once

#include "richtext/text/AttributedString.h"
#include "richtext/text/RichTextCommand.h"
#include "ui/editor/FormatState.h"
#include "ui/editor/LengthLimit.h"

#include <QTextEdit>

#include <memory>
#include <vector>

namespace korvex::ui {

struct TextLook;
class TextSpacing;

/// The formatted text under edit: a widget that turns events into commands and tells what it cannot
/// do itself by signals. What a command does stands in `FormatEditing`, `ListEditing`,
/// `TableEditing` and `StructureKeys`. Knows the entry's limits, but nothing of entries. Main
/// thread.
class RichTextEdit final : public QTextEdit {
    Q_OBJECT

public:
    explicit RichTextEdit(QWidget* parent = nullptr);
    ~RichTextEdit() override;

    /// To be set before any text. A text that is shown already is shown anew, and its undo
    /// forgotten.
    void setLook(const TextLook& look);
    const TextLook& look() const { return *m_look; }
    /// Undo begins anew, the caret stands at the front.
    void setContent(const richtext::AttributedString& text);
    richtext::AttributedString content() const;

    /// Does what a control or a shortcut asks for, as one step of undo. Those that need more than
    /// the command says ask for it first: `linkRequested`, `tableRequested`, `listsRequested`.
    void perform(const richtext::RichTextCommand& command);

    /// The selection, or the link that the caret stands in, leads to the target; an empty one takes
    /// the link away. Where there is neither, the target itself is inserted as a link.
    void setLink(const QString& target);
    /// `marker` as TextList has it; the same marker again ends the list.
    void toggleList(const QString& marker);
    /// Takes the place of the selection. False, and announced, when the entry would be too long.
    bool insert(const richtext::AttributedString& text);
    /// Inserts what the clipboard holds, without its formats.
    void pastePlainText();

    /// Whether this may take the place of the selection; a refusal is announced.
    bool allows(QStringView replacement);
    /// The same of the characters between two positions of the document.
    bool allowsReplacing(int from, int to, QStringView replacement);
    const FormatState& formatState() const { return m_state; }
    /// What of the document lies before the viewport, to the left and above.
    QPointF scrolled() const;

Q_SIGNALS:
    void formatStateChanged();
    void linkRequested();
    void tableRequested();
    void listsRequested();
    /// The edit was refused: the entry would be too long.
    void limitReached();
    /// What was pasted is no text but something to attach.
    void attachmentsPasted(const QMimeData* offered);
    void escaped();
    /// The caret is to leave the text, up (-1) or down (1).
    void walked(int direction);
    /// The entry is to become two, here.
    void splitRequested();
    /// What was typed is to be stored now.
    void storeRequested();
    /// The entry itself is to change places.
    void moveRequested(int offset);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;
    QMimeData* createMimeDataFromSelection() const override;

private:
    void addShortcuts();
    bool handledAsStructure(const QKeyEvent& event);
    bool handledAsMovement(const QKeyEvent& event);
    /// One item more or less changes the numbers of those behind it, and code its ground, which no
    /// layout knows of; but what is typed into a paragraph, Qt paints anew by itself.
    void repaintWhereParagraphsChanged();
    /// Shows where a table goes on beyond what is seen of it.
    void paintEndsOfTables();
    /// The caret does not stay where it could not be seen, unless it has come to the end.
    void passHiddenParagraph(const QKeyEvent& event);
    void insertPasted(const richtext::AttributedString& text);
    /// Typing beside a link or inline code is not part of it.
    void stepOutOfRuns();
    void updateState();

    std::unique_ptr<TextLook> m_look;
    LengthLimit m_limit;
    TextSpacing* m_spacing;
    FormatState m_state;
    std::vector<int> m_paragraphs;
};

} // namespace korvex::ui
