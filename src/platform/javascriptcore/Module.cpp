#include "platform/javascriptcore/Module.h"

#include "platform/javascriptcore/JavaScriptEngine.h"

#include <cstddef>

/// Laid out by HighlightLibrary.S.
extern "C" const char kHighlightLibrary[];
extern "C" const char kHighlightLibraryEnd[];

namespace korvex::platform::javascriptcore {

namespace {

std::optional<std::string_view> resource(std::string_view name, std::string_view extension) {
    if (name != "highlight.min" || extension != "js") {
        return std::nullopt;
    }
    return std::string_view(kHighlightLibrary,
                            static_cast<std::size_t>(kHighlightLibraryEnd - kHighlightLibrary));
}

constexpr Module kModule{&JavaScriptEngine::make, &resource};

} // namespace

} // namespace korvex::platform::javascriptcore

extern "C" [[gnu::visibility("default")]] const korvex::platform::javascriptcore::Module*
korvexJavaScriptModule() {
    return &korvex::platform::javascriptcore::kModule;
}
