#include "ui/editor/RichTextRuns.h"

#include "richtext/code/CodeSyntax.h"
#include "richtext/text/Formatting.h"
#include "ui/text/TextSelection.h"

#include <QTextTable>

#include <algorithm>

namespace korvex::ui {

using richtext::CharacterAttributes;
using richtext::CodeSyntax;

namespace {

/// Calls `visit(start, end, format)` with each stretch of the block that has one format, cut to the
/// range. False from `visit` ends it; false when it was ended.
template <typename Visit>
bool forEachStretch(const QTextBlock& block, int from, int to, Visit&& visit) {
    for (auto it = block.begin(); !it.atEnd(); ++it) {
        const auto fragment = it.fragment();
        const auto start = std::max(fragment.position(), from);
        const auto end = std::min(fragment.position() + fragment.length(), to);
        if (start < end && !visit(start, end, fragment.charFormat())) {
            return false;
        }
    }
    return true;
}

} // namespace

bool isSameCell(const QTextBlock& left, const QTextBlock& right) {
    const QTextCursor first(left);
    const QTextCursor second(right);
    auto* const table = first.currentTable();
    return first.currentFrame() == second.currentFrame() &&
           (!table || table->cellAt(first) == table->cellAt(second));
}

bool isBehindTable(const QTextBlock& block) {
    return block.isValid() && block.previous().isValid() && !QTextCursor(block).currentTable() &&
           QTextCursor(block.previous()).currentTable();
}

bool isHiddenBehindTable(const QTextBlock& block) {
    return isBehindTable(block) && isEmpty(block);
}

std::vector<QTextBlock> blocksOf(const QTextCursor& range) {
    const auto& document = *range.document();
    std::vector<QTextBlock> blocks;
    const auto end = range.selectionEnd();
    auto block = document.findBlock(startOf(range));
    do {
        blocks.push_back(block);
        block = block.next();
    } while (block.isValid() && block.position() < end);
    return blocks;
}

CharacterAttributes typedBesideRuns(const QTextCursor& caret) {
    auto wanted = typedAttributes(caret);
    const auto isTypedAsCode = isInlineCode(wanted);
    if (caret.hasSelection() || (wanted.link.empty() && !isTypedAsCode)) {
        return wanted;
    }
    std::optional<CharacterAttributes> before;
    std::optional<CharacterAttributes> after;
    const auto position = caret.position();
    forEachStretch(caret.block(), position - 1, position + 1,
                   [&](int start, int end, const QTextCharFormat& format) {
                       if (start < position) {
                           before = attributesOf(format);
                       }
                       if (end > position) {
                           after = attributesOf(format);
                       }
                       return true;
                   });
    const auto isBetween = before && after;
    if (!isBetween || before->link != after->link) {
        wanted.link.clear();
    }
    const auto isInCode = isBetween && isInlineCode(*before) && isInlineCode(*after) &&
                          CodeSyntax::language(*before) == CodeSyntax::language(*after);
    if (isTypedAsCode && !isInCode) {
        richtext::removeCode(wanted, headingOf(caret.block()));
    }
    return wanted;
}

bool isEverywhere(const QTextCursor& range, const AttributesTest& test) {
    if (!range.hasSelection()) {
        return test(typedAttributes(range));
    }
    bool hasText = false;
    const auto blocks = blocksOf(range);
    const auto start = startOf(range);
    for (const auto& block : blocks) {
        if (!forEachStretch(block, start, range.selectionEnd(),
                            [&](int, int, const QTextCharFormat& format) {
                                hasText = true;
                                return test(attributesOf(format));
                            })) {
            return false;
        }
    }
    // The ends of empty paragraphs speak for them.
    return hasText || test(attributesOf(blocks.front().charFormat()));
}

QTextCursor runAround(const QTextCursor& range, const AttributesTest& test) {
    const auto& document = *range.document();
    const auto first = document.findBlock(range.selectionStart());
    auto start = range.selectionStart();
    auto end = range.selectionEnd();
    // Both go on within one block, and say whether they reached its edge.
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
    for (auto block = document.findBlock(end); extendOn(block) && holdsAtEnd(block);) {
        block = block.next();
        if (!holdsAtEnd(block) || !isSameCell(block, first)) {
            break;
        }
        end = block.position();
    }
    auto run = range;
    run.setPosition(start);
    run.setPosition(end, QTextCursor::KeepAnchor);
    return run;
}

} // namespace korvex::ui
