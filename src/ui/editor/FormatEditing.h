#pragma once

#include "richtext/text/Attributes.h"
#include "richtext/text/HeadingLevel.h"

#include <QString>

#include <functional>
#include <optional>
#include <string>

class QTextCursor;
class QTextEdit;

namespace korvex::ui {

struct TextLook;

enum class Emphasis { bold, italic, underline, strikethrough };

/// The commands on the formats of an editor's text. They change what is selected; without a
/// selection those on characters change what is typed next, and those on paragraphs the one at the
/// caret. Each is one step of undo. Main thread; editor and look must outlive it.
class FormatEditing final {
public:
    FormatEditing(QTextEdit& edit, const TextLook& look) : m_edit(edit), m_look(look) {}

    /// Takes it away where all of the selection has it. A heading stays bold, being a heading.
    void toggle(Emphasis emphasis);
    void toggleInlineCode();
    /// Of a caret in a code block, all of that becomes body text.
    void toggleCodeBlock();
    /// Of a caret in code, all of that piece of code is in this language. What is no code becomes
    /// a code block.
    void setCodeLanguage(const std::string& language);
    /// Absent: body text.
    void setHeading(std::optional<richtext::HeadingLevel> level);
    /// Neither heading nor code; what is bold or a link stays so. Of the paragraphs that the range
    /// touches.
    void makeBodyText(const QTextCursor& range);
    /// Neither heading, code, list nor emphasis; links stay.
    void clear();
    /// Over the selection, or the link that the caret stands in; empty: takes it away. Without a
    /// selection and a link the target itself is inserted.
    void setLink(const QString& target);

private:
    using AttributesEdit = std::function<void(richtext::CharacterAttributes&)>;
    using StyleEdit = std::function<void(richtext::ParagraphStyle&)>;

    void makeCodeBlock(const QTextCursor& range, const std::string& language);
    /// Of the selection; of a caret what is typed next.
    void editSelection(const AttributesEdit& edit);
    /// Whole paragraphs, those that the range touches.
    void editParagraphs(const QTextCursor& range, const AttributesEdit& editEach,
                        const StyleEdit& editStyle);
    void editTyped(const AttributesEdit& edit);

    QTextEdit& m_edit;
    const TextLook& m_look;
};

} // namespace korvex::ui
