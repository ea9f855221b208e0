#pragma once

#include "base/Bytes.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace korvex::tests {

/// Writes binary property lists by hand, honest ones and others. Object 0 is the root.
class PlistBuilder {
public:
    using Reference = std::uint64_t;

    /// How many bytes a reference and an offset take.
    explicit PlistBuilder(std::size_t referenceBytes = 2, std::size_t offsetBytes = 4)
        : m_referenceBytes(referenceBytes), m_offsetBytes(offsetBytes) {}

    /// The number that the next object gets.
    Reference next() const { return m_offsets.size(); }

    Reference array(const std::vector<Reference>& members) {
        return collection(0xA0, members.size(), members);
    }
    Reference dictionary(const std::vector<Reference>& keys, std::vector<Reference> values) {
        auto members = keys;
        members.insert(members.end(), values.begin(), values.end());
        return collection(0xD0, keys.size(), members);
    }
    Reference string(std::string_view text) {
        begin(0x50, text.size());
        m_bytes.insert(m_bytes.end(), text.begin(), text.end());
        return next() - 1;
    }
    Reference string(std::u16string_view text) {
        begin(0x60, text.size());
        for (const char16_t unit : text) {
            integer(unit, 2);
        }
        return next() - 1;
    }
    Reference data(const base::Bytes& bytes) {
        begin(0x40, bytes.size());
        m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
        return next() - 1;
    }
    /// An object that claims to count so much, with nothing behind it.
    Reference claim(std::uint8_t kind, std::uint64_t count) {
        m_offsets.push_back(m_bytes.size());
        m_bytes.push_back(static_cast<std::uint8_t>(kind | 0xF));
        m_bytes.push_back(0x13);
        integer(count, 8);
        return next() - 1;
    }

    base::Bytes bytes() const {
        auto builder = *this;
        const auto table = m_bytes.size();
        for (const auto offset : m_offsets) {
            builder.integer(offset, m_offsetBytes);
        }
        builder.m_bytes.insert(builder.m_bytes.end(), 6, 0);
        builder.integer(m_offsetBytes, 1);
        builder.integer(m_referenceBytes, 1);
        builder.integer(m_offsets.size(), 8);
        builder.integer(0, 8);
        builder.integer(table, 8);
        return builder.m_bytes;
    }

private:
    void begin(std::uint8_t kind, std::size_t count) {
        m_offsets.push_back(m_bytes.size());
        if (count < 0xF) {
            m_bytes.push_back(static_cast<std::uint8_t>(kind | count));
            return;
        }
        m_bytes.push_back(static_cast<std::uint8_t>(kind | 0xF));
        m_bytes.push_back(0x12);
        integer(count, 4);
    }
    Reference collection(std::uint8_t kind, std::size_t count,
                         const std::vector<Reference>& members) {
        begin(kind, count);
        for (const auto member : members) {
            integer(member, m_referenceBytes);
        }
        return next() - 1;
    }
    void integer(std::uint64_t value, std::size_t bytes) {
        for (std::size_t i = bytes; i-- > 0;) {
            m_bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
        }
    }

    base::Bytes m_bytes{'b', 'p', 'l', 'i', 's', 't', '0', '0'};
    std::vector<std::size_t> m_offsets;
    std::size_t m_referenceBytes;
    std::size_t m_offsetBytes;
};

} // namespace korvex::tests
