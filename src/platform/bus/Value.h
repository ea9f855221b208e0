#pragma once

#include "base/Bytes.h"

#include <compare>
#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace korvex::platform::bus {

class Value;

/// The path of an object, which on the bus is another type than a string.
struct ObjectPath {
    std::string text;
    auto operator<=>(const ObjectPath&) const = default;
};

/// Named values, `a{sv}`.
using Dictionary = std::map<std::string, Value, std::less<>>;

/// Values of one type, which its signature names also where there are none.
struct ValueArray {
    std::string element;
    std::vector<Value> items;
    bool operator==(const ValueArray&) const;
};

/// Values one behind the other, `(…)`.
struct ValueStructure {
    std::vector<Value> fields;
    /// The types of the fields, without the structure's parentheses.
    std::string fieldSignature() const;
    bool operator==(const ValueStructure&) const;
};

/// A value that says its own type, as the bus's variants do. A variant within a variant is read as
/// what is in it; what none of our programs has a use for, such as descriptors, is read as nothing.
class Value {
public:
    using Content =
        std::variant<std::monostate, bool, std::uint8_t, std::int16_t, std::uint16_t, std::int32_t,
                     std::uint32_t, std::int64_t, std::uint64_t, double, std::string, ObjectPath,
                     base::Bytes, ValueArray, ValueStructure, Dictionary>;

    Value() = default;
    explicit Value(const char* text) : m_content(std::string(text)) {}
    template <typename Kind>
    requires std::same_as<Kind, std::remove_cvref_t<Kind>> &&
        (!std::same_as<Kind, Value>)explicit Value(Kind content)
        : m_content(std::in_place_type<Kind>, std::move(content)) {}

    const Content& content() const { return m_content; }
    /// Null when it is of another type.
    template <typename Kind>
    const Kind* as() const {
        return std::get_if<Kind>(&m_content);
    }
    /// The type as the bus writes it; empty for nothing.
    std::string signature() const;

    bool operator==(const Value&) const;

private:
    Content m_content;
};

/// The named value, where there is one of this type; else null.
template <typename Kind>
const Kind* find(const Dictionary& values, std::string_view name) {
    const auto found = values.find(name);
    return found == values.end() ? nullptr : found->second.as<Kind>();
}

} // namespace korvex::platform::bus
