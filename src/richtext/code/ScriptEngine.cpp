#include "richtext/code/ScriptEngine.h"

#include <algorithm>

namespace korvex::richtext {

const ScriptEngine::Value* ScriptEngine::Value::member(std::string_view name) const {
    const auto found = std::find_if(object.begin(), object.end(),
                                    [&](const auto& each) { return each.name == name; });
    return found == object.end() ? nullptr : &found->value;
}

} // namespace korvex::richtext
