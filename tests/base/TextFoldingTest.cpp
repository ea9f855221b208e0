#include "base/TextFolding.h"

#include "base/Text.h"
#include "support/ScopedEnvironment.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unicode/brkiter.h>
#include <unicode/coll.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include <random>
#include <string>
#include <vector>

namespace korvex::base {
namespace {

std::string utf8Of(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

icu::UnicodeString normalized(const icu::UnicodeString& text, bool isComposed) {
    UErrorCode status = U_ZERO_ERROR;
    const auto* form = isComposed ? icu::Normalizer2::getNFCInstance(status)
                                  : icu::Normalizer2::getNFDInstance(status);
    return form->normalize(text, status);
}

/// What is hard about texts of many scripts, side by side: letters with marks in one piece and in
/// several, marks alone and in a wrong order, letters of syllables, what is invisible.
class RandomText {
public:
    explicit RandomText(unsigned seed) : m_random(seed) {}

    icu::UnicodeString make(int longest) {
        icu::UnicodeString text;
        for (int length = below(longest + 1); length > 0; --length) {
            const auto& script = kScripts[static_cast<std::size_t>(below(std::size(kScripts)))];
            text.append(static_cast<UChar32>(script.first + below(script.count)));
        }
        return text;
    }
    int below(int bound) { return std::uniform_int_distribution(0, bound - 1)(m_random); }
    int below(std::size_t bound) { return below(static_cast<int>(bound)); }

private:
    struct Script {
        UChar32 first;
        int count;
    };
    static constexpr Script kScripts[]{
        {' ', 95},       {' ', 95},      {0xa0, 0x160},   {0x300, 0x70},   {0x300, 0x70},
        {0x370, 0x90},   {0x400, 0x90},  {0x5b0, 0x40},   {0x620, 0x40},   {0x900, 0x70},
        {0x9b0, 0x30},   {0xdc0, 0x20},  {0xe01, 0x4e},   {0xf40, 0x50},   {0x1100, 0x13},
        {0x1161, 0x15},  {0x11a8, 0x1b}, {0x1e00, 0x100}, {0x1f00, 0x100}, {0x200b, 5},
        {0x2100, 0x50},  {0x2190, 0x20}, {0x3041, 0x56},  {0x3099, 2},     {0x30a1, 0x56},
        {0x3131, 0x5e},  {0x3300, 0x60}, {0x4e00, 0x40},  {0xac00, 0x80},  {0xf900, 0x20},
        {0xfb00, 0x50},  {0xfe00, 0x10}, {0xff01, 0xbe},  {0xffa0, 0x3f},  {0x1d15e, 7},
        {0x1f468, 0x10}, {0x1f3fb, 5},   {0xad, 1},       {'\r', 1},       {'\n', 1},
    };
    std::mt19937 m_random;
};

TEST(TextFolding, FindsWhatPeopleTakeForTheSame) {
    struct Case {
        const char* locale;
        std::string text;
        std::string term;
        bool isFound;
    };
    for (const auto& [locale, text, term, isFound] : std::vector<Case>{
             {"en_US", "Café", "cafe", true},
             {"en_US", "cafe\u0301", "café", true},
             {"en_US", "cafe", "CAFÉ", true},
             {"en_US", "milk", "MILK", true},
             {"de_DE", "Straße", "STRASSE", true},
             {"de_DE", "STRASSE", "straße", true},
             {"de_DE", "GROẞ", "groß", true},
             {"de_DE", "Äpfel", "apfel", true},
             {"da_DK", "Smørrebrød på Ærø", "smorrebrod", true},
             {"da_DK", "Ærø", "aero", true},
             {"pl_PL", "Łódź", "lodz", true},
             {"vi_VN", "Đường", "duong", true},
             {"fr_FR", "Œuvre", "oeuvre", true},
             {"el_GR", "ΟΔΥΣΣΕΥΣ", "οδυσσευς", true},
             {"el_GR", "ᾠδή", "ωδη", true},
             {"ru_RU", "Ёлка", "елка", true},
             {"ru_RU", "МОСКВА", "москва", true},
             {"he_IL", "שָׁלוֹם", "שלום", true},
             {"ar", "مُحَمَّد", "محمد", true},
             {"ar", "أحمد", "احمد", true},
             {"ar", "كـــتاب", "كتاب", true},
             // Width and letters of other sizes.
             {"ja_JP", "ＡＢＣ１２３", "abc123", true},
             {"ja_JP", "ｷｰﾎﾞｰﾄﾞ", "キーボード", true},
             {"ja_JP", "キーボード", "ｷｰﾎﾞｰﾄﾞ", true},
             {"ja_JP", "か\u3099", "が", true},
             {"ja_JP", "が", "か", false},
             {"ja_JP", "は", "ぱ", false},
             {"ja_JP", "キ", "き", false},
             {"ja_JP", "㌔", "キロ", true},
             {"en_US", "ﬁnd x² ½", "find", true},
             {"en_US", "x²", "x2", true},
             // Syllables are letters of their own, however they are written.
             {"ko_KR", "\u1112\u1161\u11ab\u1100\u1173\u11af", "한글", true},
             {"ko_KR", "한글", "하", false},
             {"ko_KR", "ㅋㅋㅋ", "ㅋㅋ", true},
             {"ko_KR", "ﾡ", "ㄱ", true},
             {"zh_CN", "我们明天去北京", "北京", true},
             {"zh_CN", "葛", "\U0002f99a", false},
             // Vowel signs and viramas are no ornament.
             {"hi_IN", "हिन्दी", "हिन्द", true},
             {"hi_IN", "कि", "का", false},
             {"hi_IN", "क्ष", "कष", false},
             {"th_TH", "น้ำ", "น้ำ", true},
             {"th_TH", "กี่", "กา", false},
             // What nobody sees.
             {"de_DE", "Donau\u00addampf\u00adschiff", "donaudampfschiff", true},
             {"en_US", "❤\ufe0f", "❤", true},
             {"fa_IR", "می\u200cخواهم", "میخواهم", true},
             {"en_US", "👍🏽 done", "👍", true},
             {"en_US", "🏴\U000e0067\U000e0062\U000e007f", "🏴\U000e0067\U000e0073\U000e007f",
              false},
             // A sign with a stroke is another sign.
             {"en_US", "a ≠ b", "=", false},
             {"en_US", "a =\u0338 b", "≠", true},
             {"en_US", "a ´ b", "´", true},
             // One language's case.
             {"en_US", "İstanbul ısı", "istanbul", true},
             {"en_US", "ISI", "ısı", true},
             {"tr_TR", "İSTANBUL", "istanbul", true},
             {"tr_TR", "ISI", "ısı", true},
             {"tr_TR", "ISI", "isi", false},
             {"tr_TR", "isi", "ısı", false},
             {"tr-TR", "I\u0307stanbul", "istanbul", true},
             {"az_AZ", "QIZIL", "qızıl", true},
             {"tr_TR", "ÇAĞRI şöför", "cagrı", true},
         }) {
        const TextFolding folding(locale);
        EXPECT_EQ(folding.folded(text).find(folding.folded(term)) != std::string::npos, isFound)
            << locale << ": " << term << " in " << text;
    }
}

TEST(TextFolding, TakesTheLocaleOfTheEnvironment) {
    const tests::ScopedEnvironment all("LC_ALL", "tr_TR.UTF-8");
    EXPECT_EQ(TextFolding().folded("ISI"), "ısı");
}

TEST(TextFolding, IsTheSameForEveryWayToWriteAText) {
    for (const char* locale : {"en_US", "tr_TR"}) {
        const TextFolding folding(locale);
        RandomText random(7);
        for (int round = 0; round < 20'000; ++round) {
            const auto text = random.make(12);
            const auto folded = folding.folded(utf8Of(text));
            ASSERT_EQ(folding.folded(folded), folded) << utf8Of(text);
            ASSERT_EQ(folding.folded(utf8Of(normalized(text, true))), folded) << utf8Of(text);
            ASSERT_EQ(folding.folded(utf8Of(normalized(text, false))), folded) << utf8Of(text);
        }
    }
}

TEST(TextFolding, LeavesNoDifferenceOfCase) {
    for (const char* locale : {"en_US", "tr_TR", "lt_LT", "el_GR"}) {
        const TextFolding folding(locale);
        const icu::Locale icuLocale(locale);
        for (UChar32 letter = 0; letter < 0x20000; ++letter) {
            const icu::UnicodeString text(letter);
            // The capital of an iota below is a letter of its own; it is dropped like an accent.
            // No capital of ﬁ has a dot, even in Turkish.
            const auto isLigatureOfI = letter == 0xfb01 || letter == 0xfb03;
            if (U_IS_SURROGATE(letter) || normalized(text, false).indexOf(u'\u0345') >= 0 ||
                (isLigatureOfI && icuLocale == icu::Locale("tr_TR"))) {
                continue;
            }
            const auto upper = icu::UnicodeString(text).toUpper(icuLocale);
            const auto lower = icu::UnicodeString(text).toLower(icuLocale);
            const auto folded = folding.folded(utf8Of(text));
            ASSERT_EQ(folding.folded(utf8Of(upper)), folded) << locale << " " << utf8Of(text);
            ASSERT_EQ(folding.folded(utf8Of(lower)), folded) << locale << " " << utf8Of(text);
        }
    }
}

/// ICU's collation tells letters apart on its first level, and accents, case and width below it.
TEST(TextFolding, AgreesWithTheCollationOfAllLetters) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::Collator> collator(
        icu::Collator::createInstance(icu::Locale::getRoot(), status));
    ASSERT_TRUE(U_SUCCESS(status));
    collator->setStrength(icu::Collator::PRIMARY);
    const TextFolding folding("en_US");
    // Letters to the collation, accents to us, so that who leaves them out finds more.
    const icu::UnicodeString knownOnes(u"ıŦŧƵƶǤǥйЙᵌ𝚤");
    for (UChar32 letter = 0x80; letter < 0x110000; ++letter) {
        const auto script = uscript_getScript(letter, &status);
        // Of hamzas, the collation takes the ones over an alef for letters.
        if (!u_isalpha(letter) || script == USCRIPT_ARABIC || script == USCRIPT_TIFINAGH ||
            knownOnes.indexOf(letter) >= 0) {
            continue;
        }
        const icu::UnicodeString text(letter);
        const auto folded = icu::UnicodeString::fromUTF8(folding.folded(utf8Of(text)));
        EXPECT_EQ(collator->compare(text, folded, status), UCOL_EQUAL)
            << utf8Of(text) << " " << utf8Of(folded);
    }
}

/// The places between characters, by ICU's own iterator over UTF-16.
std::vector<std::size_t> boundaries(const icu::UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    breaks->setText(text);
    std::vector<std::size_t> result;
    for (auto at = breaks->first(); at != icu::BreakIterator::DONE; at = breaks->next()) {
        result.push_back(utf8Of(text.tempSubString(0, at)).size());
    }
    return result;
}

TEST(TextFolding, RangesAreWhereTheFoldedTextHasATerm) {
    const TextFolding folding("en_US");
    RandomText random(11);
    int found = 0;
    for (int round = 0; round < 20'000; ++round) {
        const auto text = random.make(14);
        const auto bytes = utf8Of(text);
        std::vector<std::string> terms;
        for (int count = 1 + random.below(2); count > 0; --count) {
            auto term = random.make(2);
            if (random.below(2) == 0 && text.length() > 0) {
                const auto start = random.below(text.length());
                term = text.tempSubString(start, 1 + random.below(3));
            }
            terms.push_back(folding.folded(utf8Of(term)));
        }
        const auto folded = folding.folded(bytes);
        const auto isThere = std::any_of(terms.begin(), terms.end(), [&](const auto& term) {
            return !term.empty() && folded.find(term) != std::string::npos;
        });
        const auto ranges = folding.ranges(bytes, terms);
        ASSERT_EQ(!ranges.empty(), isThere) << bytes;
        const auto places = boundaries(text);
        std::size_t end = 0;
        for (const auto& range : ranges) {
            ASSERT_GT(range.length, 0U);
            ASSERT_TRUE(end == 0 || range.offset > end) << bytes;
            end = range.offset + range.length;
            ASSERT_THAT(places, testing::Contains(range.offset)) << bytes;
            ASSERT_THAT(places, testing::Contains(end)) << bytes;
            const auto part =
                folding.folded(std::string_view(bytes).substr(range.offset, range.length));
            EXPECT_TRUE(std::any_of(terms.begin(), terms.end(), [&](const auto& term) {
                return !term.empty() && part.find(term) != std::string::npos;
            })) << bytes;
        }
        found += isThere ? 1 : 0;
    }
    EXPECT_GT(found, 2'000);
}

TEST(TextFolding, RangesCoverWholeCharacters) {
    const TextFolding folding("en_US");
    const auto marked = [&](std::string text, const std::vector<std::string>& terms) {
        const auto ranges = folding.ranges(text, terms);
        for (auto range = ranges.rbegin(); range != ranges.rend(); ++range) {
            text.insert(range->offset + range->length, "]").insert(range->offset, "[");
        }
        return text;
    };
    EXPECT_EQ(marked("Café au lait", {"cafe", "la"}), "[Café] au [la]it");
    EXPECT_EQ(marked("cafe\u0301s", {"cafe"}), "[cafe\u0301]s");
    EXPECT_EQ(marked("Straße", {"s"}), "[S]tra[ß]e");
    EXPECT_EQ(marked("banana", {"an", "na"}), "b[anana]");
    EXPECT_EQ(marked("👩\u200d👩\u200d👧 x", {"👧"}), "[👩\u200d👩\u200d👧] x");
    EXPECT_EQ(marked("ｷﾞﾀｰ", {"ギ"}), "[ｷﾞ]ﾀｰ");
    EXPECT_EQ(marked("nothing", {"", "x"}), "nothing");
}

TEST(TextFolding, DamagedTextStaysAndTakesNoTime) {
    const TextFolding folding("en_US");
    for (const std::string text :
         {"\xff", "a\xc3", "\xe2\x82", "x\xed\xa0\x80y", "\xf8\x88\x80\x80"}) {
        EXPECT_EQ(folding.folded(text), text);
    }
    EXPECT_EQ(folding.folded("É\xff"
                             "é\xc3"),
              "e\xff"
              "e\xc3");
    EXPECT_EQ(folding.folded("e\u0301\xff"
                             "E\u0301"),
              "e\xff"
              "e");
    EXPECT_FALSE(folding
                     .ranges("\xff"
                             "A\xc3",
                             {"a"})
                     .empty());
    // To put so many marks in order all at once would take minutes.
    std::string marks = "e";
    for (int i = 0; i < 200'000; ++i) {
        marks += i % 2 == 0 ? "\u0301" : "\u0323";
    }
    EXPECT_EQ(folding.folded(marks), "e");
    EXPECT_EQ(folding.ranges(marks, {"e"}).size(), 1U);
}

} // namespace
} // namespace korvex::base
