#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace korvex::store {

/// Appends values in the form that a record's checksum is taken of.
class ChecksumForm {
public:
    /// `bytes` must outlive this.
    explicit ChecksumForm(std::vector<std::uint8_t>& bytes) : m_bytes(bytes) {}

    void absent() { m_bytes.push_back(0); }
    void number(std::uint64_t bits) { word(1, bits); }
    void bytes(const void* data, std::size_t size) {
        word(2, size);
        const auto* first = static_cast<const std::uint8_t*>(data);
        m_bytes.insert(m_bytes.end(), first, first + size);
    }
    template <typename T, typename Append>
    void optional(const std::optional<T>& value, Append&& append) {
        if (value) {
            append(*value);
        } else {
            absent();
        }
    }

private:
    void word(std::uint8_t tag, std::uint64_t bits) {
        std::uint8_t raw[9]{tag};
        for (int i = 0; i < 8; ++i) {
            raw[i + 1] = static_cast<std::uint8_t>(bits >> (8 * i));
        }
        m_bytes.insert(m_bytes.end(), raw, raw + 9);
    }

    std::vector<std::uint8_t>& m_bytes;
};

} // namespace korvex::store
