#include "richtext/rtf/RtfJohab.h"

#include <string_view>

namespace korvex::richtext::rtf {

namespace {

constexpr char16_t kReplacement = u'\uFFFD';
constexpr int kNone = -1;
constexpr int kVowels = 21;
/// Ends of a syllable, of which the first is none.
constexpr int kEnds = 28;

/// The letters that begin a syllable, and those that end one, as they stand alone.
constexpr std::u16string_view kInitials =
    u"\u3131\u3132\u3134\u3137\u3138\u3139\u3141\u3142\u3143\u3145\u3146\u3147\u3148\u3149\u314A"
    u"\u314B\u314C\u314D\u314E";
constexpr std::u16string_view kFinals =
    u"\u3131\u3132\u3133\u3134\u3135\u3136\u3137\u3139\u313A\u313B\u313C\u313D\u313E\u313F\u3140"
    u"\u3141\u3142\u3144\u3145\u3146\u3147\u3148\u314A\u314B\u314C\u314D\u314E";
constexpr char16_t kFirstVowel = u'\u314F';
constexpr char16_t kFirstSyllable = u'\uAC00';

/// From 0 for no letter; `kNone` for what is not used.
int initialOf(int code) {
    return code >= 1 && code <= 20 ? code - 1 : kNone;
}

/// The vowels stand in groups, with two codes unused between them.
int vowelOf(int code) {
    constexpr int kGroup = 8;
    const auto place = code % kGroup;
    if (code < 2 || code > 29 || (code >= kGroup && place < 2)) {
        return kNone;
    }
    return code - 2 - 2 * (code / kGroup);
}

int finalOf(int code) {
    constexpr int kUnused = 18;
    if (code < 1 || code > 29 || code == kUnused) {
        return kNone;
    }
    return code < kUnused ? code - 1 : code - 2;
}

char16_t syllableOf(int initial, int vowel, int final) {
    if (initial > 0 && vowel > 0) {
        return static_cast<char16_t>(kFirstSyllable +
                                     ((initial - 1) * kVowels + vowel - 1) * kEnds + final);
    }
    if (initial > 0 && final == 0) {
        return kInitials[static_cast<std::size_t>(initial - 1)];
    }
    if (vowel > 0 && initial == 0 && final == 0) {
        return static_cast<char16_t>(kFirstVowel + vowel - 1);
    }
    if (final > 0 && initial == 0 && vowel == 0) {
        return kFinals[static_cast<std::size_t>(final - 1)];
    }
    return kReplacement;
}

} // namespace

Korean koreanOfJohab(std::uint8_t lead, std::uint8_t trail) {
    constexpr int kLastSyllable = 0xD3;
    constexpr int kFirstOther = 0xD8;
    constexpr int kFirstHanja = 0xE0;
    constexpr int kUpperTrails = 0x91;
    constexpr int kRow = 94;
    if (lead <= kLastSyllable) {
        const auto code = static_cast<unsigned>(lead) << 8U | trail;
        const auto initial = initialOf(static_cast<int>(code >> 10U & 0x1FU));
        const auto vowel = vowelOf(static_cast<int>(code >> 5U & 0x1FU));
        const auto final = finalOf(static_cast<int>(code & 0x1FU));
        const auto isSound = initial != kNone && vowel != kNone && final != kNone;
        return {.unit = isSound ? syllableOf(initial, vowel, final) : kReplacement};
    }
    const auto isTrail =
        (trail >= 0x31 && trail <= 0x7E) || (trail >= kUpperTrails && trail <= 0xFE);
    // The row before the symbols is for characters of one's own.
    if (!isTrail || lead <= kFirstOther || lead == kFirstHanja - 1) {
        return {.unit = kReplacement};
    }
    // Each lead byte has two rows.
    const auto row = lead < kFirstHanja ? 2 * (lead - 0xD9) : 2 * (lead - kFirstHanja) + 41;
    const auto column = trail < kUpperTrails ? trail - 0x31 : trail - 0x43;
    constexpr int kUpperHalf = 0xA1;
    return {.standard = {static_cast<char>(row + column / kRow + kUpperHalf),
                         static_cast<char>(column % kRow + kUpperHalf)}};
}

} // namespace korvex::richtext::rtf
