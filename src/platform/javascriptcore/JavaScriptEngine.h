#pragma once

#include "richtext/code/ScriptEngine.h"

#include <JavaScriptCore/JavaScript.h>

#include <chrono>
#include <memory>
#include <optional>
#include <stop_token>
#include <string_view>
#include <vector>

namespace korvex::platform::javascriptcore {

/// A script context of JavaScriptCore.
class JavaScriptEngine final : public richtext::ScriptEngine {
public:
    /// Null when no context can be made, and after a stop.
    static std::unique_ptr<richtext::ScriptEngine> make(std::stop_token stop);

    ~JavaScriptEngine() override;
    JavaScriptEngine(const JavaScriptEngine&) = delete;
    JavaScriptEngine& operator=(const JavaScriptEngine&) = delete;

    bool evaluate(std::string_view source) override;
    std::optional<Value> call(std::string_view function,
                              const std::vector<std::u16string_view>& arguments) override;

private:
    JavaScriptEngine(JSContextGroupRef group, std::stop_token stop);

    /// Has the engine interrupt its scripts to ask whether they may go on.
    void letCheck(JSContextGroupRef group);
    /// Begins the time that one script may take.
    void startClock();
    bool isTimeUp() const;

    std::stop_token m_stop;
    std::chrono::steady_clock::time_point m_deadline;
    JSGlobalContextRef m_context;
};

} // namespace korvex::platform::javascriptcore
