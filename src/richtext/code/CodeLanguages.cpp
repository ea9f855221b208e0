#include "richtext/code/CodeLanguages.h"

#include <algorithm>
#include <array>

namespace korvex::richtext {

namespace {

// What the engine reports is not asked for these: the command line reads stored texts without one.
// A newer highlighter may add to them; a language that was stored once is never taken out.
constexpr auto kLanguages = std::to_array<std::string_view>({
    "bash",   "c",          "cpp",          "csharp",    "css",        "diff",
    "go",     "graphql",    "ini",          "java",      "javascript", "json",
    "kotlin", "less",       "lua",          "makefile",  "markdown",   "objectivec",
    "perl",   "php",        "php-template", "plaintext", "python",     "python-repl",
    "r",      "ruby",       "rust",         "scss",      "shell",      "sql",
    "swift",  "typescript", "vbnet",        "wasm",      "xml",        "yaml",
});
static_assert(std::is_sorted(kLanguages.begin(), kLanguages.end()));

} // namespace

std::span<const std::string_view> highlighterLanguages() {
    return kLanguages;
}

} // namespace korvex::richtext
