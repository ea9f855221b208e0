#include "base/Needle.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace korvex::base {

namespace {

/// Longer ones are left to the C library, which skips most of the text then.
constexpr std::size_t kLongest = 64;

/// How common a byte of folded text is, about. A script's letters share their first bytes.
int commonness(char byte) {
    constexpr std::string_view kCommonLetters = "zqxjkvbpygfwmucldrhsnioate";
    const auto value = static_cast<unsigned char>(byte);
    if (value >= 0xc0) {
        return 100;
    }
    if (value >= 0x80) {
        return 15;
    }
    const auto letter = kCommonLetters.find(byte);
    return letter == std::string_view::npos ? 10 : static_cast<int>(letter) + 1;
}

std::size_t findPlainly(std::string_view text, std::size_t from, std::string_view bytes) {
    const auto* found =
        ::memmem(text.data() + from, text.size() - from, bytes.data(), bytes.size());
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data())
                 : std::string_view::npos;
}

#if defined(__SSE2__)
/// Sixteen places at a time: where both bytes are, a look at the whole.
class Places {
public:
    Places(const char* text, std::size_t first, std::size_t second, std::string_view bytes)
        : m_first(text + first),
          m_second(text + second),
          m_firstByte(_mm_set1_epi8(bytes[first])),
          m_secondByte(_mm_set1_epi8(bytes[second])) {}

    /// A bit for each of the sixteen places from `position` on.
    __m128i at(std::size_t position) const {
        return _mm_and_si128(_mm_cmpeq_epi8(load(m_first + position), m_firstByte),
                             _mm_cmpeq_epi8(load(m_second + position), m_secondByte));
    }

private:
    static __m128i load(const char* bytes) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
    }

    const char* m_first;
    const char* m_second;
    __m128i m_firstByte;
    __m128i m_secondByte;
};
#endif

} // namespace

Needle::Needle(std::string bytes) : m_bytes(std::move(bytes)) {
    assert(!m_bytes.empty());
    const auto isRarer = [&](std::size_t a, std::size_t b) {
        return commonness(m_bytes[a]) < commonness(m_bytes[b]);
    };
    m_second = m_bytes.size() - 1;
    for (std::size_t i = 1; i < m_bytes.size(); ++i) {
        if (isRarer(i, m_first)) {
            m_second = m_first;
            m_first = i;
        } else if (m_second == m_first || isRarer(i, m_second)) {
            m_second = i;
        }
    }
    if (m_second < m_first) {
        std::swap(m_first, m_second);
    }
}

std::size_t Needle::find(std::string_view text, std::size_t from) const {
    if (from >= text.size() || m_bytes.size() > text.size() - from) {
        return std::string_view::npos;
    }
    if (m_bytes.size() == 1) {
        return text.find(m_bytes.front(), from);
    }
#if defined(__SSE2__)
    constexpr std::size_t kStep = 16;
    if (m_bytes.size() <= kLongest) {
        const Places places(text.data(), m_first, m_second, m_bytes);
        const auto lastPlace = text.size() - m_bytes.size();
        const auto confirmed = [&](std::size_t position, __m128i found) {
            for (auto bits = static_cast<std::uint32_t>(_mm_movemask_epi8(found)); bits != 0;
                 bits &= bits - 1) {
                const auto place = position + static_cast<std::size_t>(std::countr_zero(bits));
                if (std::memcmp(text.data() + place, m_bytes.data(), m_bytes.size()) == 0) {
                    return place;
                }
            }
            return std::string_view::npos;
        };
        // Up to the place behind which the sixteenth is the last.
        for (; from + 2 * kStep <= lastPlace + 1; from += 2 * kStep) {
            const auto left = places.at(from);
            const auto right = places.at(from + kStep);
            if (_mm_movemask_epi8(_mm_or_si128(left, right)) == 0) {
                continue;
            }
            if (const auto place = confirmed(from, left); place != std::string_view::npos) {
                return place;
            }
            if (const auto place = confirmed(from + kStep, right);
                place != std::string_view::npos) {
                return place;
            }
        }
    }
#endif
    return findPlainly(text, from, m_bytes);
}

} // namespace korvex::base
