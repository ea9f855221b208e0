#include "platform/javascriptcore/JsonValue.h"

#include <rapidjson/document.h>

#include <utility>

namespace korvex::platform::javascriptcore {

namespace {

using Value = richtext::ScriptEngine::Value;

std::string textOf(const rapidjson::Value& json) {
    return {json.GetString(), json.GetStringLength()};
}

/// Takes values over and counts them.
class Conversion {
public:
    std::optional<Value> value(const rapidjson::Value& json, std::size_t depth = 0) {
        if (depth > richtext::ScriptEngine::kMaximumDepth) {
            return std::nullopt;
        }
        Value result;
        if (json.IsNumber()) {
            result.kind = Value::Kind::number;
            result.number = json.GetDouble();
        } else if (json.IsString()) {
            result.kind = Value::Kind::string;
            result.string = textOf(json);
        } else if (json.IsArray()) {
            result.kind = Value::Kind::array;
            if (!count(json.Size())) {
                return std::nullopt;
            }
            result.array.reserve(json.Size());
            for (const auto& element : json.GetArray()) {
                auto converted = value(element, depth + 1);
                if (!converted) {
                    return std::nullopt;
                }
                result.array.push_back(std::move(*converted));
            }
        } else if (json.IsObject()) {
            result.kind = Value::Kind::object;
            if (!count(json.MemberCount())) {
                return std::nullopt;
            }
            result.object.reserve(json.MemberCount());
            for (const auto& member : json.GetObject()) {
                auto converted = value(member.value, depth + 1);
                if (!converted) {
                    return std::nullopt;
                }
                result.object.push_back({textOf(member.name), std::move(*converted)});
            }
        }
        return result;
    }

private:
    bool count(std::size_t more) {
        m_count += more;
        return m_count <= richtext::ScriptEngine::kMaximumValues;
    }

    std::size_t m_count = 0;
};

} // namespace

std::optional<Value> valueOfJson(std::string json) {
    // Iterative: how deep a script nests its values must not cost our stack.
    constexpr auto kFlags = rapidjson::kParseInsituFlag | rapidjson::kParseIterativeFlag |
                            rapidjson::kParseFullPrecisionFlag;
    rapidjson::Document document;
    document.ParseInsitu<kFlags>(json.data());
    return document.HasParseError() ? std::nullopt : Conversion().value(document);
}

} // namespace korvex::platform::javascriptcore
