#include "ui/editor/FormatState.h"

#include "richtext/code/CodeSyntax.h"
#include "richtext/text/Formatting.h"
#include "ui/editor/RichTextRuns.h"
#include "ui/kit/words/Text.h"
#include "ui/text/TextSelection.h"

#include <utility>

namespace korvex::ui {

using richtext::CharacterAttributes;
using richtext::LineStyle;

FormatState formatStateOf(const QTextCursor& cursor) {
    FormatState state;
    const auto show = [&](const CharacterAttributes& each) {
        state.isBold = each.font.isBold;
        state.isItalic = each.font.isItalic;
        state.isUnderlined = each.underline != LineStyle::none;
        state.isStruckThrough = each.strikethrough != LineStyle::none;
    };
    auto first = typedAttributes(cursor);
    if (cursor.hasSelection()) {
        bool isFirst = true;
        isEverywhere(cursor, [&](const CharacterAttributes& each) {
            if (std::exchange(isFirst, false)) {
                first = each;
                show(each);
            }
            state.isBold = state.isBold && each.font.isBold;
            state.isItalic = state.isItalic && each.font.isItalic;
            state.isUnderlined = state.isUnderlined && each.underline != LineStyle::none;
            state.isStruckThrough = state.isStruckThrough && each.strikethrough != LineStyle::none;
            return state.isBold || state.isItalic || state.isUnderlined || state.isStruckThrough;
        });
    } else {
        show(first);
    }
    state.heading = richtext::headingLevel(first.font);
    state.isCode = countsAsCode(first);
    state.isCodeBlock = first.korvexCodeBlock;
    state.codeLanguage = toQString(richtext::CodeSyntax::language(first));
    state.list = listKindOf(cursor.document()->findBlock(startOf(cursor)));
    state.isInTable = cursor.currentTable() != nullptr;
    state.link = toQString(first.link);
    return state;
}

} // namespace korvex::ui
