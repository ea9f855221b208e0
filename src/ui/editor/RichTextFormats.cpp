#include "ui/editor/RichTextEdit.h"

#include "ui/editor/RichTextRuns.h"
#include "ui/editor/TableEditing.h"
#include "ui/kit/Text.h"

namespace korvex::ui {

namespace {

using richtext::CharacterAttributes;
using richtext::CodeKind;
using richtext::CodeSyntax;
using richtext::HeadingLevel;
using richtext::LineStyle;
using richtext::ParagraphStyle;
using Kind = richtext::RichTextAction::Kind;

bool isBlockCode(const CharacterAttributes& attributes) {
    return attributes.korvexCodeBlock;
}

} // namespace

void RichTextEdit::perform(const richtext::RichTextCommand& command) {
    const auto& action = command.action;
    switch (action.kind) {
    case Kind::heading:
        setHeading(action.headingLevel());
        break;
    case Kind::codeLanguage:
        setCodeLanguage(action.languageId());
        break;
    case Kind::codeBlock:
        toggleCodeBlock();
        break;
    case Kind::table:
        Q_EMIT tableRequested();
        break;
    case Kind::link:
        Q_EMIT linkRequested();
        break;
    case Kind::normalText:
        clearToBodyText();
        break;
    case Kind::bold:
        // A heading is bold by what it is.
        toggle([](const auto& each) { return each.font.isBold; },
               [](auto& each, bool isOn) {
                   each.font.isBold = isOn || richtext::headingLevel(each.font);
               });
        break;
    case Kind::italic:
        toggle([](const auto& each) { return each.font.isItalic; },
               [](auto& each, bool isOn) { each.font.isItalic = isOn; });
        break;
    case Kind::underline:
        toggle([](const auto& each) { return each.underline != LineStyle::none; },
               [](auto& each, bool isOn) {
                   each.underline = isOn ? LineStyle::single : LineStyle::none;
               });
        break;
    case Kind::strikethrough:
        toggle([](const auto& each) { return each.strikethrough != LineStyle::none; },
               [](auto& each, bool isOn) {
                   each.strikethrough = isOn ? LineStyle::single : LineStyle::none;
               });
        break;
    case Kind::code:
        toggleInlineCode();
        break;
    case Kind::lists:
        Q_EMIT listsRequested();
        break;
    case Kind::tableRow:
        TableEditing(*this).perform(TableAction::insertRowBelow);
        break;
    case Kind::tableColumn:
        TableEditing(*this).perform(TableAction::insertColumnRight);
        break;
    case Kind::deleteTable:
        TableEditing(*this).deleteTable();
        break;
    }
}

void RichTextEdit::toggle(const AttributesTest& isOn, const AttributesSwitch& set) {
    const bool on = !isEverywhere(isOn);
    editSelection([&](CharacterAttributes& attributes) { set(attributes, on); });
}

void RichTextEdit::toggleInlineCode() {
    const bool isOn = isEverywhere([](const auto& each) { return countsAsCode(each); });
    const auto level = headingOf(document()->findBlock(textCursor().selectionStart()));
    editSelection([&](CharacterAttributes& attributes) {
        if (isOn && isInlineCode(attributes)) {
            removeCode(attributes, level);
        } else if (!isOn && !countsAsCode(attributes)) {
            applyCode(attributes, CodeSyntax::kPlainText, CodeKind::inlineCode);
        }
    });
}

void RichTextEdit::toggleCodeBlock() {
    const auto cursor = textCursor();
    if (isEverywhere(isBlockCode)) {
        makeBodyText(cursor.hasSelection() ? cursor : runAround(cursor, isBlockCode));
    } else {
        makeCodeBlock(cursor, std::string(CodeSyntax::kAutomatic));
    }
}

void RichTextEdit::makeCodeBlock(const QTextCursor& range, const std::string& language) {
    editParagraphs(
        range,
        [&](CharacterAttributes& attributes) { applyCode(attributes, language, CodeKind::block); },
        [](ParagraphStyle& style) { applyCodeBlock(style); });
}

void RichTextEdit::setCodeLanguage(const std::string& language) {
    const auto cursor = textCursor();
    const auto typed = typingAttributes();
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
            editParagraphs(run, edit, [](ParagraphStyle&) {});
        } else if (run.hasSelection()) {
            changeAttributes(run, look(), edit);
            editSelection(edit);
        } else {
            editSelection(edit);
        }
    } else if (cursor.hasSelection() && !isEverywhere(isBlockCode) &&
               blocksOf(cursor).size() == 1) {
        editSelection(edit);
    } else {
        makeCodeBlock(cursor, language);
    }
}

void RichTextEdit::setHeading(std::optional<HeadingLevel> level) {
    editParagraphs(
        textCursor(), [&](CharacterAttributes& attributes) { applyHeading(level, attributes); },
        [&](ParagraphStyle& style) { applyHeading(level, style); });
}

void RichTextEdit::makeBodyText(const QTextCursor& range) {
    editParagraphs(
        range, [](CharacterAttributes& attributes) { applyBodyText(attributes); },
        [](ParagraphStyle& style) { applyBodyText(style); });
}

void RichTextEdit::clearToBodyText() {
    editParagraphs(
        textCursor(), [](CharacterAttributes& attributes) { clearFormats(attributes); },
        [](ParagraphStyle& style) { clearFormats(style); });
}

void RichTextEdit::setLink(const QString& target) {
    const auto link = toUtf8(target);
    auto cursor = textCursor();
    auto attributes = typingAttributes();
    if (!cursor.hasSelection() && attributes.link.empty()) {
        if (!link.empty() && allows(target)) {
            attributes.link = link;
            cursor.insertText(target, charFormatOf(attributes, look()));
            setTextCursor(cursor);
            stepOutOfRuns();
        }
        return;
    }
    if (!cursor.hasSelection()) {
        cursor = runAround(cursor, [&](const auto& each) { return each.link == attributes.link; });
    }
    changeAttributes(cursor, look(), [&](CharacterAttributes& each) { each.link = link; });
    stepOutOfRuns();
    updateState();
}

void RichTextEdit::editSelection(const AttributesEdit& edit) {
    auto cursor = textCursor();
    if (cursor.hasSelection()) {
        changeAttributes(cursor, look(), edit);
    } else {
        auto attributes = typingAttributes();
        edit(attributes);
        setTypingAttributes(attributes);
    }
    updateState();
}

void RichTextEdit::editParagraphs(const QTextCursor& range, const AttributesEdit& editEach,
                                  const StyleEdit& editStyle) {
    auto whole = range;
    whole.beginEditBlock();
    for (const auto& block : blocksOf(range)) {
        QTextCursor content(block);
        content.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        if (content.hasSelection()) {
            changeAttributes(content, look(), editEach);
        }
        auto atEnd = attributesOf(block.charFormat());
        editEach(atEnd);
        setEndAttributes(block, atEnd, look());

        auto style = styleOf(block.blockFormat());
        style.lists = listsOf(block);
        editStyle(style);
        setStyle(block, style);
    }
    whole.endEditBlock();
    if (!textCursor().hasSelection()) {
        auto typed = typingAttributes();
        editEach(typed);
        setTypingAttributes(typed);
    }
    updateState();
}

void RichTextEdit::setTypingAttributes(const CharacterAttributes& attributes) {
    setCurrentCharFormat(charFormatOf(attributes, look()));
}

CharacterAttributes RichTextEdit::typingAttributes() const {
    return attributesOf(textCursor().charFormat());
}

} // namespace korvex::ui
