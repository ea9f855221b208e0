#include "cli/terminal/DisplayText.h"

#include <gmock/gmock.h>

namespace korvex::cli {
namespace {

using ::testing::ElementsAre;

struct Shown {
    const char* situation;
    std::string_view text;
    std::string_view onOneLine;
};

TEST(DisplayText, NothingThatATerminalActsOnStays) {
    const Shown cases[] = {
        {"a plain text", "Buy milk", "Buy milk"},
        {"letters beyond ASCII", "Grüße, 世界 👩‍👩‍👧",
         "Grüße, 世界 👩‍👩‍👧"},
        {"line breaks of three systems", "a\nb\rc\r\nd", "a b c d"},
        {"line breaks of Unicode", "a\u0085b\u2028c\u2029d", "a b c d"},
        {"a tab", "a\tb", "a b"},
        {"an escape sequence", "\x1b[31mred\x1b]0;title\x07", "␛[31mred␛]0;title␇"},
        {"a null character", std::string_view("a\0b", 3), "a␀b"},
        {"delete", "a\x7f", "a␡"},
        {"an escape sequence of one character", "a\u009b31m", "a\uFFFD31m"},
        {"bytes that are no characters", "a\xff\xc3(b", "a\uFFFD\uFFFD(b"},
        {"a character cut off at the end", "a\xe4\xb8", "a\uFFFD"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(onOneLine(each.text), each.onOneLine) << each.situation;
    }
    EXPECT_EQ(inLines("one\r\ntwo\x1b\n"), "one\ntwo␛\n");
}

struct Width {
    const char* situation;
    std::string_view line;
    std::size_t columns;
};

TEST(DisplayText, WidthIsWhatATerminalGives) {
    const Width cases[] = {
        {"nothing", "", 0},
        {"ASCII", "Buy milk", 8},
        {"accents, one character each", "Grüße", 5},
        {"a combining accent", "e\u0301te\u0301", 3},
        {"ideographs", "世界", 4},
        {"fullwidth letters", "ＡＢ", 4},
        {"half-width katakana", "ｱｲ", 2},
        {"an emoji", "🎉", 2},
        {"a family of three joined emoji", "👩‍👩‍👧", 2},
        {"an emoji with a skin tone", "👍🏽", 2},
        {"a flag", "🇩🇪", 2},
        {"a symbol shown as emoji", "❤️", 2},
        {"the same symbol as text", "❤", 1},
        {"jamo that make one syllable", "\u1112\u1161\u11ab", 2},
        {"a joiner in a text", "क्‍ष", 2},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(displayWidth(each.line), each.columns) << each.situation;
    }
}

TEST(DisplayText, WrappingBreaksAtSpacesAndElseBetweenCharacters) {
    EXPECT_THAT(wrapped("", 5), ElementsAre(""));
    EXPECT_THAT(wrapped("short", 5), ElementsAre("short"));
    EXPECT_THAT(wrapped("a bb ccc dddd", 6), ElementsAre("a bb", "ccc", "dddd"));
    EXPECT_THAT(wrapped("abcdefgh", 3), ElementsAre("abc", "def", "gh"));
    EXPECT_THAT(wrapped("a abcdefgh", 4), ElementsAre("a", "abcd", "efgh"));
    EXPECT_THAT(wrapped("世界世界", 3), ElementsAre("世", "界", "世", "界"));
    EXPECT_THAT(wrapped("👩‍👩‍👧👩‍👩‍👧", 3),
                ElementsAre("👩‍👩‍👧", "👩‍👩‍👧"));
    EXPECT_THAT(wrapped("世", 1), ElementsAre("世")) << "wider than the line, and still shown";
}

} // namespace
} // namespace korvex::cli
