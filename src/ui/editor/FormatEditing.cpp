#include "ui/editor/FormatEditing.h"

#include "ui/editor/ListEditing.h"
#include "ui/editor/RichTextRuns.h"
#include "ui/kit/Text.h"

#include <QTextEdit>

#include <utility>

namespace korvex::ui {

namespace {

using richtext::CharacterAttributes;
using richtext::CodeSyntax;
using richtext::FontFamily;
using richtext::HeadingLevel;
using richtext::LineStyle;
using richtext::ParagraphStyle;

void makeCode(CharacterAttributes& attributes, std::string_view language, bool isBlock) {
    const auto code = CodeSyntax::attributes(language, isBlock);
    attributes.font.family = code.font.family;
    attributes.font.size = code.font.size;
    attributes.korvexCodeLanguage = code.korvexCodeLanguage;
    attributes.korvexCodeBlock = code.korvexCodeBlock;
}

void removeCode(CharacterAttributes& attributes) {
    attributes.font.family = FontFamily::system;
    attributes.korvexCodeLanguage.clear();
    attributes.korvexCodeBlock = false;
}

bool isBlockCode(const CharacterAttributes& attributes) {
    return attributes.korvexCodeBlock;
}

bool has(const CharacterAttributes& attributes, Emphasis emphasis) {
    switch (emphasis) {
    case Emphasis::bold:
        return attributes.font.isBold;
    case Emphasis::italic:
        return attributes.font.isItalic;
    case Emphasis::underline:
        return attributes.underline != LineStyle::none;
    case Emphasis::strikethrough:
        return attributes.strikethrough != LineStyle::none;
    }
    return false;
}

void add(CharacterAttributes& attributes, Emphasis emphasis) {
    switch (emphasis) {
    case Emphasis::bold:
        attributes.font.isBold = true;
        break;
    case Emphasis::italic:
        attributes.font.isItalic = true;
        break;
    case Emphasis::underline:
        attributes.underline = LineStyle::single;
        break;
    case Emphasis::strikethrough:
        attributes.strikethrough = LineStyle::single;
        break;
    }
}

void remove(CharacterAttributes& attributes, Emphasis emphasis) {
    switch (emphasis) {
    case Emphasis::bold:
        // A heading is bold by what it is.
        attributes.font.isBold = richtext::headingLevel(attributes.font).has_value();
        break;
    case Emphasis::italic:
        attributes.font.isItalic = false;
        break;
    case Emphasis::underline:
        attributes.underline = LineStyle::none;
        break;
    case Emphasis::strikethrough:
        attributes.strikethrough = LineStyle::none;
        break;
    }
}

} // namespace

void FormatEditing::toggle(Emphasis emphasis) {
    const auto isOn = isEverywhere(
        m_edit.textCursor(), [&](const CharacterAttributes& each) { return has(each, emphasis); });
    editSelection(
        [&](CharacterAttributes& attributes) { (isOn ? remove : add)(attributes, emphasis); });
}

void FormatEditing::toggleInlineCode() {
    const auto cursor = m_edit.textCursor();
    const auto isOn = isEverywhere(cursor, [](const auto& each) { return isCode(each); });
    const auto level = headingOf(m_edit.document()->findBlock(cursor.selectionStart()));
    editSelection([&](CharacterAttributes& attributes) {
        if (isOn && isInlineCode(attributes)) {
            attributes = withoutCode(attributes, level);
        } else if (!isOn && !isCode(attributes)) {
            makeCode(attributes, CodeSyntax::kPlainText, false);
        }
    });
}

void FormatEditing::toggleCodeBlock() {
    const auto cursor = m_edit.textCursor();
    if (isEverywhere(cursor, isBlockCode)) {
        makeBodyText(cursor.hasSelection() ? cursor : runAround(cursor, isBlockCode));
    } else {
        makeCodeBlock(cursor, std::string(CodeSyntax::kAutomatic));
    }
}

void FormatEditing::makeCodeBlock(const QTextCursor& range, const std::string& language) {
    editParagraphs(
        range,
        [&](CharacterAttributes& attributes) {
            attributes = CodeSyntax::attributes(language, true);
            attributes.foreground.reset();
            attributes.background.reset();
        },
        [](ParagraphStyle& style) {
            style = {.direction = style.direction,
                     .lineSpacing = CodeSyntax::kBlockLineSpacing,
                     .cells = style.cells};
        });
}

void FormatEditing::setCodeLanguage(const std::string& language) {
    const auto cursor = m_edit.textCursor();
    const auto typed = typedAttributes(cursor);
    const auto edit = [&](CharacterAttributes& attributes) {
        makeCode(attributes, language, attributes.korvexCodeBlock);
    };
    if (!cursor.hasSelection() && isCode(typed)) {
        // The whole piece of code has one language.
        auto run = runAround(cursor, [&](const CharacterAttributes& each) {
            return isCode(each) && each.korvexCodeBlock == typed.korvexCodeBlock &&
                   languageOf(each) == languageOf(typed);
        });
        if (typed.korvexCodeBlock) {
            editParagraphs(run, edit, [](ParagraphStyle&) {});
        } else if (run.hasSelection()) {
            changeAttributes(run, m_look, edit);
            editSelection(edit);
        } else {
            editSelection(edit);
        }
    } else if (cursor.hasSelection() && !isEverywhere(cursor, isBlockCode) &&
               blocksOf(cursor).size() == 1) {
        editSelection(edit);
    } else {
        makeCodeBlock(cursor, language);
    }
}

void FormatEditing::setHeading(std::optional<HeadingLevel> level) {
    editParagraphs(
        m_edit.textCursor(),
        [&](CharacterAttributes& attributes) {
            if (isInlineCode(attributes)) {
                return; // keeps its own font, in a heading too
            }
            const auto isItalic = attributes.font.isItalic;
            removeCode(attributes);
            attributes.font = level ? richtext::fontOf(*level) : richtext::Font();
            attributes.font.isItalic = isItalic;
        },
        [&](ParagraphStyle& style) {
            style.spacingBefore = level ? richtext::spacingBeforeOf(*level) : 0;
            style.lineSpacing = 0;
        });
}

void FormatEditing::makeBodyText(const QTextCursor& range) {
    editParagraphs(
        range,
        [](CharacterAttributes& attributes) {
            if (attributes.korvexCodeBlock) {
                removeCode(attributes);
            }
            if (richtext::headingLevel(attributes.font)) {
                attributes.font = {.isItalic = attributes.font.isItalic};
            }
        },
        [](ParagraphStyle& style) {
            style.spacingBefore = 0;
            style.lineSpacing = 0;
        });
}

void FormatEditing::clear() {
    editParagraphs(
        m_edit.textCursor(),
        [](CharacterAttributes& attributes) {
            attributes = {.link = std::exchange(attributes.link, {})};
        },
        [](ParagraphStyle& style) {
            style = {.direction = style.direction, .cells = style.cells};
        });
}

void FormatEditing::setLink(const QString& target) {
    const auto link = toUtf8(target);
    auto cursor = m_edit.textCursor();
    auto typed = typedAttributes(cursor);
    if (!cursor.hasSelection() && typed.link.empty()) {
        typed.link = link;
        cursor.insertText(target, charFormatOf(typed, m_look));
        m_edit.setTextCursor(cursor);
        return;
    }
    if (!cursor.hasSelection()) {
        cursor = runAround(cursor, [&](const auto& each) { return each.link == typed.link; });
    }
    changeAttributes(cursor, m_look, [&](CharacterAttributes& each) { each.link = link; });
}

void FormatEditing::editSelection(const AttributesEdit& edit) {
    auto cursor = m_edit.textCursor();
    if (cursor.hasSelection()) {
        changeAttributes(cursor, m_look, edit);
    } else {
        editTyped(edit);
    }
}

void FormatEditing::editParagraphs(const QTextCursor& range, const AttributesEdit& editEach,
                                   const StyleEdit& editStyle) {
    auto whole = range;
    whole.beginEditBlock();
    for (const auto& block : blocksOf(range)) {
        QTextCursor content(block);
        content.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        if (content.hasSelection()) {
            changeAttributes(content, m_look, editEach);
        }
        auto atEnd = attributesOf(block.charFormat());
        editEach(atEnd);
        setEndAttributes(block, atEnd, m_look);

        auto style = paragraphStyleOf(block);
        editStyle(style);
        setParagraphStyle(block, style, m_look);
    }
    whole.endEditBlock();
    if (!m_edit.textCursor().hasSelection()) {
        editTyped(editEach);
    }
}

void FormatEditing::editTyped(const AttributesEdit& edit) {
    auto typed = typedAttributes(m_edit.textCursor());
    edit(typed);
    m_edit.setCurrentCharFormat(charFormatOf(typed, m_look));
}

} // namespace korvex::ui
