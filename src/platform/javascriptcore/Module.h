#pragma once

#include "richtext/code/ScriptEngine.h"

#include <memory>
#include <optional>
#include <stop_token>
#include <string_view>

namespace korvex::platform::javascriptcore {

/// What the module gives to the program that loads it. Both are built together: the types need not
/// agree with any other build.
struct Module {
    /// Null when the engine cannot be started.
    std::unique_ptr<richtext::ScriptEngine> (*makeEngine)(std::stop_token stop);
    std::optional<std::string_view> (*resource)(std::string_view name, std::string_view extension);
};

inline constexpr const char* kModuleFile = "libkorvex-javascript.so";
inline constexpr const char* kModuleEntry = "korvexJavaScriptModule";
using ModuleEntry = const Module*();

} // namespace korvex::platform::javascriptcore
