#include "model/EntryContentLimit.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>

namespace korvex::model {
namespace {

// Four code points and seven UTF-16 units, seen as one character.
constexpr std::string_view kEmoji = "\U0001F469\U0001F3FD\u200D\U0001F680";
constexpr std::size_t kEmojiUnits = 7;

std::string repeated(std::string_view text, std::size_t count) {
    std::string result;
    result.reserve(text.size() * count);
    for (std::size_t i = 0; i < count; ++i) {
        result += text;
    }
    return result;
}

TEST(EntryContentLimit, CountsCharactersAsThePersonSeesThem) {
    struct Case {
        const char* what;
        std::string text;
        bool isAllowed;
    };
    for (const auto& each : {
             Case{"empty", "", true},
             Case{"10,000 letters", repeated("x", 10'000), true},
             Case{"10,001 letters", repeated("x", 10'001), false},
             Case{"10,000 emoji", repeated(kEmoji, 10'000), true},
             Case{"10,001 emoji", repeated(kEmoji, 10'001), false},
             Case{"10,000 line ends of two bytes", repeated("\r\n", 10'000), true},
             Case{"300,000 characters of four bytes", repeated("\U0001F600", 300'000), false},
             // One letter under all the accents that fit: the bytes decide.
             Case{"1,048,576 bytes in a character", "xx" + repeated("\u0301", 524'287), true},
             Case{"1,048,577 bytes in a character", "xxx" + repeated("\u0301", 524'287), false},
         }) {
        EXPECT_EQ(EntryContentLimit::allows(each.text), each.isAllowed) << each.what;
    }
}

TEST(EntryContentLimit, PreviewsOnlyWhatIsTooLong) {
    const auto most = repeated(kEmoji, 10'000);
    EXPECT_EQ(EntryContentLimit::preview(most), most);
    EXPECT_EQ(EntryContentLimit::preview(most + "x"), repeated(kEmoji, 500));
    EXPECT_EQ(EntryContentLimit::preview(repeated("\U0001F600", 300'000)),
              repeated("\U0001F600", 500));
}

TEST(EntryContentLimit, JudgesAnEditByTheTextThatItLeaves) {
    const auto full = repeated("x", 10'000);
    const auto almostFull = repeated(kEmoji, 9'999);
    constexpr auto kEnd = std::numeric_limits<std::size_t>::max();
    struct Case {
        const char* what;
        std::string text;
        std::size_t offset;
        std::size_t length;
        std::string replacement;
        bool isAllowed;
    };
    for (const auto& each : {
             Case{"one more in a full text", full, 10'000, 0, "y", false},
             Case{"one for one", full, 500, 1, "y", true},
             Case{"two for one", full, 500, 1, "yz", false},
             Case{"an accent on the last letter", full, 10'000, 0, "\u0301", true},
             Case{"the last that fits", almostFull, 0, 0, "y", true},
             Case{"one too many", almostFull, 0, 0, "yz", false},
             Case{"a megabyte", "", 0, 0, repeated("x", 1'048'577), false},
             Case{"a megabyte for a megabyte", repeated("x", 2'000'000), 0, kEnd, full, true},
             // Ranges outside of the text are cut down to it.
             Case{"past the end", full, 20'000, 5, "y", false},
             Case{"from the middle past the end", full, 9'999, kEnd, "y", true},
             Case{"offset and length that wrap around", full, kEnd, kEnd, "y", false},
             // Half of a surrogate pair takes the whole character with it.
             Case{"from inside a pair", almostFull + "\U0001F600\U0001F600",
                  9'999 * kEmojiUnits + 1, 3, "y", true},
             Case{"to inside a pair", almostFull + "\U0001F600\U0001F600", 9'999 * kEmojiUnits, 3,
                  "y", true},
             Case{"nothing inside a pair", almostFull + "\U0001F600", 9'999 * kEmojiUnits + 1, 0,
                  "y", false},
         }) {
        EXPECT_EQ(EntryContentLimit::allowsReplacing(each.text, each.offset, each.length,
                                                     each.replacement),
                  each.isAllowed)
            << each.what;
    }
}

TEST(EntryContentLimit, LetsATextThatIsTooLongGetShorter) {
    const auto tooLong = repeated("x", 12'000);
    EXPECT_TRUE(EntryContentLimit::allowsReplacing(tooLong, 0, 1, ""));
    EXPECT_FALSE(EntryContentLimit::allowsReplacing(tooLong, 0, 1'000, "y"));
    EXPECT_TRUE(EntryContentLimit::allowsReplacing(tooLong, 0, 2'001, "y"));

    // Taking the joiner out of a full text makes two characters of one.
    const auto full = repeated(kEmoji, 10'000);
    EXPECT_FALSE(EntryContentLimit::allowsReplacing(full, 4, 1, ""));
    EXPECT_TRUE(EntryContentLimit::allowsReplacing(full, 0, kEmojiUnits, ""));
}

} // namespace
} // namespace korvex::model
