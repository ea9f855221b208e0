#include "platform/bus/Value.h"

#include "platform/bus/MessageSignature.h"

namespace korvex::platform::bus {

namespace {

struct SignatureOf {
    std::string operator()(std::monostate) const { return ""; }
    std::string operator()(const ValueArray& array) const { return "a" + array.element; }
    std::string operator()(const ValueStructure& structure) const {
        return "(" + structure.fieldSignature() + ")";
    }
    template <typename Kind>
    std::string operator()(const Kind&) const {
        return SignatureOfType<Kind>::text();
    }
};

} // namespace

bool ValueArray::operator==(const ValueArray&) const = default;
bool ValueStructure::operator==(const ValueStructure&) const = default;
bool Value::operator==(const Value&) const = default;

std::string ValueStructure::fieldSignature() const {
    std::string signature;
    for (const auto& field : fields) {
        signature += field.signature();
    }
    return signature;
}

std::string Value::signature() const {
    return std::visit(SignatureOf{}, m_content);
}

} // namespace korvex::platform::bus
