#pragma once

#include "richtext/code/ScriptEngine.h"

#include <optional>
#include <string>

namespace korvex::platform::javascriptcore {

/// The value of a JSON text, which is overwritten while it is read. Absent when it is no JSON or is
/// larger than the limits of ScriptEngine.
std::optional<richtext::ScriptEngine::Value> valueOfJson(std::string json);

} // namespace korvex::platform::javascriptcore
