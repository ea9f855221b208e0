#include "base/CharacterFolding.h"

#include "base/IcuText.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uscript.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace korvex::base {

namespace {

constexpr UChar32 kKanaVoiced = 0x3099;
constexpr UChar32 kKanaSemiVoiced = 0x309a;
constexpr UChar32 kHalfwidthVoiced = 0xff9e;
constexpr UChar32 kHalfwidthSemiVoiced = 0xff9f;
constexpr UChar32 kTatweel = 0x0640;
constexpr UChar32 kDotlessI = 0x0131;
constexpr UChar32 kDottedI = 0x0130;

/// Letters that are another with a stroke or a hook through them, or two written as one: Unicode
/// takes none of them apart.
struct Letter {
    UChar32 letter;
    const char16_t* plain;
};
constexpr std::array kLetters{
    Letter{0x00df, u"ss"}, Letter{0x00e6, u"ae"}, Letter{0x00f0, u"d"}, Letter{0x00f8, u"o"},
    Letter{0x0111, u"d"},  Letter{0x0127, u"h"},  Letter{0x0142, u"l"}, Letter{0x0153, u"oe"},
    Letter{0x0167, u"t"},  Letter{0x01b6, u"z"},  Letter{0x01e5, u"g"}, Letter{0x0491, u"г"},
};
static_assert(std::is_sorted(kLetters.begin(), kLetters.end(),
                             [](const Letter& a, const Letter& b) { return a.letter < b.letter; }));

UScriptCode scriptOf(UChar32 codePoint) {
    UErrorCode status = U_ZERO_ERROR;
    return uscript_getScript(codePoint, &status);
}

/// What people write above, below and through letters and leave out as well. Where a mark is all
/// that tells one letter from another (が from か) or is a vowel of its own, as in the scripts of
/// India, it is none.
bool isDiacritic(UChar32 codePoint) {
    if (u_charType(codePoint) != U_NON_SPACING_MARK || codePoint == kKanaVoiced ||
        codePoint == kKanaSemiVoiced) {
        return false;
    }
    switch (scriptOf(codePoint)) {
    case USCRIPT_INHERITED:
    case USCRIPT_COMMON:
    case USCRIPT_LATIN:
    case USCRIPT_GREEK:
    case USCRIPT_CYRILLIC:
    case USCRIPT_HEBREW:
    case USCRIPT_ARABIC:
    case USCRIPT_SYRIAC:
    case USCRIPT_COPTIC:
        return true;
    default:
        return false;
    }
}

/// Soft hyphens, joiners, marks of direction: nobody sees them. The tags that tell one flag from
/// another are seen, and so are the fillers in the place of a letter.
bool isInvisible(UChar32 codePoint) {
    return codePoint == kTatweel ||
           (u_charType(codePoint) == U_FORMAT_CHAR &&
            u_hasBinaryProperty(codePoint, UCHAR_DEFAULT_IGNORABLE_CODE_POINT) &&
            codePoint < 0xe0000);
}

bool isSymbol(UChar32 codePoint) {
    return (U_GET_GC_MASK(codePoint) & U_GC_S_MASK) != 0;
}

bool hasWhiteSpace(const icu::UnicodeString& text) {
    for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
        if (u_isUWhiteSpace(text.char32At(i))) {
            return true;
        }
    }
    return false;
}

const icu::Normalizer2& checked(const icu::Normalizer2* normalizer, UErrorCode status) {
    if (U_FAILURE(status) || !normalizer) {
        throw std::runtime_error(std::string("ICU has no normalization: ") + u_errorName(status));
    }
    return *normalizer;
}

const icu::Normalizer2& composing() {
    UErrorCode status = U_ZERO_ERROR;
    const auto* normalizer = icu::Normalizer2::getNFCInstance(status);
    return checked(normalizer, status);
}

const icu::Normalizer2& compatible() {
    UErrorCode status = U_ZERO_ERROR;
    const auto* normalizer = icu::Normalizer2::getNFKDInstance(status);
    return checked(normalizer, status);
}

} // namespace

CharacterFolding::CharacterFolding(DotlessI dotlessI)
    : m_dotlessI(dotlessI), m_composition(composing()), m_compatibility(compatible()) {}

std::string_view CharacterFolding::longForm(const Form& form) const {
    std::uint32_t number = 0;
    std::memcpy(&number, form.bytes.data(), sizeof number);
    return m_longForms[number];
}

const CharacterFolding::Block& CharacterFolding::filled(UChar32 codePoint) const {
    const auto first = static_cast<std::size_t>(codePoint) / kBlockSize * kBlockSize;
    auto block = std::make_unique<Block>();
    for (std::size_t i = 0; i < kBlockSize; ++i) {
        (*block)[i] = made(static_cast<UChar32>(first + i));
    }
    auto& place = m_blocks[first / kBlockSize];
    place = std::move(block);
    return *place;
}

CharacterFolding::Form CharacterFolding::made(UChar32 codePoint) const {
    icu::UnicodeString folded;
    fold(codePoint, folded);
    UErrorCode status = U_ZERO_ERROR;
    const auto text = utf8(m_composition.normalize(folded, status));
    Form form;
    if (codePoint == kHalfwidthVoiced || codePoint == kHalfwidthSemiVoiced ||
        u_getIntPropertyValue(codePoint, UCHAR_NFC_QUICK_CHECK) == UNORM_MAYBE) {
        form.kind = Kind::joining;
    } else if (text.empty()) {
        form.kind = Kind::nothing;
    } else if (!m_composition.hasBoundaryBefore(codePoint)) {
        form.kind = u_getCombiningClass(codePoint) != 0 ? Kind::mark : Kind::joining;
    } else if (u_getCombiningClass(folded.char32At(folded.length() - 1)) != 0) {
        form.kind = Kind::markEnded;
    }
    if (text.size() <= Form::kRoom) {
        form.length = static_cast<std::uint8_t>(text.size());
        std::copy(text.begin(), text.end(), form.bytes.begin());
    } else {
        const auto number = static_cast<std::uint32_t>(m_longForms.size());
        form.length = Form::kIsLong;
        std::memcpy(form.bytes.data(), &number, sizeof number);
        m_longForms.push_back(text);
    }
    return form;
}

void CharacterFolding::fold(UChar32 codePoint, icu::UnicodeString& to) const {
    if (isInvisible(codePoint) || isDiacritic(codePoint)) {
        return;
    }
    if (codePoint == 'I' && m_dotlessI == DotlessI::isALetter) {
        to.append(kDotlessI);
        return;
    }
    if (codePoint == kDottedI || (codePoint == kDotlessI && m_dotlessI == DotlessI::isOneWithI)) {
        to.append(u'i');
        return;
    }
    // Case first: in Turkish, Ì is the capital of ì although I is not that of i.
    if (const auto lower = u_foldCase(codePoint, U_FOLD_CASE_DEFAULT); lower != codePoint) {
        fold(lower, to);
        return;
    }
    const auto parts = decomposed(codePoint);
    if (parts != icu::UnicodeString(codePoint)) {
        for (std::int32_t i = 0; i < parts.length(); i = parts.moveIndex32(i, 1)) {
            fold(parts.char32At(i), to);
        }
        return;
    }
    const auto letter =
        std::lower_bound(kLetters.begin(), kLetters.end(), codePoint,
                         [](const Letter& each, UChar32 value) { return each.letter < value; });
    if (letter != kLetters.end() && letter->letter == codePoint) {
        to.append(letter->plain, -1);
    } else {
        to.append(codePoint);
    }
}

icu::UnicodeString CharacterFolding::decomposed(UChar32 codePoint) const {
    icu::UnicodeString itself(codePoint);
    UErrorCode status = U_ZERO_ERROR;
    // An equivalent that Unicode keeps for old times' sake.
    if (auto canonical = m_composition.normalize(itself, status); canonical != itself) {
        return canonical;
    }
    icu::UnicodeString parts;
    // A syllable is no letter of it, nor are letters side by side a syllable; narrow ones are wide.
    if (scriptOf(codePoint) == USCRIPT_HANGUL) {
        const auto isNarrow =
            u_getIntPropertyValue(codePoint, UCHAR_DECOMPOSITION_TYPE) == U_DT_NARROW;
        return isNarrow && m_compatibility.getRawDecomposition(codePoint, parts) ? parts : itself;
    }
    if (!m_compatibility.getDecomposition(codePoint, parts)) {
        return itself;
    }
    const auto isCanonical =
        u_getIntPropertyValue(codePoint, UCHAR_DECOMPOSITION_TYPE) == U_DT_CANONICAL;
    // ≠ is not an = with an accent.
    if (isCanonical && isSymbol(codePoint)) {
        return itself;
    }
    // ´ would become a space, which is in no word.
    return hasWhiteSpace(parts) && !u_isUWhiteSpace(codePoint) ? itself : parts;
}

} // namespace korvex::base
