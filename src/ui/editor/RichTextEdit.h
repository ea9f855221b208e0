#pragma once

#include "richtext/text/AttributedString.h"
#include "richtext/text/RichTextCommand.h"

#include <QTextEdit>

#include <functional>
#include <memory>
#include <optional>

class QMenu;

namespace korvex::ui {

struct TextLook;

/// What the selection, or what is typed at the caret, looks like; the controls show it.
struct FormatState {
    enum class List { none, bulleted, numbered, other };

    std::optional<richtext::HeadingLevel> heading;
    bool isBold = false;
    bool isItalic = false;
    bool isUnderlined = false;
    bool isStruckThrough = false;
    /// Inline code or a block; then `codeLanguage` is its identifier.
    bool isCode = false;
    bool isCodeBlock = false;
    QString codeLanguage;
    List list = List::none;
    bool isInTable = false;
    QString link;

    bool operator==(const FormatState&) const = default;
};

/// The formatted text under edit. Knows the entry's limits, the keys and what they do to lists,
/// code and tables; nothing of entries. Main thread.
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

    /// Over the selection, or the link that the caret stands in; empty: takes it away. Without a
    /// selection and a link the target itself is inserted.
    void setLink(const QString& target);
    /// `marker` as TextList has it; the same marker again ends the list.
    void toggleList(const QString& marker);
    void insertTable(int rows, int columns);
    /// In the place of the selection. False, and announced, when the entry would be too long.
    bool insert(const richtext::AttributedString& text);

    /// Whether this may take the place of the selection; a refusal is announced.
    bool allows(QStringView replacement);
    /// The same of the characters between two positions of the document.
    bool allowsReplacing(int from, int to, QStringView replacement);
    const FormatState& formatState() const { return m_state; }
    /// Commands on the text; the caller owns the menu.
    QMenu* makeMenu();

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
    /// Out of the text, up (-1) or down (1).
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
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;
    QMimeData* createMimeDataFromSelection() const override;

private:
    using AttributesTest = std::function<bool(const richtext::CharacterAttributes&)>;
    using AttributesEdit = std::function<void(richtext::CharacterAttributes&)>;
    using AttributesSwitch = std::function<void(richtext::CharacterAttributes&, bool isOn)>;
    using StyleEdit = std::function<void(richtext::ParagraphStyle&)>;

    bool isWithinKnownRoom(qsizetype added) const;
    /// What of the document lies before the viewport, to the left and above.
    QPointF scrolled() const;

    // RichTextKeys.cpp
    void addShortcuts();
    bool handledAsStructure(const QKeyEvent& event);
    bool handledAsMovement(const QKeyEvent& event);
    /// The caret does not stay where it could not be seen, unless it has come to the end.
    void passHiddenParagraph(const QKeyEvent& event);
    void handleReturn(Qt::KeyboardModifiers modifiers);
    bool leftByReturn(const QTextBlock& block);
    void leaveCodeBlock();
    bool handleBackspace();
    void handleTab();
    bool handleBacktab();
    void indentCode();
    void unindentCode();
    bool leadsOut(int direction) const;

    // RichTextPasting.cpp
    void pastePlainText();
    void insertPasted(const richtext::AttributedString& text);

    // RichTextFormats.cpp
    void toggle(const AttributesTest& isOn, const AttributesSwitch& set);
    void toggleInlineCode();
    void toggleCodeBlock();
    void makeCodeBlock(const QTextCursor& range, const std::string& language);
    void setCodeLanguage(const std::string& language);
    void setHeading(std::optional<richtext::HeadingLevel> level);
    /// Neither heading nor code; what is bold or a link stays so.
    void makeBodyText(const QTextCursor& range);
    void clearToBodyText();
    /// Of the selection; of a caret what is typed next.
    void editSelection(const AttributesEdit& edit);
    /// Whole paragraphs, those that the range touches.
    void editParagraphs(const QTextCursor& range, const AttributesEdit& editEach,
                        const StyleEdit& editStyle);
    void setTypingAttributes(const richtext::CharacterAttributes& attributes);
    richtext::CharacterAttributes typingAttributes() const;

    // RichTextLists.cpp
    void setStyle(const QTextBlock& block, const richtext::ParagraphStyle& style);
    void editLists(const QTextCursor& range,
                   const std::function<void(const QTextBlock&, richtext::ParagraphStyle&)>& edit);
    /// Deeper (1) or less deep (-1). False where there is no list.
    bool nest(int direction);
    void leaveLists(const QTextCursor& range);
    static FormatState::List listKindOf(const QTextBlock& block);

    // RichTextState.cpp
    bool isEverywhere(const AttributesTest& test) const;
    QTextCursor runAround(const QTextCursor& caret, const AttributesTest& test) const;
    /// Typing beside a link or inline code is not part of it.
    void stepOutOfRuns();
    void updateState();
    FormatState computedState() const;

    std::unique_ptr<TextLook> m_look;
    FormatState m_state;
    /// How many characters can be added at least before all must be counted again.
    std::ptrdiff_t m_knownRoom = 0;
};

} // namespace korvex::ui
