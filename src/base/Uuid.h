#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace korvex::base {

/// The identity of a record. Ordered by its bytes, which is the order of its text form.
struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    /// A fresh random (version 4) identifier.
    static Uuid random();
    /// Reads the hyphenated form of 36 characters, in either case; anything else is absent.
    static std::optional<Uuid> parse(std::string_view text);

    /// Upper-case hexadecimal with hyphens: the canonical form.
    std::string text() const;

    auto operator<=>(const Uuid&) const = default;
};

} // namespace korvex::base

template <>
struct std::hash<korvex::base::Uuid> {
    std::size_t operator()(const korvex::base::Uuid& id) const noexcept {
        // Identifiers are random: any eight of their bytes are a hash already.
        std::size_t value = 0;
        for (std::size_t i = 8; i < 16; ++i) {
            value = value << 8U | id.bytes[i];
        }
        return value;
    }
};
