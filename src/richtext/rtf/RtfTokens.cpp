#include "richtext/rtf/RtfTokens.h"

#include "base/HexDigit.h"

#include <algorithm>
#include <array>
#include <limits>

namespace korvex::richtext::rtf {

namespace {

enum class ByteKind : std::uint8_t { plain, other, nothing, open, close, backslash };

constexpr auto kKinds = [] {
    std::array<ByteKind, 256> kinds{};
    for (std::size_t byte = 0; byte < kinds.size(); ++byte) {
        kinds[byte] = byte >= 0x20 && byte < 0x7F ? ByteKind::plain : ByteKind::other;
    }
    kinds['\t'] = ByteKind::plain;
    kinds['\n'] = kinds['\r'] = kinds['\0'] = ByteKind::nothing;
    kinds['{'] = ByteKind::open;
    kinds['}'] = ByteKind::close;
    kinds['\\'] = ByteKind::backslash;
    return kinds;
}();

ByteKind kindOf(char byte) {
    return kKinds[static_cast<std::uint8_t>(byte)];
}

bool isLetter(char byte) {
    return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
}
bool isDigit(char byte) {
    return byte >= '0' && byte <= '9';
}

} // namespace

bool Tokens::next(Token& token) {
    while (m_at != m_end) {
        switch (kindOf(*m_at)) {
        case ByteKind::plain: {
            const auto* const start = m_at;
            do {
                ++m_at;
            } while (m_at != m_end && kindOf(*m_at) == ByteKind::plain);
            token.kind = Token::Kind::plain;
            token.text = {start, static_cast<std::size_t>(m_at - start)};
            return true;
        }
        case ByteKind::other:
            token.kind = Token::Kind::byte;
            token.byte = *m_at++;
            return true;
        case ByteKind::nothing:
            ++m_at;
            break;
        case ByteKind::open:
            token.kind = Token::Kind::open;
            ++m_at;
            return true;
        case ByteKind::close:
            token.kind = Token::Kind::close;
            ++m_at;
            return true;
        case ByteKind::backslash:
            ++m_at;
            if (m_at == m_end) {
                return false;
            }
            afterBackslash(token);
            return true;
        }
    }
    return false;
}

void Tokens::afterBackslash(Token& token) {
    if (isLetter(*m_at)) {
        readWord(token);
        return;
    }
    token.byte = *m_at++;
    token.kind = Token::Kind::symbol;
    if (token.byte == '\'' && m_end - m_at >= 2) {
        const auto high = base::hexDigit(m_at[0]);
        const auto low = base::hexDigit(m_at[1]);
        if (high >= 0 && low >= 0) {
            token.kind = Token::Kind::byte;
            token.byte = static_cast<char>(high * 16 + low);
            m_at += 2;
        }
    }
}

void Tokens::readWord(Token& token) {
    const auto* const start = m_at;
    KeywordHash hash;
    do {
        hash.add(*m_at++);
    } while (m_at != m_end && isLetter(*m_at));
    token.kind = Token::Kind::word;
    token.word.keyword = &keyword({start, static_cast<std::size_t>(m_at - start)}, hash);
    token.word.parameter = parameter();
    if (m_at != m_end && *m_at == ' ') {
        ++m_at;
    }
}

/// Saturates at 32 bits.
Parameter Tokens::parameter() {
    constexpr std::int64_t kTen = 10;
    constexpr std::int64_t kLimit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1;
    const auto isNegative = m_end - m_at >= 2 && *m_at == '-' && isDigit(m_at[1]);
    if (isNegative) {
        ++m_at;
    }
    if (m_at == m_end || !isDigit(*m_at)) {
        return {};
    }
    std::int64_t value = 0;
    for (; m_at != m_end && isDigit(*m_at); ++m_at) {
        value = std::min(value * kTen + (*m_at - '0'), kLimit);
    }
    value = isNegative ? -value : std::min(value, kLimit - 1);
    return {static_cast<std::int32_t>(value), true};
}

void Tokens::skip(std::int32_t bytes) {
    m_at += std::min<std::ptrdiff_t>(std::max(bytes, 0), m_end - m_at);
}

void Tokens::skipGroup() {
    constexpr std::string_view kBinary = "bin";
    std::size_t depth = 0;
    for (; m_at != m_end; ++m_at) {
        switch (kindOf(*m_at)) {
        case ByteKind::open:
            ++depth;
            break;
        case ByteKind::close:
            if (depth == 0) {
                return;
            }
            --depth;
            break;
        case ByteKind::backslash: {
            const std::string_view rest(m_at + 1, static_cast<std::size_t>(m_end - m_at - 1));
            if (rest.empty()) {
                m_at = m_end;
                return;
            }
            ++m_at;
            if (rest.size() > kBinary.size() && rest.starts_with(kBinary) &&
                isDigit(rest[kBinary.size()])) {
                m_at += kBinary.size();
                const auto length = parameter().value;
                if (m_at != m_end && *m_at == ' ') {
                    ++m_at;
                }
                skip(length);
                --m_at;
            }
            break;
        }
        default:
            break;
        }
    }
}

} // namespace korvex::richtext::rtf
