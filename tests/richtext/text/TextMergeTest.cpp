#include "richtext/text/TextMerge.h"

#include "richtext/RandomText.h"
#include "richtext/TextDump.h"
#include "richtext/stored/RichTextSerializer.h"

#include "base/Utf16.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <sstream>

namespace korvex::richtext {
namespace {

AttributedString plain(std::string_view text) {
    return AttributedString(base::utf16(text));
}

std::string textOf(const AttributedString& text) {
    return base::utf8(text.text());
}

TEST(TextMerge, KeepsWhatEachSideHasChanged) {
    struct Case {
        const char* what;
        const char* base;
        const char* mine;
        const char* theirs;
        const char* result;
        bool hasBoth = false;
    };
    const std::vector<Case> cases{
        {"nothing", "a\nb", "a\nb", "a\nb", "a\nb"},
        {"only mine", "a\nb", "a\nB", "a\nb", "a\nB"},
        {"only theirs", "a\nb", "a\nb", "A\nb", "A\nb"},
        {"the same change", "a", "A", "A", "A"},
        {"paragraphs side by side", "a\nb", "A\nb", "a\nB", "A\nB"},
        {"added at either end", "b", "a\nb", "b\nc", "a\nb\nc"},
        {"both added at the end", "a", "a\nmine", "a\ntheirs", "a\nmine\ntheirs"},
        {"changed and added behind it", "a\nb", "a\nB", "a\nb\nc", "a\nB\nc"},
        {"deleted and changed elsewhere", "a\nb\nc", "a\nc", "a\nb\nC", "a\nC"},
        {"deleted by both", "a\nb\nc", "a\nc", "a\nc", "a\nc"},
        {"deleted there, changed here", "a\nb\nc", "a\nB\nc", "a\nc", "a\nB\nc"},
        {"all deleted there, one changed here", "a\nb\nc", "a\nB\nc", "", "B"},
        {"from nothing", "", "mine", "theirs", "mine\ntheirs", true},
        {"all deleted", "a\nb", "", "a\nb", ""},
        {"words far enough apart", "Buy milk", "Buy oat milk", "Buy milk today",
         "Buy oat milk today"},
        {"neighbouring words", "Buy milk", "Sell milk", "Buy bread", "Sell milk\nBuy bread", true},
        {"the same word", "one two three", "one 2 three", "one zwei three",
         "one 2 three\none zwei three", true},
        {"the same word alike", "one two three", "one 2 three", "one 2 three four",
         "one 2 three four"},
        {"words in one, paragraphs around it", "a\nb c d\ne", "A\nB c d\ne", "a\nb c D\nE",
         "A\nB c D\nE"},
        {"split there, changed here", "a b\nz", "a b!\nz", "a\nb\nz", "a b!\na\nb\nz", true},
        {"without gaps", "今天去買牛奶", "今天去買豆漿", "明天去買牛奶", "明天去買豆漿"},
        {"empty paragraphs", "a\n\nb\n", "a\n\nB\n", "A\n\nb\n", "A\n\nB\n"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        const auto result = merged(plain(each.base), plain(each.mine), plain(each.theirs));
        EXPECT_EQ(textOf(result.text), each.result);
        EXPECT_EQ(result.hasBoth, each.hasBoth);
    }
}

TEST(TextMerge, FormatsAreWhatAPartHasOfIt) {
    const CharacterAttributes bold{.font = {.isBold = true}};
    const auto base = plain("one two three\nlast");
    auto mine = base;
    mine.editAttributes({0, 3}, [&](auto& attributes) { attributes = bold; });
    auto theirs = base;
    theirs.replace({14, 4}, plain("end"));
    theirs.editStyles({0, 1}, [](auto& style) { style.alignment = TextAlignment::center; });
    const auto result = merged(base, mine, theirs);
    EXPECT_FALSE(result.hasBoth);
    auto wanted = mine;
    wanted.replace({14, 4}, plain("end"));
    wanted.editStyles({0, 1}, [](auto& style) { style.alignment = TextAlignment::center; });
    EXPECT_TRUE(result.text.isEquivalentTo(wanted));
}

TEST(TextMerge, AListGoesOnWithWhatTheOtherHasAdded) {
    const auto listOf = [](std::initializer_list<const char16_t*> items) {
        ParagraphStyle style;
        style.lists = {std::make_shared<const TextList>(TextList{.marker = u"{decimal}."})};
        AttributedString text;
        for (const auto* const item : items) {
            text.append(item, {}, style);
        }
        return text;
    };
    const auto result = merged(listOf({u"a\n", u"b\n", u"c"}), listOf({u"a\n", u"b\n", u"C"}),
                               listOf({u"a\n", u"x\n", u"b\n", u"c"}));
    EXPECT_TRUE(result.text.isEquivalentTo(listOf({u"a\n", u"x\n", u"b\n", u"C"})));
}

TEST(TextMerge, ATableIsTakenAsAWhole) {
    RandomText random(1);
    AttributedString withTable;
    const auto hasTable = [](const AttributedString& text) {
        bool found = false;
        text.forEachStyleRun([&](const auto& run) { found |= !run.style.cells.empty(); });
        return found;
    };
    while (!hasTable(withTable)) {
        withTable = RichTextSerializer::normalized(random.next());
    }
    auto theirs = plain("above\n");
    theirs.append(withTable);
    const auto base = plain("above\n");
    auto mine = plain("Above\n");
    const auto result = merged(base, mine, theirs);
    EXPECT_FALSE(result.hasBoth);
    mine.append(withTable);
    EXPECT_TRUE(result.text.isEquivalentTo(mine)) << dump(result.text);
}

/// Texts of a base and two sides that have changed it, with words that come once each.
class RandomVersions {
public:
    explicit RandomVersions(std::uint64_t seed) : m_random(seed) {}

    std::string base() {
        std::string text;
        for (int line = below(6); line >= 0; --line) {
            text += (text.empty() ? "" : "\n") + words(below(5));
        }
        return text;
    }
    std::string changed(const std::string& text) {
        std::string result;
        std::istringstream lines(text + "\n");
        for (std::string line; std::getline(lines, line);) {
            switch (below(8)) {
            case 0:
                break;
            case 1:
                result += words(3) + "\n" + line + "\n";
                break;
            case 2:
            case 3:
                result += changedLine(line) + "\n";
                break;
            default:
                result += line + "\n";
            }
        }
        result.resize(result.empty() ? 0 : result.size() - 1);
        return result;
    }

private:
    int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(m_random); }
    std::string words(int count) {
        std::string result;
        for (; count > 0; --count) {
            result += (result.empty() ? "w" : " w") + std::to_string(++m_word);
        }
        return result;
    }
    std::string changedLine(const std::string& line) {
        std::string result;
        std::istringstream words(line);
        for (std::string word; words >> word;) {
            const int what = below(6);
            const auto now = what == 0   ? std::string()
                             : what == 1 ? this->words(1)
                             : what == 2 ? word + " " + this->words(1)
                                         : word;
            result += (result.empty() || now.empty() ? "" : " ") + now;
        }
        return result;
    }

    std::mt19937_64 m_random;
    int m_word = 0;
};

std::set<std::string> wordsOf(const std::string& text) {
    std::istringstream words(text);
    return {std::istream_iterator<std::string>(words), {}};
}

TEST(TextMerge, NoWordsOfEitherSideAreLost) {
    for (std::uint64_t seed = 0; seed < 3000; ++seed) {
        RandomVersions versions(seed);
        const auto base = versions.base();
        const auto mine = versions.changed(base);
        const auto theirs = versions.changed(base);
        SCOPED_TRACE("seed " + std::to_string(seed) + "\n--- base\n" + base + "\n--- mine\n" +
                     mine + "\n--- theirs\n" + theirs);
        const auto result = wordsOf(textOf(merged(plain(base), plain(mine), plain(theirs)).text));
        const auto before = wordsOf(base);
        const auto here = wordsOf(mine);
        const auto there = wordsOf(theirs);
        for (const auto& word : here) {
            EXPECT_TRUE(result.contains(word) || (before.contains(word) && !there.contains(word)))
                << word;
        }
        for (const auto& word : there) {
            EXPECT_TRUE(result.contains(word) || (before.contains(word) && !here.contains(word)))
                << word;
        }
        for (const auto& word : result) {
            EXPECT_TRUE(here.contains(word) || there.contains(word)) << word;
        }
        EXPECT_EQ(textOf(merged(plain(base), plain(mine), plain(base)).text), mine);
        EXPECT_EQ(textOf(merged(plain(base), plain(base), plain(theirs)).text), theirs);
        EXPECT_EQ(textOf(merged(plain(base), plain(mine), plain(mine)).text), mine);
        if (::testing::Test::HasFailure()) {
            return;
        }
    }
}

TEST(TextMerge, DifferencesMakeOneTextOfAnother) {
    const auto check = [](const AttributedString& before, const AttributedString& after) {
        auto text = before;
        auto parts = differences(before, after);
        std::reverse(parts.begin(), parts.end());
        for (const auto& part : parts) {
            text.replace(part.before, after.slice(part.after));
        }
        EXPECT_EQ(base::utf8(text.text()), base::utf8(after.text()));
    };
    const auto narrow =
        differences(plain("same\nthe old words\nend"), plain("same\nthe new words\nend"));
    ASSERT_EQ(narrow.size(), 1U);
    EXPECT_EQ(narrow.front().before, (TextRange{9, 3}));
    EXPECT_EQ(narrow.front().after, (TextRange{9, 3}));
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        SCOPED_TRACE(seed);
        RandomVersions versions(seed);
        const auto base = versions.base();
        check(plain(base), plain(versions.changed(base)));
        RandomText random(seed);
        const auto one = random.next();
        const auto other = random.next();
        check(one, other);
        EXPECT_TRUE(merged(one, one, other).text.isEquivalentTo(other));
        EXPECT_TRUE(merged(one, other, one).text.isEquivalentTo(other));
        EXPECT_TRUE(differences(one, one).empty());
    }
}

} // namespace
} // namespace korvex::richtext
