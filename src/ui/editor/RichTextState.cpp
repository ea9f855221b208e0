#include "ui/editor/RichTextEdit.h"

#include "ui/editor/RichTextRuns.h"
#include "ui/kit/Text.h"

#include <QTextTable>

#include <utility>

namespace korvex::ui {

using richtext::CharacterAttributes;
using richtext::CodeSyntax;
using richtext::LineStyle;

bool isSameCell(const QTextBlock& left, const QTextBlock& right) {
    const QTextCursor first(left);
    const QTextCursor second(right);
    auto* const table = first.currentTable();
    return first.currentFrame() == second.currentFrame() &&
           (!table || table->cellAt(first) == table->cellAt(second));
}

std::vector<QTextBlock> blocksOf(const QTextCursor& range) {
    const auto& document = *range.document();
    std::vector<QTextBlock> blocks;
    const int end = range.selectionEnd();
    auto block = document.findBlock(range.selectionStart());
    do {
        blocks.push_back(block);
        block = block.next();
    } while (block.isValid() && block.position() < end);
    return blocks;
}

bool RichTextEdit::isEverywhere(const AttributesTest& test) const {
    const auto cursor = textCursor();
    if (!cursor.hasSelection()) {
        return test(typingAttributes());
    }
    bool hasText = false;
    for (const auto& block : blocksOf(cursor)) {
        if (!forEachStretch(block, cursor.selectionStart(), cursor.selectionEnd(),
                            [&](int, int, const QTextCharFormat& format) {
                                hasText = true;
                                return test(attributesOf(format));
                            })) {
            return false;
        }
    }
    // Of empty paragraphs their ends speak.
    return hasText ||
           test(attributesOf(document()->findBlock(cursor.selectionStart()).charFormat()));
}

/// The maximal stretch of characters around the caret or selection that the test holds for; over
/// the ends of paragraphs where it holds for both, within one cell.
QTextCursor RichTextEdit::runAround(const QTextCursor& caret, const AttributesTest& test) const {
    const auto first = document()->findBlock(caret.selectionStart());
    int start = caret.selectionStart();
    int end = caret.selectionEnd();
    // Of one block, from `at` on to either side; whether the block's edge was reached.
    const auto extendBack = [&](const QTextBlock& block) {
        forEachStretch(block, block.position(), start,
                       [&, from = block.position()](int, int stretchEnd,
                                                    const QTextCharFormat& format) mutable {
                           if (!test(attributesOf(format))) {
                               from = stretchEnd;
                           }
                           if (stretchEnd == start) {
                               start = from;
                               return false;
                           }
                           return true;
                       });
        return start == block.position();
    };
    const auto extendOn = [&](const QTextBlock& block) {
        return forEachStretch(block, end, block.position() + block.length(),
                              [&](int, int stretchEnd, const QTextCharFormat& format) {
                                  if (!test(attributesOf(format))) {
                                      return false;
                                  }
                                  end = stretchEnd;
                                  return true;
                              });
    };
    const auto holdsAtEnd = [&](const QTextBlock& block) {
        return block.isValid() && test(attributesOf(block.charFormat()));
    };
    for (auto block = first; extendBack(block);) {
        const auto previous = block.previous();
        if (!holdsAtEnd(previous) || !isSameCell(previous, first)) {
            break;
        }
        block = previous;
        start = block.position() + block.length() - 1;
    }
    for (auto block = document()->findBlock(end); extendOn(block) && holdsAtEnd(block);) {
        block = block.next();
        if (!holdsAtEnd(block) || !isSameCell(block, first)) {
            break;
        }
        end = block.position();
    }
    QTextCursor run(document());
    run.setPosition(start);
    run.setPosition(end, QTextCursor::KeepAnchor);
    return run;
}

void RichTextEdit::stepOutOfRuns() {
    const auto cursor = textCursor();
    const auto typed = typingAttributes();
    if (cursor.hasSelection() || (typed.link.empty() && !isInlineCode(typed))) {
        return;
    }
    std::optional<CharacterAttributes> before;
    std::optional<CharacterAttributes> after;
    const int position = cursor.position();
    forEachStretch(cursor.block(), position - 1, position + 1,
                   [&](int start, int end, const QTextCharFormat& format) {
                       if (start < position) {
                           before = attributesOf(format);
                       }
                       if (end > position) {
                           after = attributesOf(format);
                       }
                       return true;
                   });
    const bool isBetween = before && after;
    auto wanted = typed;
    if (!isBetween || before->link != after->link) {
        wanted.link.clear();
    }
    const bool isInCode = isBetween && isInlineCode(*before) && isInlineCode(*after) &&
                          CodeSyntax::language(*before) == CodeSyntax::language(*after);
    if (isInlineCode(typed) && !isInCode) {
        richtext::removeCode(wanted, headingOf(cursor.block()));
    }
    if (wanted != typed) {
        setTypingAttributes(wanted);
    }
}

void RichTextEdit::updateState() {
    auto state = computedState();
    if (state != m_state) {
        m_state = std::move(state);
        Q_EMIT formatStateChanged();
    }
}

FormatState RichTextEdit::computedState() const {
    const auto cursor = textCursor();
    auto first = typingAttributes();
    FormatState state;
    if (cursor.hasSelection()) {
        bool isFirst = true;
        bool isBold = true;
        bool isItalic = true;
        bool isUnderlined = true;
        bool isStruckThrough = true;
        isEverywhere([&](const CharacterAttributes& each) {
            if (std::exchange(isFirst, false)) {
                first = each;
            }
            isBold = isBold && each.font.isBold;
            isItalic = isItalic && each.font.isItalic;
            isUnderlined = isUnderlined && each.underline != LineStyle::none;
            isStruckThrough = isStruckThrough && each.strikethrough != LineStyle::none;
            // The rest is said of the first character.
            return isBold || isItalic || isUnderlined || isStruckThrough;
        });
        state.isBold = isBold;
        state.isItalic = isItalic;
        state.isUnderlined = isUnderlined;
        state.isStruckThrough = isStruckThrough;
    } else {
        state.isBold = first.font.isBold;
        state.isItalic = first.font.isItalic;
        state.isUnderlined = first.underline != LineStyle::none;
        state.isStruckThrough = first.strikethrough != LineStyle::none;
    }
    state.heading = richtext::headingLevel(first.font);
    state.isCode = countsAsCode(first);
    state.isCodeBlock = first.korvexCodeBlock;
    state.codeLanguage = toQString(CodeSyntax::language(first));
    state.list = listKindOf(document()->findBlock(cursor.selectionStart()));
    state.isInTable = cursor.currentTable() != nullptr;
    state.link = toQString(first.link);
    return state;
}

} // namespace korvex::ui
