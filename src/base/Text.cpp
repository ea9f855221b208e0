#include "base/Text.h"

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace korvex::base {

namespace {

constexpr bool isAscii(char character) {
    return static_cast<unsigned char>(character) < 0x80;
}

constexpr bool isAscii(char16_t unit) {
    return unit < 0x80;
}

/// How many bytes from `offset` on are ASCII.
std::size_t asciiLength(std::string_view text, std::size_t offset) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    auto position = offset;
    for (std::uint64_t word = 0; position + sizeof word <= text.size(); position += sizeof word) {
        std::memcpy(&word, text.data() + position, sizeof word);
        if ((word & kHighBits) != 0) {
            break;
        }
    }
    while (position < text.size() && isAscii(text[position])) {
        ++position;
    }
    return position - offset;
}

/// A view of UTF-8 or UTF-16 as ICU reads it.
class OpenText {
public:
    explicit OpenText(std::string_view text) {
        UErrorCode status = U_ZERO_ERROR;
        utext_openUTF8(&m_text, text.data(), static_cast<std::int64_t>(text.size()), &status);
    }
    explicit OpenText(std::u16string_view text) {
        UErrorCode status = U_ZERO_ERROR;
        utext_openUChars(&m_text, text.data(), static_cast<std::int64_t>(text.size()), &status);
    }
    ~OpenText() { utext_close(&m_text); }
    OpenText(const OpenText&) = delete;
    OpenText& operator=(const OpenText&) = delete;

    UText* get() { return &m_text; }

private:
    UText m_text = UTEXT_INITIALIZER;
};

/// Reading the rules anew for each text would cost more than most texts; characters have no locale.
icu::BreakIterator& characterBreaks() {
    thread_local const std::unique_ptr<icu::BreakIterator> breaks = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> made(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        if (U_FAILURE(status)) {
            throw std::runtime_error(std::string("ICU has no character breaks: ") +
                                     u_errorName(status));
        }
        return made;
    }();
    return *breaks;
}

struct Walk {
    std::size_t characters = 0;
    /// Bytes of UTF-8, units of UTF-16.
    std::size_t units = 0;
};

/// Walks over ASCII, where only CRLF is more than one unit, up to the last character before
/// anything else: what follows may join it.
template <typename Unit>
Walk walkAscii(std::basic_string_view<Unit> text, std::size_t limit) {
    Walk walk;
    while (walk.characters < limit && walk.units < text.size() && isAscii(text[walk.units])) {
        const auto second = walk.units + 1;
        const auto isPair =
            text[walk.units] == Unit('\r') && second < text.size() && text[second] == Unit('\n');
        const auto next = walk.units + (isPair ? 2 : 1);
        if (next < text.size() && !isAscii(text[next])) {
            break;
        }
        walk.units = next;
        ++walk.characters;
    }
    return walk;
}

/// Walks over at most `limit` characters and no further into the text than they reach.
template <typename Unit>
Walk walkCharacters(std::basic_string_view<Unit> text, std::size_t limit) {
    auto walk = walkAscii(text, limit);
    if (walk.characters == limit || walk.units == text.size()) {
        return walk;
    }
    const auto rest = text.substr(walk.units);
    OpenText open(rest);
    UErrorCode status = U_ZERO_ERROR;
    auto& breaks = characterBreaks();
    breaks.setText(open.get(), status);
    std::int32_t end = 0;
    while (walk.characters < limit && (end = breaks.next()) != icu::BreakIterator::DONE) {
        ++walk.characters;
        walk.units = text.size() - rest.size() + static_cast<std::size_t>(end);
    }
    return walk;
}

/// A place that needs no rules: an end of the text, or between ASCII (but CRLF is one character).
bool isBetweenAscii(std::string_view text, std::size_t offset) {
    return offset == 0 || offset >= text.size() ||
           (isAscii(text[offset - 1]) && isAscii(text[offset]) && text[offset] != '\n');
}

icu::BreakIterator& openedBreaks(OpenText& text) {
    UErrorCode status = U_ZERO_ERROR;
    auto& breaks = characterBreaks();
    breaks.setText(text.get(), status);
    return breaks;
}

/// Line feed and its like, next line, the separators of lines and paragraphs.
constexpr bool endsLine(UChar32 codePoint) {
    return (codePoint >= '\n' && codePoint <= '\r') || codePoint == 0x85 || codePoint == 0x2028 ||
           codePoint == 0x2029;
}

} // namespace

bool isValidUtf8(std::string_view text) {
    std::size_t position = 0;
    while (true) {
        position += asciiLength(text, position);
        if (position == text.size()) {
            return true;
        }
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        UChar32 codePoint = 0;
        U8_NEXT(bytes, position, text.size(), codePoint);
        if (codePoint < 0) {
            return false;
        }
    }
}

std::string repairedUtf8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    std::string result;
    result.reserve(text.size());
    for (std::size_t next = 0; next < text.size();) {
        const auto start = next;
        UChar32 codePoint = 0;
        U8_NEXT(bytes, next, text.size(), codePoint);
        result.append(codePoint < 0 ? "\uFFFD" : text.substr(start, next - start));
    }
    return result;
}

std::string_view trimmed(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    std::size_t start = 0;
    for (auto next = start; next < text.size(); start = next) {
        UChar32 codePoint = 0;
        U8_NEXT(bytes, next, text.size(), codePoint);
        if (!u_isUWhiteSpace(codePoint)) {
            break;
        }
    }
    auto end = text.size();
    for (auto previous = end; previous > start; end = previous) {
        do {
            --previous;
        } while (previous > start && U8_IS_TRAIL(bytes[previous]));
        auto next = previous;
        UChar32 codePoint = 0;
        U8_NEXT(bytes, next, end, codePoint);
        if (!u_isUWhiteSpace(codePoint)) {
            break;
        }
    }
    return text.substr(start, end - start);
}

std::size_t characterCount(std::string_view text, std::size_t limit) {
    return walkCharacters(text, limit).characters;
}

std::size_t characterCount(std::u16string_view text, std::size_t limit) {
    return walkCharacters(text, limit).characters;
}

std::string_view characterPrefix(std::string_view text, std::size_t count) {
    return text.substr(0, walkCharacters(text, count).units);
}

std::size_t characterStart(std::string_view text, std::size_t offset) {
    if (isBetweenAscii(text, offset)) {
        return offset;
    }
    const auto wanted = static_cast<std::int32_t>(offset);
    OpenText open(text);
    auto& breaks = openedBreaks(open);
    return breaks.isBoundary(wanted) ? offset : static_cast<std::size_t>(breaks.preceding(wanted));
}

std::size_t characterEnd(std::string_view text, std::size_t offset) {
    if (isBetweenAscii(text, offset)) {
        return offset;
    }
    OpenText open(text);
    auto& breaks = openedBreaks(open);
    // Moves to the next one where this is none.
    static_cast<void>(breaks.isBoundary(static_cast<std::int32_t>(offset)));
    return static_cast<std::size_t>(breaks.current());
}

std::vector<std::string_view> words(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    for (std::size_t position = 0; position < text.size();) {
        const auto end = position;
        UChar32 codePoint = 0;
        U8_NEXT(bytes, position, text.size(), codePoint);
        if (codePoint >= 0 && u_isUWhiteSpace(codePoint)) {
            if (end > start) {
                pieces.push_back(text.substr(start, end - start));
            }
            start = position;
        }
    }
    if (start < text.size()) {
        pieces.push_back(text.substr(start));
    }
    return pieces;
}

std::vector<std::string_view> filledLines(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    std::vector<std::string_view> lines;
    std::size_t start = 0;
    for (std::size_t position = 0; start < text.size();) {
        const auto end = position;
        UChar32 codePoint = '\n'; // the end of the text
        if (position < text.size()) {
            U8_NEXT(bytes, position, text.size(), codePoint);
        }
        if (endsLine(codePoint)) {
            // CR and LF together leave an empty line between them.
            if (const auto line = trimmed(text.substr(start, end - start)); !line.empty()) {
                lines.push_back(line);
            }
            start = position;
        }
    }
    return lines;
}

std::optional<std::size_t> byteOffset(std::string_view text, std::size_t utf16Offset) {
    std::size_t position = 0;
    auto remaining = utf16Offset;
    while (remaining > 0) {
        const auto ascii = std::min(asciiLength(text, position), remaining);
        position += ascii;
        remaining -= ascii;
        if (remaining == 0) {
            break;
        }
        if (position == text.size()) {
            return std::nullopt;
        }
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
        UChar32 codePoint = 0;
        U8_NEXT_OR_FFFD(bytes, position, text.size(), codePoint);
        const std::size_t units = U16_LENGTH(codePoint);
        if (units > remaining) {
            return std::nullopt;
        }
        remaining -= units;
    }
    return position;
}

} // namespace korvex::base
