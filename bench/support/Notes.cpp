#include "support/Notes.h"

#include "richtext/code/CodeSyntax.h"
#include "richtext/table/RichTextTable.h"
#include "richtext/text/HeadingLevel.h"

namespace korvex::bench {

namespace {

richtext::AttributedString note(std::size_t number) {
    using namespace richtext;
    const auto list = std::make_shared<TextList>(TextList{.marker = u"{disc}"});
    AttributedString text;
    text.append(u"Notes of the meeting\n", {.font = fontOf(HeadingLevel::level2)},
                {.spacingBefore = spacingBeforeOf(HeadingLevel::level2)});
    text.append(u"What was said is in the ", {}, {});
    text.append(u"minutes", {.link = "https://example.org/" + std::to_string(number)}, {});
    text.append(u", what is to be done is ", {}, {});
    text.append(u"decided", {.font = {.isBold = true}}, {});
    text.append(u" and stands here, so that nobody has to look for it in a hurry.\n", {}, {});
    text.append(u"Call the printer\nBook the room for the next time\nSend the drafts around\n", {},
                {.lists = {list}});
    if (number % 10 == 0) {
        text.append(u"for (int i = 0; i < 10; ++i) {\n    print(i);\n}\n",
                    CodeSyntax::attributes("cpp", richtext::CodeKind::block),
                    {.lineSpacing = richtext::kCodeBlockLineSpacing});
        text.append(RichTextTable::make(3, 3));
    }
    return text;
}

} // namespace

void addNotes(OpenStore& store, model::Board& board, std::size_t count) {
    auto entries = store.entries();
    for (std::size_t i = 0; i < count; ++i) {
        entries.createText({.rich = note(i), .board = board, .now = kNow});
    }
}

} // namespace korvex::bench
