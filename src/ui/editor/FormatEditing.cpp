#include "ui/editor/FormatEditing.h"

#include "richtext/code/CodeSyntax.h"
#include "richtext/text/Formatting.h"
#include "ui/editor/ListEditing.h"
#include "ui/editor/RichTextRuns.h"
#include "ui/kit/words/Text.h"
#include "ui/text/DrawnLists.h"
#include "ui/text/TextSelection.h"

#include <QTextEdit>

namespace korvex::ui {

namespace {

using richtext::CharacterAttributes;
using richtext::CodeKind;
using richtext::CodeSyntax;
using richtext::HeadingLevel;
using richtext::LineStyle;
using richtext::ParagraphKind;
using richtext::ParagraphStyle;

bool isBlockCode(const CharacterAttributes& attributes) {
    return attributes.korvexCodeBlock;
}

ParagraphKind kindOf(const QTextBlock& block) {
    ParagraphKind kind;
    for (auto it = block.begin(); !it.atEnd(); ++it) {
        kind.add(attributesOf(it.fragment().charFormat()));
    }
    kind.add(attributesOf(block.charFormat()));
    return kind;
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
    const auto isOn =
        isEverywhere(m_edit.textCursor(), [&](const auto& each) { return has(each, emphasis); });
    const auto edit = isOn ? remove : add;
    editSelection([&](CharacterAttributes& attributes) { edit(attributes, emphasis); });
}

void FormatEditing::toggleInlineCode() {
    const auto cursor = m_edit.textCursor();
    const auto isOn = isEverywhere(cursor, [](const auto& each) { return countsAsCode(each); });
    const auto level = headingOf(m_edit.document()->findBlock(startOf(cursor)));
    editSelection([&](CharacterAttributes& attributes) {
        if (isOn && isInlineCode(attributes)) {
            removeCode(attributes, level);
        } else if (!isOn && !countsAsCode(attributes)) {
            applyCode(attributes, CodeSyntax::kPlainText, CodeKind::inlineCode);
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
        [&](CharacterAttributes& attributes) { applyCode(attributes, language, CodeKind::block); },
        [](ParagraphStyle& style, ParagraphKind) { applyCodeBlock(style); });
}

void FormatEditing::setCodeLanguage(const std::string& language) {
    const auto cursor = m_edit.textCursor();
    const auto typed = typedAttributes(cursor);
    const auto edit = [&](CharacterAttributes& attributes) {
        applyCode(attributes, language,
                  attributes.korvexCodeBlock ? CodeKind::block : CodeKind::inlineCode);
    };
    if (!cursor.hasSelection() && countsAsCode(typed)) {
        // The whole piece of code has one language.
        auto run = runAround(cursor, [&](const CharacterAttributes& each) {
            return countsAsCode(each) && each.korvexCodeBlock == typed.korvexCodeBlock &&
                   CodeSyntax::language(each) == CodeSyntax::language(typed);
        });
        if (typed.korvexCodeBlock) {
            editParagraphs(run, edit, [](ParagraphStyle&, ParagraphKind) {});
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
        [&](CharacterAttributes& attributes) { applyHeading(level, attributes); },
        [&](ParagraphStyle& style, ParagraphKind former) { applyHeading(level, style, former); });
}

void FormatEditing::makeBodyText(const QTextCursor& range) {
    editParagraphs(
        range, [](CharacterAttributes& attributes) { applyBodyText(attributes); },
        [](ParagraphStyle& style, ParagraphKind former) { applyBodyText(style, former); });
}

void FormatEditing::clear() {
    editParagraphs(
        m_edit.textCursor(), [](CharacterAttributes& attributes) { clearFormats(attributes); },
        [](ParagraphStyle& style, ParagraphKind) { clearFormats(style); });
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
    DrawnLists lists(*range.document());
    for (const auto& block : blocksOf(range)) {
        const auto former = kindOf(block);
        QTextCursor content(block);
        content.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        if (content.hasSelection()) {
            changeAttributes(content, m_look, editEach);
        }
        auto atEnd = attributesOf(block.charFormat());
        editEach(atEnd);
        setEndAttributes(block, atEnd, m_look);

        auto style = paragraphStyleOf(block);
        editStyle(style, former);
        setParagraphStyle(block, style, m_look, lists);
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
