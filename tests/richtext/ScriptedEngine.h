#pragma once

#include "richtext/code/ScriptEngine.h"

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvex::tests {

/// An engine that answers what a test says: for answers and failures that no real script gives, and
/// to hold an analysis where the test wants it.
class ScriptedEngine final : public richtext::ScriptEngine {
public:
    struct Script {
        std::function<bool(std::string_view source)> evaluate = [](std::string_view) {
            return true;
        };
        std::function<std::optional<Value>(std::string_view function,
                                           const std::vector<std::u16string_view>& arguments)>
            call = [](std::string_view, const auto&) { return std::nullopt; };
    };

    explicit ScriptedEngine(Script script) : m_script(std::move(script)) {}

    bool evaluate(std::string_view source) override { return m_script.evaluate(source); }
    std::optional<Value> call(std::string_view function,
                              const std::vector<std::u16string_view>& arguments) override {
        return m_script.call(function, arguments);
    }

    static richtext::ScriptEngineFactory factory(Script script) {
        return [script](std::stop_token) { return std::make_unique<ScriptedEngine>(script); };
    }
    static std::optional<std::string_view> library(std::string_view name,
                                                   std::string_view extension) {
        return name == "highlight.min" && extension == "js" ? std::optional("the library")
                                                            : std::nullopt;
    }

    static Value number(double value) { return {.kind = Value::Kind::number, .number = value}; }
    static Value string(std::string value) {
        return {.kind = Value::Kind::string, .string = std::move(value)};
    }
    static Value array(Array values) {
        return {.kind = Value::Kind::array, .array = std::move(values)};
    }
    static Value object(Object members) {
        return {.kind = Value::Kind::object, .object = std::move(members)};
    }
    static Value run(double location, double length, std::string scope) {
        return object({{"location", number(location)},
                       {"length", number(length)},
                       {"scope", string(std::move(scope))}});
    }

private:
    Script m_script;
};

} // namespace korvex::tests
