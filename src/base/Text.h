#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::base {

/// All texts are UTF-8; functions that need valid UTF-8 say so.

bool isValidUtf8(std::string_view text);

/// Makes a text valid UTF-8: bytes that are not become the replacement character, nothing else
/// changes.
std::string repairedUtf8(std::string_view text);

/// The text without white space and line breaks (Unicode's White_Space) at both ends.
std::string_view trimmed(std::string_view text);

/// The number of characters as the user perceives them (extended grapheme clusters), counted no
/// further than `limit`: the result is `limit` for any text of `limit` characters or more.
std::size_t characterCount(std::string_view text, std::size_t limit);
/// Counts the characters of a UTF-16 text; surrogates that stand alone count as characters.
std::size_t characterCount(std::u16string_view text, std::size_t limit);

/// The first `count` characters of `text`, all of it when it is shorter.
std::string_view characterPrefix(std::string_view text, std::size_t count);

/// The nearest place between two characters at or before `offset`, and at or behind it.
std::size_t characterStart(std::string_view text, std::size_t offset);
std::size_t characterEnd(std::string_view text, std::size_t offset);

/// The pieces between white space (Unicode's White_Space, line breaks too); views into `text`.
std::vector<std::string_view> words(std::string_view text);

/// The lines that are not blank, each trimmed, whatever Unicode ends a line with; views into
/// `text`.
std::vector<std::string_view> filledLines(std::string_view text);

/// The byte offset of a UTF-16 offset; absent when it lies past the end or inside a character's
/// surrogate pair.
std::optional<std::size_t> byteOffset(std::string_view text, std::size_t utf16Offset);

/// Lines of a text, split at LF, CR and CRLF; without the line breaks.
/// The views into `text` live as long as it does.
template <typename Sink>
void forEachLine(std::string_view text, Sink&& sink) {
    while (!text.empty()) {
        const auto end = text.find_first_of("\r\n");
        if (end == std::string_view::npos) {
            sink(text);
            return;
        }
        sink(text.substr(0, end));
        const auto isPair = text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n';
        text.remove_prefix(end + (isPair ? 2 : 1));
    }
}

} // namespace korvex::base
