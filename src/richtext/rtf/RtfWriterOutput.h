#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace korvex::richtext::rtf {

/// An RTF document as it grows. Escapes of the text what RTF needs escaped.
class Output {
public:
    const std::string& bytes() const { return m_bytes; }
    bool isEmpty() const { return m_bytes.empty(); }
    void reserve(std::size_t bytes) { m_bytes.reserve(bytes); }

    /// Adds bytes as they are: control words with their backslash, braces, line breaks.
    void raw(std::string_view bytes) { m_bytes += bytes; }
    void raw(char byte) { m_bytes.push_back(byte); }
    /// Adds a control word, which comes with its backslash, and its parameter.
    void word(std::string_view word, std::int64_t parameter);

    /// Adds text as code page 1252 and escapes. A line feed in it is a character, not the end of a
    /// paragraph.
    void text(std::u16string_view text);

    /// Opens a group: what readers must know for `text` is written in it once, and holds until its
    /// end.
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
