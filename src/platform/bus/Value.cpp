#include "platform/bus/Value.h"

namespace korvex::platform::bus {

namespace {

struct SignatureOf {
    std::string operator()(std::monostate) const { return ""; }
    std::string operator()(bool) const { return "b"; }
    std::string operator()(std::uint8_t) const { return "y"; }
    std::string operator()(std::int16_t) const { return "n"; }
    std::string operator()(std::uint16_t) const { return "q"; }
    std::string operator()(std::int32_t) const { return "i"; }
    std::string operator()(std::uint32_t) const { return "u"; }
    std::string operator()(std::int64_t) const { return "x"; }
    std::string operator()(std::uint64_t) const { return "t"; }
    std::string operator()(double) const { return "d"; }
    std::string operator()(const std::string&) const { return "s"; }
    std::string operator()(const ObjectPath&) const { return "o"; }
    std::string operator()(const base::Bytes&) const { return "ay"; }
    std::string operator()(const ValueArray& array) const { return "a" + array.element; }
    std::string operator()(const ValueStructure& structure) const {
        std::string signature = "(";
        for (const auto& field : structure.fields) {
            signature += field.signature();
        }
        return signature + ")";
    }
    std::string operator()(const Dictionary&) const { return "a{sv}"; }
};

} // namespace

bool ValueArray::operator==(const ValueArray&) const = default;
bool ValueStructure::operator==(const ValueStructure&) const = default;
bool Value::operator==(const Value&) const = default;

std::string Value::signature() const {
    return std::visit(SignatureOf{}, m_content);
}

} // namespace korvex::platform::bus
