#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace korvex::base {

/// Bytes to look for in many texts: several times as fast as `std::string_view::find` and `memmem`
/// for what people search for, and never much slower. Never empty.
class Needle {
public:
    explicit Needle(std::string bytes);

    const std::string& bytes() const { return m_bytes; }
    /// Where the needle first begins in `text`, at or behind `from`; `npos` when it is not there.
    std::size_t find(std::string_view text, std::size_t from = 0) const;
    bool isIn(std::string_view text) const { return find(text) != std::string_view::npos; }

private:
    std::string m_bytes;
    /// The offsets of its two rarest bytes, the first before the second.
    std::size_t m_first = 0;
    std::size_t m_second = 0;
};

} // namespace korvex::base
