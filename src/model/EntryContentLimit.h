#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvex::model {

/// How long an entry's text may be; shared by everything that writes or edits entry text. Texts are
/// valid UTF-8.
struct EntryContentLimit {
    EntryContentLimit() = delete;

    static constexpr std::size_t kMaximumCharacters = 10'000;
    static constexpr std::size_t kMaximumBytes = 1'048'576;
    static constexpr std::size_t kPreviewCharacters = 500;

    /// Whether a text has at most 10,000 characters (grapheme clusters); over 1,048,576 bytes it is
    /// decided without counting, so that a huge paste costs nothing.
    static bool allows(std::string_view text);

    /// The text itself when it is within the limit, else its first 500 characters.
    static std::string_view preview(std::string_view text);

    /// Whether the text that results from replacing a range (UTF-16 offset and length) is within
    /// the limit. A range outside the text is clamped to it; one that ends inside a character's
    /// surrogate pair covers the character. A text that is over the limit already may get shorter:
    /// an edit that takes away from it and adds nothing is allowed, so nobody is locked in.
    static bool allowsReplacing(std::string_view text, std::size_t utf16Offset,
                                std::size_t utf16Length, std::string_view replacement);
};

} // namespace korvex::model
