#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvex::richtext {

/// A script engine, as far as highlighting needs one. Used from one thread, the one that made it.
class ScriptEngine {
public:
    /// A value that a script gave back, without functions and without prototypes.
    struct Value;
    struct Member;
    using Object = std::vector<Member>;
    using Array = std::vector<Value>;

    /// What `call` takes over, members and elements of all arrays and objects together. Code of
    /// 20,000 units gives at most 80,000.
    static constexpr std::size_t kMaximumValues = 200'000;
    static constexpr std::size_t kMaximumDepth = 8;

    virtual ~ScriptEngine() = default;

    /// False when the script raised an exception. `source` is UTF-8 without null bytes.
    virtual bool evaluate(std::string_view source) = 0;
    /// Calls a global function with strings; absent when it is not there, raised an exception, was
    /// stopped, or gave back more than the limits allow.
    virtual std::optional<Value> call(std::string_view function,
                                      const std::vector<std::u16string_view>& arguments) = 0;
};

struct ScriptEngine::Value {
    enum class Kind : std::uint8_t { other, number, string, array, object };
    Kind kind = Kind::other;
    double number = 0;
    std::string string;
    Array array;
    Object object;

    /// Null where there is no such member.
    const Value* member(std::string_view name) const;
};

struct ScriptEngine::Member {
    std::string name;
    Value value;
};

/// Makes an engine; null where there is none. What it needs is loaded when it is called, not
/// before. A stop ends the script that runs, soon and from any thread, as if it had raised an
/// exception.
using ScriptEngineFactory = std::function<std::unique_ptr<ScriptEngine>(std::stop_token)>;
/// The bytes of a resource by name and extension; absent when the program came without it. They
/// stay for good.
using ResourceLookup = std::function<std::optional<std::string_view>(std::string_view name,
                                                                     std::string_view extension)>;

} // namespace korvex::richtext
