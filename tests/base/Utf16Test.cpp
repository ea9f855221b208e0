#include "base/Utf16.h"

#include <gtest/gtest.h>

namespace korvex::tests {

TEST(Utf16, BothWaysGiveTheSameTextAndDamageIsReplaced) {
    const std::string text = "a\0ß€\U0001F600"
                             "z";
    EXPECT_EQ(base::utf8(base::utf16(text)), text);
    EXPECT_EQ(base::utf16("\U0001F600"), u"\xD83D\xDE00");
    EXPECT_EQ(base::utf8(u"a\xD83Dz\xDE00"), "a\uFFFDz\uFFFD");
    EXPECT_EQ(base::utf16("a\xC3"), u"a\uFFFD");
    EXPECT_EQ(base::utf16(""), u"");
    EXPECT_EQ(base::utf8(u""), "");
    const std::u16string longest(1000, u'\uFFFD');
    EXPECT_EQ(base::utf16(base::utf8(longest)), longest);
}

TEST(Utf16, TheLengthInBytesIsKnownBeforehand) {
    for (const std::u16string text :
         {u"", u"plain", u"a\u00e9\u20ac\U0001F600z", u"\xD83D", u"\xDE00\xD83Dz", u"z\xD83D"}) {
        EXPECT_EQ(base::utf8Length(text), base::utf8(text).size());
    }
}

} // namespace korvex::tests
