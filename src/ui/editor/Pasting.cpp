#include "ui/editor/Pasting.h"

#include "richtext/code/CodeSyntax.h"
#include "richtext/table/TableLayout.h"
#include "richtext/text/AttributedStringBuilder.h"
#include "richtext/text/Formatting.h"
#include "richtext/text/ListIndents.h"
#include "ui/editor/ListEditing.h"
#include "ui/editor/RichTextRuns.h"
#include "ui/text/TextSelection.h"

#include <QTextTable>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace korvex::ui {

namespace {

using richtext::AttributedString;
using richtext::CharacterAttributes;
using richtext::CodeKind;
using richtext::CodeSyntax;
using richtext::HeadingLevel;
using richtext::ParagraphStyle;
using richtext::TextListRef;
using richtext::TextRange;

/// What takes the place of a selection is typed like its first character, in the place of a table
/// like body text.
CharacterAttributes typedInPlaceOf(const QTextCursor& place) {
    if (!place.hasSelection()) {
        return typedAttributes(place);
    }
    if (tableLeftBy(place)) {
        return {};
    }
    QTextCursor first(place.document()->findBlock(place.selectionStart()));
    first.setPosition(place.selectionStart());
    if (!first.atBlockEnd()) {
        first.movePosition(QTextCursor::NextCharacter);
    }
    return typedAttributes(first);
}

/// What the words of a line in a code block look like; absent where the block is in none.
std::optional<CharacterAttributes> codeOf(const QTextBlock& block) {
    if (!isCodeBlock(block)) {
        return std::nullopt;
    }
    const auto first = block.begin();
    const auto attributes =
        attributesOf(first.atEnd() ? block.charFormat() : first.fragment().charFormat());
    return CodeSyntax::attributes(CodeSyntax::language(attributes), CodeKind::block);
}

bool endsWithLine(const AttributedString& text) {
    return text.text().ends_with(u'\n');
}

/// Whether the text goes into this code and touches nothing else: what is longer than a line must
/// not become code, or one line, because the first of many words that it replaces is code.
bool goesInto(const CharacterAttributes& code, const AttributedString& text,
              const QTextCursor& place) {
    if (!code.isCode() || !place.hasSelection()) {
        return code.isCode();
    }
    const auto last = place.document()->findBlock(place.selectionEnd());
    auto blocks = blocksOf(place);
    if (!endsWithLine(text)) {
        blocks.push_back(last);
    }
    if (code.korvexCodeBlock) {
        const auto first = codeOf(blocks.front());
        return first && std::all_of(blocks.begin(), blocks.end(), [&](const QTextBlock& block) {
                   return codeOf(block) == first;
               });
    }
    return blocks.front() == last && isEverywhere(place, [&](const CharacterAttributes& each) {
               return richtext::isInlineCode(each) &&
                      each.korvexCodeLanguage == code.korvexCodeLanguage;
           });
}

AttributedString asCode(const AttributedString& text, const CharacterAttributes& code,
                        const ParagraphStyle& style) {
    auto units = text.text();
    if (!code.korvexCodeBlock) {
        std::replace(units.begin(), units.end(), u'\n', u' ');
    }
    return AttributedString(units, code, style);
}

/// The same words, line by line, and no empty line after what was the last row.
AttributedString withoutTables(AttributedString text) {
    text.editStyles({0, text.length()}, [](ParagraphStyle& style) { style.cells.clear(); });
    const auto last = text.text().find_last_not_of(u'\n');
    const auto end = last == std::u16string::npos ? 0 : last + 1;
    text.remove({end, text.length() - end});
    return text;
}

bool isWithoutFormats(const AttributedString& text) {
    bool isPlain = true;
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        isPlain = isPlain && run.attributes == CharacterAttributes();
    });
    text.forEachStyleRun([&](const AttributedString::ParagraphRun& run) {
        isPlain = isPlain && run.style == ParagraphStyle();
    });
    return isPlain;
}

/// A paragraph that pasted words become a part of.
struct Line {
    ParagraphStyle style;
    std::optional<HeadingLevel> heading;
    std::optional<CharacterAttributes> code;

    /// Body text.
    Line() = default;
    explicit Line(const QTextBlock& block)
        : style(paragraphStyleOf(block)), heading(headingOf(block)), code(codeOf(block)) {}
};

class Fitting {
public:
    Fitting(const AttributedString& text, const QTextCursor& place, CharacterAttributes typed)
        : m_text(text),
          m_isPlain(isWithoutFormats(text)),
          m_typed(std::move(typed)),
          m_last(place.document()->findBlock(place.selectionEnd())) {
        const auto replacesTable = tableLeftBy(place) != nullptr;
        const auto first = place.document()->findBlock(place.selectionStart());
        if (!replacesTable) {
            m_first = Line(first);
            m_isFirstKept = isEmpty(first) || first.contains(place.selectionEnd());
        }
        m_bodyStyle = m_first.style;
        applyBodyText(m_bodyStyle, {.isHeading = m_first.heading.has_value(),
                                    .isCodeBlock = m_first.code.has_value()});
        if (!place.hasComplexSelection()) {
            QTextCursor edge(place);
            edge.setPosition(place.selectionStart());
            m_isBehindWords = !replacesTable && !edge.atBlockStart();
            edge.setPosition(place.selectionEnd());
            m_isBeforeWords = !edge.atBlockEnd();
        }
        if (text.text().find(u'\n') != std::u16string::npos) {
            m_typed.link.clear();
        }
    }

    AttributedString fitted() {
        m_builder.reserve(m_text.length());
        m_text.forEachParagraph([this](const AttributedString::ParagraphRun& paragraph) {
            write(paragraph.range, paragraph.style);
        });
        return m_builder.take();
    }

private:
    void write(TextRange range, const ParagraphStyle& ownStyle) {
        const auto* const line = lineOf(range, ownStyle);
        m_text.forEachRun(range, [&](const AttributedString::CharacterRun& run) {
            auto attributes = m_isPlain ? m_typed : run.attributes;
            if (line && line->code) {
                attributes = *line->code;
            } else {
                if (line) {
                    attributes.korvexCodeBlock = false; // it goes on as code in the line
                }
                if (line && line->heading) {
                    applyHeading(line->heading, attributes);
                } else if (line || m_isPlain) {
                    applyBodyText(attributes);
                }
            }
            m_builder.append(
                std::u16string_view(m_text.text()).substr(run.range.location, run.range.length),
                m_builder.idOf(attributes));
        });
        m_builder.endParagraph(m_builder.idOf(line ? line->style : styleBeside(range, ownStyle)));
    }

    /// The line that a pasted paragraph becomes a part of; null where it stays a paragraph.
    const Line* lineOf(TextRange range, const ParagraphStyle& style) const {
        const auto isFirst = range.location == 0;
        const auto isWhole = m_text.text()[range.end() - 1] == u'\n';
        if (!style.cells.empty()) {
            return nullptr;
        }
        if (isFirst && m_isBehindWords) {
            return &m_first;
        }
        if (!isWhole && m_isBeforeWords) {
            return &m_last;
        }
        // A line has its kind already, for what has none of its own, also when it lost its words.
        const auto kind = richtext::kindOf(m_text, range);
        const auto isBody = !kind.isHeading && !kind.isCodeBlock && style.lists.empty();
        const auto isEmptied = m_isFirstKept && !m_isBehindWords && !m_isBeforeWords;
        return isFirst && isEmptied && isBody && m_first.heading ? &m_first : nullptr;
    }

    /// The style of a paragraph that stays one.
    ParagraphStyle styleBeside(TextRange range, ParagraphStyle style) const {
        if (!style.cells.empty() || richtext::isCodeBlock(m_text, range)) {
            return style;
        }
        if (style == ParagraphStyle()) {
            return m_bodyStyle;
        }
        if (!m_first.style.lists.empty()) {
            style.lists = listsFor(style.lists);
            setListIndents(style);
        }
        return style;
    }

    std::vector<TextListRef> listsFor(const std::vector<TextListRef>& own) const {
        const auto& around = m_first.style.lists;
        if (own.empty()) {
            return around;
        }
        const auto same = std::find_if(around.rbegin(), around.rend(), [&](const auto& list) {
            return list->marker == own.front()->marker;
        });
        std::vector<TextListRef> lists(around.begin(), same.base());
        if (lists.empty() || lists.size() + own.size() - 1 > richtext::kMaximumListDepth) {
            return own;
        }
        lists.insert(lists.end(), own.begin() + 1, own.end());
        return lists;
    }

    const AttributedString& m_text;
    bool m_isPlain;
    CharacterAttributes m_typed;
    /// The paragraphs in which the selection begins and ends; where a whole table goes, what comes
    /// in its place begins anew.
    Line m_first;
    Line m_last;
    ParagraphStyle m_bodyStyle;
    /// The first paragraph was empty, or nothing but words of it goes.
    bool m_isFirstKept = false;
    bool m_isBehindWords = false;
    bool m_isBeforeWords = false;
    AttributedString::Builder m_builder;
};

} // namespace

AttributedString fitted(const AttributedString& text, const QTextCursor& place) {
    auto typed = typedInPlaceOf(place);
    if (goesInto(typed, text, place)) {
        typed.link.clear();
        return asCode(text, typed,
                      paragraphStyleOf(place.document()->findBlock(place.selectionStart())));
    }
    if (typed.isCode()) {
        richtext::removeCode(typed, std::nullopt);
    }
    const auto lines =
        place.currentTable() && richtext::containsTable(text) ? withoutTables(text) : text;
    return Fitting(lines, place, std::move(typed)).fitted();
}

} // namespace korvex::ui
