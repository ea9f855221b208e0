#pragma once

#include "platform/bus/Value.h"

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

namespace korvex::platform::bus {

/// How the bus writes the type of a C++ type. What has no entry here cannot be sent or read.
template <typename Type>
struct SignatureOfType;

template <char Letter>
struct OneLetter {
    static std::string text() { return {Letter}; }
};
template <>
struct SignatureOfType<bool> : OneLetter<'b'> {};
template <>
struct SignatureOfType<std::uint8_t> : OneLetter<'y'> {};
template <>
struct SignatureOfType<std::int16_t> : OneLetter<'n'> {};
template <>
struct SignatureOfType<std::uint16_t> : OneLetter<'q'> {};
template <>
struct SignatureOfType<std::int32_t> : OneLetter<'i'> {};
template <>
struct SignatureOfType<std::uint32_t> : OneLetter<'u'> {};
template <>
struct SignatureOfType<std::int64_t> : OneLetter<'x'> {};
template <>
struct SignatureOfType<std::uint64_t> : OneLetter<'t'> {};
template <>
struct SignatureOfType<double> : OneLetter<'d'> {};
template <>
struct SignatureOfType<std::string> : OneLetter<'s'> {};
template <>
struct SignatureOfType<ObjectPath> : OneLetter<'o'> {};
template <>
struct SignatureOfType<Value> : OneLetter<'v'> {};
template <typename Element>
struct SignatureOfType<std::vector<Element>> {
    static std::string text() { return "a" + SignatureOfType<Element>::text(); }
};
template <typename Element, typename Order>
struct SignatureOfType<std::map<std::string, Element, Order>> {
    static std::string text() { return "a{s" + SignatureOfType<Element>::text() + "}"; }
};
template <typename... Fields>
struct SignatureOfType<std::tuple<Fields...>> {
    static std::string text() { return "(" + (SignatureOfType<Fields>::text() + ... + "") + ")"; }
};

/// Of arguments one behind the other.
template <typename... Types>
std::string signatureOf() {
    std::string signature;
    ((signature += SignatureOfType<Types>::text()), ...);
    return signature;
}

} // namespace korvex::platform::bus
