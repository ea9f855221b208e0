#include "base/Text.h"

#include "base/Utf16.h"

#include <gtest/gtest.h>

#include <array>
#include <random>
#include <string>
#include <vector>

namespace korvex::base {
namespace {

using namespace std::string_view_literals;

// Three heads joined by U+200D, a flag of two letters, e with a separate acute accent.
constexpr auto kFamily = "\U0001F468\u200D\U0001F469\u200D\U0001F467"sv;
constexpr auto kFlag = "\U0001F1E9\U0001F1EA"sv;
constexpr auto kAccented = "e\u0301"sv;

constexpr std::size_t kNoLimit = 1'000'000;

TEST(Text, TellsValidUtf8) {
    for (const auto text : {""sv, "plain"sv, "a\0b"sv, "é"sv, "€"sv, "\U0001F600"sv, "\U0010FFFF"sv,
                            "eight or more plain bytes, then ö, and then plain ones again"sv}) {
        EXPECT_TRUE(isValidUtf8(text)) << text;
    }
    for (const auto text : {
             "\x80"sv,                     // a continuation without a start
             "\xC3"sv,                     // cut off
             "\xE2\x82"sv,                 //
             "\xF0\x9F\x98"sv,             //
             "\xC0\xAF"sv,                 // longer than need be
             "\xE0\x80\xAF"sv,             //
             "\xED\xA0\x80"sv,             // half of a surrogate pair
             "\xF4\x90\x80\x80"sv,         // past the last code point
             "\xFF"sv,                     //
             "plain bytes before \xC3("sv, //
         }) {
        EXPECT_FALSE(isValidUtf8(text)) << text;
        EXPECT_FALSE(isValidUtf8(std::string(100, 'x') + std::string(text)));
        EXPECT_FALSE(isValidUtf8(std::string(text) + std::string(100, 'x')));
    }
}

TEST(Text, RepairsOnlyWhatIsNoUtf8) {
    EXPECT_EQ(repairedUtf8("a\xff\tb\x1b"), "a\uFFFD\tb\x1b");
    EXPECT_EQ(repairedUtf8("\xED\xA0\x80é\xE2\x82"), "\uFFFD\uFFFD\uFFFDé\uFFFD");
    EXPECT_EQ(repairedUtf8("a\0\uFFFD\U0001F600"sv), "a\0\uFFFD\U0001F600"sv);
}

TEST(Text, TrimsWhiteSpaceOfAllKinds) {
    for (const auto& [text, expected] : {
             std::pair{""sv, ""sv},
             std::pair{" \t\r\n "sv, ""sv},
             std::pair{"\u2003\u00a0\u2028\u3000"sv, ""sv},
             std::pair{"  a b\n"sv, "a b"sv},
             std::pair{"\u00a0é\u2003"sv, "é"sv},
             std::pair{"é"sv, "é"sv},
             std::pair{"\u200B"sv, "\u200B"sv}, // zero width, and no white space
             std::pair{"\n\U0001F600\n"sv, "\U0001F600"sv},
         }) {
        EXPECT_EQ(trimmed(text), expected) << text;
    }
}

TEST(Text, CountsCharactersAsThePersonSeesThem) {
    for (const auto& [text, count] : {
             std::pair{""sv, 0U},
             std::pair{"plain"sv, 5U},
             std::pair{"a\r\nb"sv, 3U},
             std::pair{"\r\n\r\n\n\r"sv, 4U},
             std::pair{kFamily, 1U},
             std::pair{kFlag, 1U},
             std::pair{kAccented, 1U},
             std::pair{"plain e\u0301"sv, 7U},  // the accent joins the last plain letter
             std::pair{"line\r\n\u0301"sv, 6U}, // but no line break
             std::pair{"\U0001F1E9\U0001F1EA\U0001F1EB"sv, 2U}, // a flag and half of one
             std::pair{"\u0301"sv, 1U},
         }) {
        EXPECT_EQ(characterCount(text, kNoLimit), count) << text;
    }
}

TEST(Text, CountsUtf16Alike) {
    for (const auto text : {""sv, "plain"sv, "a\r\nb\r"sv, kFamily, kFlag,
                            "plain e\u0301, and on"sv, "line\r\n\u0301"sv}) {
        for (const std::size_t limit : {kNoLimit, std::size_t{3}, std::size_t{1}, std::size_t{0}}) {
            EXPECT_EQ(characterCount(utf16(text), limit), characterCount(text, limit)) << text;
        }
    }
    EXPECT_EQ(characterCount(u"a\xD83D\xD83Dz"sv, kNoLimit), 4U);
}

TEST(Text, StopsCountingAtTheLimit) {
    std::string text;
    for (int i = 0; i < 50; ++i) {
        text.append("x").append(kFamily);
    }
    EXPECT_EQ(characterCount(text, 100), 100U);
    EXPECT_EQ(characterCount(text, 101), 100U);
    EXPECT_EQ(characterCount(text, 99), 99U);
    EXPECT_EQ(characterCount(text, 1), 1U);
    EXPECT_EQ(characterCount(text, 0), 0U);
    EXPECT_EQ(characterCount("plain", 3), 3U);
    EXPECT_EQ(characterCount("\r\n\r\n", 1), 1U);
}

TEST(Text, PrefixesEndBetweenCharacters) {
    const auto text = std::string("ab").append(kFamily).append(kAccented).append("\r\nz");
    const std::array prefixes{
        std::string(),
        std::string("a"),
        std::string("ab"),
        std::string("ab").append(kFamily),
        std::string("ab").append(kFamily).append(kAccented),
        std::string("ab").append(kFamily).append(kAccented).append("\r\n"),
        text,
        text,
    };
    for (std::size_t count = 0; count < prefixes.size(); ++count) {
        EXPECT_EQ(characterPrefix(text, count), prefixes[count]) << count;
    }
}

// Whatever stands beside whatever: the fast way over plain letters must not change the count.
TEST(Text, TakenOffOneByOneCharactersAreAsManyAsCounted) {
    constexpr std::array kPieces{"a"sv,      "b"sv,      "\r"sv,     "\n"sv,         "\u0301"sv,
                                 "é"sv,      "\u200D"sv, "\uFE0F"sv, "\U0001F468"sv, "\U0001F3FD"sv,
                                 "\u1100"sv, "\u1161"sv, "\u0E33"sv};
    std::mt19937 random(7);
    std::uniform_int_distribution<std::size_t> piece(0, kPieces.size() - 1);
    std::uniform_int_distribution<int> length(0, 24);
    for (int i = 0; i < 5000; ++i) {
        std::string text;
        for (int rest = length(random); rest > 0; --rest) {
            text += kPieces[piece(random)];
        }
        std::string_view rest = text;
        std::size_t taken = 0;
        while (!rest.empty()) {
            const auto first = characterPrefix(rest, 1);
            ASSERT_FALSE(first.empty()) << text;
            rest.remove_prefix(first.size());
            ++taken;
        }
        // A joiner needs to see the picture before it; taken off alone, the pair may fall apart.
        if (text.find("\u200D") == std::string::npos) {
            ASSERT_EQ(characterCount(text, kNoLimit), taken) << text;
        }
        ASSERT_EQ(characterPrefix(text, taken), text);
    }
}

TEST(Text, FindsUtf16OffsetsInBytes) {
    // Units: a 1, é 1, € 1, 😀 2, z 1.
    constexpr auto kText = "aé€\U0001F600z"sv;
    const std::array<std::optional<std::size_t>, 8> offsets{0,  1,  3,           6, std::nullopt,
                                                            10, 11, std::nullopt};
    for (std::size_t unit = 0; unit < offsets.size(); ++unit) {
        EXPECT_EQ(byteOffset(kText, unit), offsets[unit]) << unit;
    }
    EXPECT_EQ(byteOffset("", 0), 0U);
    EXPECT_FALSE(byteOffset("", 1));
    EXPECT_EQ(byteOffset("twenty plain letters", 20), 20U);
    EXPECT_FALSE(byteOffset("twenty plain letters", 21));
}

TEST(Text, SplitsLinesAtEachKindOfBreak) {
    std::vector<std::string> lines;
    forEachLine("one\ntwo\r\nthree\rfour\n\nsix\n",
                [&](std::string_view line) { lines.emplace_back(line); });
    EXPECT_EQ(lines, (std::vector<std::string>{"one", "two", "three", "four", "", "six"}));
    forEachLine("", [](std::string_view) { FAIL() << "an empty text has no line"; });
}

TEST(Text, FilledLinesEndWhereverUnicodeEndsThem) {
    EXPECT_EQ(filledLines("\n a\u00a0\r\nb c\v\t\fd\re\u0085\u00e9\u2028\u3000\u2029g"),
              (std::vector<std::string_view>{"a", "b c", "d", "e", "\u00e9", "g"}));
    EXPECT_EQ(filledLines("a\x85\xE2\x80\nb\xC2"sv),
              (std::vector<std::string_view>{"a\x85\xE2\x80", "b\xC2"}))
        << "bytes that are no UTF-8 end nothing";
    EXPECT_TRUE(filledLines("").empty());
    EXPECT_TRUE(filledLines(" \r\n\u2028").empty());
}

} // namespace
} // namespace korvex::base
