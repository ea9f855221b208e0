#include "platform/javascriptcore/JavaScriptEngine.h"

#include "platform/javascriptcore/JsonValue.h"

#include <jsc/jsc.h>

#include <algorithm>
#include <memory>
#include <string>
#include <type_traits>
#include <utility>

// The library exports this, but installs no header that declares it. Weak: where a build of the
// library is without it, scripts end by themselves.
extern "C" [[gnu::weak]] void
setExecutionTimeLimit(JSContextGroupRef group, double seconds,
                      bool (*shouldTerminate)(JSContextRef, void*),
                      void* context) asm("JSContextGroupSetExecutionTimeLimit");

namespace korvex::platform::javascriptcore {

namespace {

/// How often a script that runs is asked whether it may go on, in seconds of its own thread's work.
/// A quit waits for it; asking costs nothing that can be measured.
constexpr double kSecondsBetweenChecks = 0.03;
/// No code that is allowed takes nearly as long; a regular expression that runs wild does.
constexpr std::chrono::seconds kLongestScript{5};
/// More than the largest value that is taken over needs.
constexpr std::size_t kMaximumJson = 16 << 20;

struct StringRelease {
    void operator()(JSStringRef string) const { JSStringRelease(string); }
};
using ScriptString = std::unique_ptr<std::remove_pointer_t<JSStringRef>, StringRelease>;

/// UTF-8 without null bytes.
ScriptString scriptString(std::string_view text) {
    return ScriptString(JSStringCreateWithUTF8CString(std::string(text).c_str()));
}

/// Unit by unit: surrogates that stand alone stay what they are.
ScriptString scriptString(std::u16string_view text) {
    // In one byte a unit where that is enough: regular expressions run through it in 15 % less.
    if (std::all_of(text.begin(), text.end(),
                    [](char16_t unit) { return unit != 0 && unit < 0x80; })) {
        return scriptString(std::string(text.begin(), text.end()));
    }
    static_assert(sizeof(JSChar) == sizeof(char16_t));
    return ScriptString(
        JSStringCreateWithCharacters(reinterpret_cast<const JSChar*>(text.data()), text.size()));
}

std::string utf8Of(JSStringRef string) {
    std::string result(JSStringGetMaximumUTF8CStringSize(string), '\0');
    // The count includes the null byte.
    result.resize(JSStringGetUTF8CString(string, result.data(), result.size()) - 1);
    return result;
}

} // namespace

std::unique_ptr<richtext::ScriptEngine> JavaScriptEngine::make(std::stop_token stop) {
    // Without the last of the compilers the first forty analyses take a quarter less of the
    // processor's time; only after some three hundred would it have paid. Set once, since options
    // lie in read-only memory as soon as there is a context.
    static const auto isSet = jsc_options_set_boolean(JSC_OPTIONS_USE_FTL, FALSE) != FALSE;
    static_cast<void>(isSet);
    if (stop.stop_requested()) {
        return nullptr;
    }
    if (auto* const group = JSContextGroupCreate()) {
        return std::unique_ptr<JavaScriptEngine>(new JavaScriptEngine(group, std::move(stop)));
    }
    return nullptr;
}

JavaScriptEngine::JavaScriptEngine(JSContextGroupRef group, std::stop_token stop)
    : m_stop(std::move(stop)), m_context(JSGlobalContextCreateInGroup(group, nullptr)) {
    letCheck(group);
    JSContextGroupRelease(group);
}

void JavaScriptEngine::letCheck(JSContextGroupRef group) {
    if (!setExecutionTimeLimit) {
        return;
    }
    const auto shouldTerminate = [](JSContextRef context, void* engine) {
        auto* const self = static_cast<JavaScriptEngine*>(engine);
        if (self->m_stop.stop_requested() || self->isTimeUp()) {
            return true;
        }
        // The library asks once; for the next time it has to be told again.
        self->letCheck(JSContextGetGroup(context));
        return false;
    };
    setExecutionTimeLimit(group, kSecondsBetweenChecks, shouldTerminate, this);
}

JavaScriptEngine::~JavaScriptEngine() {
    JSGlobalContextRelease(m_context);
}

void JavaScriptEngine::startClock() {
    m_deadline = std::chrono::steady_clock::now() + kLongestScript;
}

bool JavaScriptEngine::isTimeUp() const {
    return std::chrono::steady_clock::now() > m_deadline;
}

bool JavaScriptEngine::evaluate(std::string_view source) {
    if (m_stop.stop_requested() || source.find('\0') != std::string_view::npos) {
        return false;
    }
    startClock();
    JSValueRef exception = nullptr;
    JSEvaluateScript(m_context, scriptString(source).get(), nullptr, nullptr, 1, &exception);
    return exception == nullptr;
}

std::optional<JavaScriptEngine::Value>
JavaScriptEngine::call(std::string_view function,
                       const std::vector<std::u16string_view>& arguments) {
    if (m_stop.stop_requested()) {
        return std::nullopt;
    }
    startClock();
    JSValueRef exception = nullptr;
    const auto* const found = JSObjectGetProperty(m_context, JSContextGetGlobalObject(m_context),
                                                  scriptString(function).get(), &exception);
    if (exception || !JSValueIsObject(m_context, found)) {
        return std::nullopt;
    }
    auto* const callable = JSValueToObject(m_context, found, &exception);
    if (exception || !JSObjectIsFunction(m_context, callable)) {
        return std::nullopt;
    }
    // The engine's collector finds what lies on the stack, not what lies in a vector: the strings
    // are protected until the call has them.
    std::vector<JSValueRef> values;
    for (const auto argument : arguments) {
        values.push_back(JSValueMakeString(m_context, scriptString(argument).get()));
        JSValueProtect(m_context, values.back());
    }
    const auto* const result = JSObjectCallAsFunction(m_context, callable, nullptr, values.size(),
                                                      values.data(), &exception);
    for (const auto* const value : values) {
        JSValueUnprotect(m_context, value);
    }
    if (exception) {
        return std::nullopt;
    }
    // One text instead of a call for each member of each run: a tenth of the time.
    const ScriptString json(JSValueCreateJSONString(m_context, result, 0, &exception));
    if (exception) {
        return std::nullopt;
    }
    if (!json) {
        // Undefined and functions have none.
        return Value();
    }
    if (JSStringGetLength(json.get()) > kMaximumJson) {
        return std::nullopt;
    }
    return valueOfJson(utf8Of(json.get()));
}

} // namespace korvex::platform::javascriptcore
