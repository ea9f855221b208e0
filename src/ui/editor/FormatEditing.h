#pragma once

#include "richtext/text/Formatting.h"
#include "richtext/text/HeadingLevel.h"
#include "richtext/text/ParagraphStyle.h"

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
    /// Makes a code block of the paragraphs, or body text of a code block: from a caret in one, of
    /// all of it.
    void toggleCodeBlock();
    /// A caret in code stands for the whole piece of code. What is no code becomes a code block.
    void setCodeLanguage(const std::string& language);
    /// Without a level the paragraphs become body text.
    void setHeading(std::optional<richtext::HeadingLevel> level);
    /// The paragraphs that the range touches are neither headings nor code blocks afterwards; what
    /// else is bold, a link or inline code stays so.
    void makeBodyText(const QTextCursor& range);
    /// Takes away headings, code, lists and emphasis; links stay.
    void clear();
    /// The selection, or the link that the caret stands in, leads to the target; an empty one takes
    /// the link away. Where there is neither, the target itself is inserted as a link.
    void setLink(const QString& target);

private:
    using AttributesEdit = std::function<void(richtext::CharacterAttributes&)>;
    using StyleEdit = std::function<void(richtext::ParagraphStyle&, richtext::ParagraphKind)>;

    void makeCodeBlock(const QTextCursor& range, const std::string& language);
    /// Changes what is selected, or what is typed next.
    void editSelection(const AttributesEdit& edit);
    /// Changes the whole of each paragraph that the range touches, and what is typed next.
    void editParagraphs(const QTextCursor& range, const AttributesEdit& editEach,
                        const StyleEdit& editStyle);
    void editTyped(const AttributesEdit& edit);

    QTextEdit& m_edit;
    const TextLook& m_look;
};

} // namespace korvex::ui
