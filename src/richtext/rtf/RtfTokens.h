#pragma once

#include "richtext/rtf/RtfKeywords.h"
#include "richtext/rtf/RtfReaderStates.h"

#include <cstdint>
#include <string_view>

namespace korvex::richtext::rtf {

struct Word {
    const Keyword* keyword = nullptr;
    Parameter parameter;
};

struct Token {
    enum class Kind : std::uint8_t {
        /// Printable ASCII and tabs.
        plain,
        /// Any byte of text that is not plain.
        byte,
        open,
        close,
        /// A backslash and one character.
        symbol,
        word,
    };

    Kind kind = Kind::plain;
    char byte = 0;
    std::string_view text;
    Word word;
};

/// Reads the tokens of a document. Line breaks mean nothing and are left out.
class Tokens {
public:
    explicit Tokens(std::string_view document)
        : m_at(document.data()), m_end(document.data() + document.size()) {}

    /// Puts the next token into `token`; false at the end of the document.
    bool next(Token& token);
    /// Skips bytes that are not RTF, at most those that are left.
    void skip(std::int32_t bytes);
    /// Goes to the brace that ends the innermost group.
    void skipGroup();

private:
    void afterBackslash(Token& token);
    void readWord(Token& token);
    Parameter parameter();

    const char* m_at;
    const char* m_end;
};

} // namespace korvex::richtext::rtf
