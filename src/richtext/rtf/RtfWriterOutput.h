#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace korvex::richtext::rtf {

/// RTF as it grows: control words and text with what RTF needs escaped.
class Output {
public:
    const std::string& bytes() const { return m_bytes; }
    bool isEmpty() const { return m_bytes.empty(); }
    void reserve(std::size_t bytes) { m_bytes.reserve(bytes); }

    /// Bytes as they are: control words with their backslash, braces, line breaks.
    void raw(std::string_view bytes) { m_bytes += bytes; }
    void raw(char byte) { m_bytes.push_back(byte); }
    /// A control word with a parameter. The word comes with its backslash.
    void word(std::string_view word, std::int64_t parameter);

    /// Text in code page 1252. A line feed in it is a character, not the end of a paragraph.
    void text(std::u16string_view text);

    /// A `{`, after which what readers must know for `text` holds until the `}`.
    void openGroup() { raw('{'); }
    void closeGroup() {
        raw('}');
        m_isWithoutFallbacks = false;
    }

private:
    void escaped(char16_t unit);

    std::string m_bytes;
    /// Whether readers know that no substitute follows an escaped character.
    bool m_isWithoutFallbacks = false;
};

} // namespace korvex::richtext::rtf
