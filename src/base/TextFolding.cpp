#include "base/TextFolding.h"

#include "base/CharacterFolding.h"
#include "base/IcuText.h"
#include "base/Text.h"
#include "base/UserLocale.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstring>
#include <limits>

namespace korvex::base {

namespace {

using Form = CharacterFolding::Form;
using Kind = CharacterFolding::Kind;

/// A letter with more marks than this is cut: putting them in order takes ICU the square of them.
constexpr std::size_t kLongestSegment = 128;

CharacterFolding::DotlessI dotlessI(const icu::Locale& locale) {
    const std::string_view language = locale.getLanguage();
    return language == "tr" || language == "az" ? CharacterFolding::DotlessI::isALetter
                                                : CharacterFolding::DotlessI::isOneWithI;
}

/// The code point at `position`, which moves behind it; negative for bytes that are no UTF-8.
UChar32 next(std::string_view text, std::size_t& position) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    UChar32 codePoint = 0;
    U8_NEXT(bytes, position, text.size(), codePoint);
    return codePoint;
}

/// Eight letters of ASCII in lower case.
std::uint64_t lowercased(std::uint64_t word) {
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    const auto fromA = word + kOnes * (0x80 - 'A');
    const auto behindZ = word + kOnes * (0x80 - 'Z' - 1);
    return word | ((fromA & ~behindZ & kOnes * 0x80) >> 2U);
}

} // namespace

struct TextFolding::Tables {
    explicit Tables(CharacterFolding::DotlessI i) : characters(i) {
        isEnglishAscii = i == CharacterFolding::DotlessI::isOneWithI;
    }

    bool appendSettled(std::string_view text, std::string& to) const;
    std::size_t appendSegment(std::string_view text, std::size_t position, std::string& to) const;
    void appendComposed(std::string_view segment, std::string& to) const;

    CharacterFolding characters;
    /// ASCII folds to ASCII.
    bool isEnglishAscii = true;
};

TextFolding::TextFolding(const std::string& locale)
    : m_tables(std::make_unique<Tables>(dotlessI(userLocale(locale, "LC_CTYPE")))) {}

TextFolding::~TextFolding() = default;

std::string TextFolding::folded(std::string_view text) const {
    std::string result;
    result.reserve(text.size());
    appendFolded(text, result);
    return result;
}

void TextFolding::appendFolded(std::string_view text, std::string& to) const {
    const auto before = to.size();
    if (m_tables->appendSettled(text, to)) {
        return;
    }
    to.resize(before);
    for (std::size_t position = 0; position < text.size();) {
        position = m_tables->appendSegment(text, position, to);
    }
}

/// Folds code point by code point; false where that is not enough, with anything appended.
bool TextFolding::Tables::appendSettled(std::string_view text, std::string& to) const {
    constexpr std::size_t kChunk = 4096;
    std::array<char, kChunk + Form::kRoom + sizeof(std::uint64_t)> chunk;
    std::size_t used = 0;
    std::size_t position = 0;
    std::uint8_t lastClass = 0;
    while (position < text.size()) {
        if (used >= kChunk) {
            to.append(chunk.data(), used);
            used = 0;
        }
        std::uint64_t word = 0;
        if (isEnglishAscii && position + sizeof word <= text.size()) {
            std::memcpy(&word, text.data() + position, sizeof word);
            if ((word & 0x8080808080808080) == 0) {
                word = lowercased(word);
                std::memcpy(chunk.data() + used, &word, sizeof word);
                position += sizeof word;
                used += sizeof word;
                lastClass = 0;
                continue;
            }
        }
        const auto start = position;
        const auto codePoint = next(text, position);
        if (codePoint < 0) {
            to.append(chunk.data(), used);
            to.append(text, start, position - start);
            used = 0;
            lastClass = 0;
            continue;
        }
        const auto& form = characters.form(codePoint);
        switch (form.kind) {
        case Kind::plain:
            lastClass = 0;
            break;
        case Kind::markEnded:
            lastClass = std::numeric_limits<std::uint8_t>::max();
            break;
        case Kind::nothing:
            continue;
        case Kind::mark: {
            const auto combiningClass = u_getCombiningClass(codePoint);
            if (combiningClass < lastClass) {
                return false;
            }
            lastClass = combiningClass;
            break;
        }
        case Kind::joining:
            return false;
        }
        if (form.length == Form::kIsLong) {
            to.append(chunk.data(), used);
            to.append(characters.longForm(form));
            used = 0;
        } else {
            std::memcpy(chunk.data() + used, form.bytes.data(), Form::kRoom);
            used += form.length;
        }
    }
    to.append(chunk.data(), used);
    return true;
}

/// Folds what begins at `position` up to the next code point that begins anew, which is where the
/// result points to. A text is folded as its segments are.
std::size_t TextFolding::Tables::appendSegment(std::string_view text, std::size_t position,
                                               std::string& to) const {
    const auto start = position;
    const auto first = next(text, position);
    if (first < 0) {
        to.append(text, start, position - start);
        return position;
    }
    auto isSettled = true;
    const auto settle = [&](const Form& form) {
        isSettled = isSettled && (form.kind == Kind::plain || form.kind == Kind::nothing);
    };
    settle(characters.form(first));
    for (std::size_t count = 1; count < kLongestSegment && position < text.size(); ++count) {
        auto behind = position;
        const auto codePoint = next(text, behind);
        if (codePoint < 0) {
            break;
        }
        const auto& form = characters.form(codePoint);
        if (form.kind == Kind::plain || form.kind == Kind::markEnded) {
            break;
        }
        settle(form);
        position = behind;
    }
    if (isSettled) {
        characters.append(characters.form(first), to);
    } else {
        appendComposed(text.substr(start, position - start), to);
    }
    return position;
}

void TextFolding::Tables::appendComposed(std::string_view segment, std::string& to) const {
    icu::UnicodeString visible;
    for (std::size_t position = 0; position < segment.size();) {
        const auto codePoint = next(segment, position);
        if (characters.form(codePoint).kind != Kind::nothing) {
            visible.append(codePoint);
        }
    }
    UErrorCode status = U_ZERO_ERROR;
    const auto composed = characters.composition().normalize(visible, status);
    std::string folded;
    for (std::int32_t i = 0; i < composed.length(); i = composed.moveIndex32(i, 1)) {
        characters.append(characters.form(composed.char32At(i)), folded);
    }
    // Letters may have come together when what stood between them went.
    to.append(
        utf8(characters.composition().normalize(icu::UnicodeString::fromUTF8(folded), status)));
}

std::vector<ByteRange> TextFolding::ranges(std::string_view text,
                                           const std::vector<std::string>& foldedTerms) const {
    struct Segment {
        std::size_t source;
        std::size_t folded;
    };
    std::vector<Segment> segments;
    std::string folded;
    folded.reserve(text.size());
    for (std::size_t position = 0; position < text.size();) {
        segments.push_back({position, folded.size()});
        position = m_tables->appendSegment(text, position, folded);
    }
    // The last segment that begins at or before a byte of the folded text holds that byte.
    const auto segmentOf = [&](std::size_t offset) {
        return std::upper_bound(
                   segments.begin(), segments.end(), offset,
                   [](std::size_t value, const Segment& each) { return value < each.folded; }) -
               1;
    };
    std::vector<ByteRange> found;
    for (const auto& term : foldedTerms) {
        if (term.empty()) {
            continue;
        }
        for (auto at = folded.find(term); at != std::string::npos;
             at = folded.find(term, at + term.size())) {
            const auto first = segmentOf(at);
            const auto last = segmentOf(at + term.size() - 1);
            const auto end = last + 1 == segments.end() ? text.size() : (last + 1)->source;
            const auto start = characterStart(text, first->source);
            found.push_back({start, characterEnd(text, end) - start});
        }
    }
    std::sort(found.begin(), found.end(),
              [](const ByteRange& a, const ByteRange& b) { return a.offset < b.offset; });
    std::vector<ByteRange> joined;
    for (const auto& range : found) {
        if (!joined.empty() && range.offset <= joined.back().offset + joined.back().length) {
            joined.back().length =
                std::max(joined.back().length, range.offset + range.length - joined.back().offset);
        } else {
            joined.push_back(range);
        }
    }
    return joined;
}

} // namespace korvex::base
