#include "cli/output/ReadableText.h"

#include "base/Utf16.h"

#include <gtest/gtest.h>

#include <memory>

namespace korvex::tests {
namespace {

using richtext::AttributedString;
using richtext::ParagraphStyle;
using richtext::TextList;
using richtext::TextListRef;
using richtext::TextTable;
using richtext::TextTableCell;
using richtext::TextTableRef;

TextListRef list(std::u16string marker, std::int32_t start = 1) {
    return std::make_shared<const TextList>(TextList{.marker = std::move(marker), .start = start});
}

/// A text in the making.
class Written {
public:
    Written& line(std::string_view text, const ParagraphStyle& style = {}) {
        m_text.append(base::utf16(text) + u"\n", {}, style);
        return *this;
    }
    Written& items(const std::vector<TextListRef>& lists, std::vector<std::string_view> texts) {
        for (const auto text : texts) {
            line(text, {.lists = lists});
        }
        return *this;
    }
    /// A cell for each text; a line feed within one begins another paragraph of it.
    Written& row(const TextTableRef& table, std::int32_t row, std::vector<std::string_view> texts) {
        std::int32_t column = 0;
        for (const auto text : texts) {
            const auto cell = std::make_shared<const TextTableCell>(
                TextTableCell{.table = table, .row = row, .column = column++});
            line(text, {.cells = {cell}});
        }
        return *this;
    }
    std::string read() const { return cli::readableText(m_text); }

private:
    AttributedString m_text;
};

TextTableRef table() {
    return std::make_shared<const TextTable>(TextTable{.columns = 2});
}

TEST(ReadableText, LinesStayAsTheyAre) {
    EXPECT_EQ(cli::readableText({}), "");
    EXPECT_EQ(cli::readableText(AttributedString(u"one")), "one");
    EXPECT_EQ(cli::readableText(AttributedString(u"one\n")), "one");
    EXPECT_EQ(cli::readableText(AttributedString(u"\none\n\n two")), "\none\n\n two");
    EXPECT_EQ(cli::readableText(AttributedString(u"a\u2028b")), "a\nb");
}

TEST(ReadableText, ItemsCountWithinTheirOwnList) {
    const auto outer = list(u"{decimal}.");
    const auto inner = list(u"({lower-alpha})");
    const auto next = list(u"{upper-roman}", 8);
    const auto bullets = list(u"{disc}");
    Written text;
    text.items({outer}, {"one", "two"})
        .items({outer, inner}, {"inside", "still"})
        .line("between")
        .items({outer}, {"three"})
        .items({next}, {"eight", "nine"})
        .items({bullets}, {"", "dot"});
    EXPECT_EQ(text.read(), "1. one\n"
                           "2. two\n"
                           "  (a) inside\n"
                           "  (b) still\n"
                           "between\n"
                           "3. three\n"
                           "VIII eight\n"
                           "IX nine\n"
                           "• \n"
                           "• dot");
}

TEST(ReadableText, RowsAreLinesWithAlignedCells) {
    const auto first = table();
    const auto second = table();
    Written text;
    text.line("before")
        .row(first, 0, {"day", "plan"})
        .row(first, 1, {"明日", "a\u2028b"})
        .row(first, 2, {"", "two\nparagraphs"})
        .row(second, 2, {"another", "table"})
        .line("after");
    EXPECT_EQ(text.read(), "before\n"
                           "day  | plan\n"
                           "明日 | a b\n"
                           "     | two paragraphs\n"
                           "another | table\n"
                           "after");
}

TEST(ReadableText, OneLongCellDoesNotWidenAllOthers) {
    const auto wide = table();
    const std::string longText(9'000, 'x');
    Written text;
    text.row(wide, 0, {longText, "a"});
    std::string expected = longText + " | a";
    for (std::int32_t row = 1; row < 100; ++row) {
        text.row(wide, row, {"b", "c"});
        expected += "\nb" + std::string(39, ' ') + " | c";
    }
    EXPECT_EQ(text.read(), expected);
}

} // namespace
} // namespace korvex::tests
