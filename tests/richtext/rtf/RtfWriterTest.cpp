#include "richtext/rtf/RtfWriter.h"
#include "richtext/text/ListMarker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <tuple>

// What our own reader does not need, but others do.

namespace korvex::richtext {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string written(const AttributedString& text) {
    const auto bytes = writeRtf(text);
    return {bytes.begin(), bytes.end()};
}

TEST(RtfWriter, CountsTheItemsOfEachListForReadersThatShowTheirText) {
    const auto numbers = std::make_shared<TextList>(TextList{u"{lower-roman}.", 3});
    const auto letters = std::make_shared<TextList>(TextList{u"({upper-alpha})"});
    AttributedString text;
    text.append(u"a\n", {}, {.lists = {numbers}});
    text.append(u"b\nc\n", {}, {.lists = {numbers, letters}});
    text.append(u"between\n", {}, {});
    text.append(u"d\n", {}, {.lists = {numbers}});
    const auto rtf = written(text);
    for (const std::string_view item : {"\\listtext\tiii.\t}", "\\listtext\t(A)\t}",
                                        "\\listtext\t(B)\t}", "\\listtext\tiv.\t}"}) {
        EXPECT_THAT(rtf, HasSubstr(std::string(item)));
    }
    // One list of two levels, which other readers number together.
    EXPECT_THAT(rtf, HasSubstr("\\ls1\\ilvl1"));
    EXPECT_THAT(rtf, Not(HasSubstr("\\ls2")));
    EXPECT_THAT(rtf, HasSubstr("\\levelnfc3\\levelnfcn3"));
    EXPECT_THAT(rtf, HasSubstr("\\'03(\\'01);}{\\levelnumbers\\'02;}"));
}

TEST(RtfWriter, SaysWidthsAsEdgesToo) {
    const auto table = std::make_shared<TextTable>(TextTable{3});
    const auto cell = [&](std::int32_t row, std::int32_t column, std::optional<Twips> width) {
        const auto made = std::make_shared<TextTableCell>();
        made->table = table;
        made->row = row;
        made->column = column;
        made->geometry.width = width;
        made->geometry.padding = {160, 160, 160, 160};
        made->geometry.borders.fill({10, Color::named(SystemColor::separator)});
        return ParagraphStyle{.cells = {made}};
    };
    AttributedString text;
    text.append(u"a\n", {}, cell(0, 0, 3000));
    text.append(u"b\n", {}, cell(0, 1, std::nullopt));
    text.append(u"c\n", {}, cell(0, 2, 1000));
    text.append(u"d\n", {}, cell(1, 0, 3000));
    const auto rtf = written(text);
    EXPECT_THAT(rtf, HasSubstr("\\clwWidth3000\\clftsWidth3"));
    EXPECT_THAT(rtf, HasSubstr("\\cellx3212\n"));
    EXPECT_THAT(rtf, HasSubstr("\\cellx5612\n"));
    EXPECT_THAT(rtf, HasSubstr("\\cellx6932\n"));
    EXPECT_THAT(rtf, HasSubstr("\\taflags1"));
    EXPECT_THAT(rtf, HasSubstr("d\\cell \\lastrow\\row\n}"));
    EXPECT_THAT(rtf, HasSubstr("\\red217\\green217\\blue217;}"));
    EXPECT_THAT(rtf, HasSubstr("\\cssrgb\\c85098\\c85098\\c85098\\cname separatorColor;}"));
}

TEST(RtfWriter, WritesCharactersSoThatEveryReaderKnowsThem) {
    EXPECT_THAT(written(AttributedString(u"\u00E9\u20AC\U0001F680\u00A0{\\}\t")),
                HasSubstr(" \\'e9\\uc0\\u8364 \\u55357 \\u56960 \\'a0\\{\\\\\\}\t}"));
    const auto rtf = written(AttributedString(u"plain"));
    EXPECT_THAT(rtf, testing::StartsWith("{\\rtf1\\ansi\\ansicpg1252\\cocoartf"));
    EXPECT_THAT(rtf, HasSubstr("\\fcharset0 .SFNS-Regular;"));
    EXPECT_THAT(rtf, HasSubstr("\\fs26\\cf0 plain}"));
}

TEST(ListMarker, ShowsNumbersInEveryFormat) {
    using std::u16string;
    for (const auto& [marker, number, expected] : {
             std::tuple{u"{decimal}.", 12, u"12."},
             std::tuple{u"{decimal}", -3, u"-3"},
             std::tuple{u"{lower-alpha})", 26, u"z)"},
             std::tuple{u"{lower-alpha}", 27, u"aa"},
             std::tuple{u"{upper-alpha}", 703, u"AAA"},
             std::tuple{u"{upper-alpha}", 0, u"0"},
             std::tuple{u"{lower-roman}", 1994, u"mcmxciv"},
             std::tuple{u"{upper-roman}", 3999, u"MMMCMXCIX"},
             std::tuple{u"{upper-roman}", 4000, u"4000"},
             std::tuple{u"- {disc} -", 7, u"- \u2022 -"},
             std::tuple{u"{box}", 7, u"\u2022"},
             std::tuple{u"{none}", 7, u""},
             std::tuple{u"no braces", 7, u"no braces"},
             std::tuple{u"{open", 7, u"{open"},
         }) {
        EXPECT_EQ(markerText({marker, 1}, number), expected);
    }
}

} // namespace
} // namespace korvex::richtext
