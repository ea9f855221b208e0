#include "model/EntryContentLimit.h"

#include "base/Text.h"

#include <algorithm>

namespace korvex::model {

namespace {

enum class Side { before, after };

/// The byte offset of a UTF-16 offset. Inside a surrogate pair it is that character's start or end;
/// past the end it is the end.
std::size_t nearestByteOffset(std::string_view text, std::size_t utf16Offset, Side side) {
    if (const auto exact = base::byteOffset(text, utf16Offset)) {
        return *exact;
    }
    const auto neighbour = side == Side::before ? utf16Offset - 1 : utf16Offset + 1;
    return base::byteOffset(text, neighbour).value_or(text.size());
}

} // namespace

bool EntryContentLimit::allows(std::string_view text) {
    // A character has at least one byte, so few bytes need no counting either.
    return text.size() <= kMaximumCharacters ||
           (text.size() <= kMaximumBytes &&
            base::characterCount(text, kMaximumCharacters + 1) <= kMaximumCharacters);
}

std::string_view EntryContentLimit::preview(std::string_view text) {
    return allows(text) ? text : base::characterPrefix(text, kPreviewCharacters);
}

bool EntryContentLimit::allowsReplacing(std::string_view text, std::size_t utf16Offset,
                                        std::size_t utf16Length, std::string_view replacement) {
    if (text.size() + replacement.size() <= kMaximumCharacters) {
        return true;
    }
    // No text has more UTF-16 units than bytes: clamped so, the sum cannot wrap around.
    const auto utf16Start = std::min(utf16Offset, text.size());
    const auto utf16End = utf16Start + std::min(utf16Length, text.size());
    const auto start = nearestByteOffset(text, utf16Start, Side::before);
    const auto end =
        utf16End == utf16Start ? start : nearestByteOffset(text, utf16End, Side::after);

    std::string result;
    result.reserve(start + replacement.size() + (text.size() - end));
    result.append(text.substr(0, start)).append(replacement).append(text.substr(end));
    return allows(result) || (replacement.empty() && !allows(text));
}

} // namespace korvex::model
