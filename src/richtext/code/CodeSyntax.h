#pragma once

#include "base/Log.h"
#include "richtext/code/ScriptEngine.h"
#include "richtext/text/AttributedString.h"
#include "richtext/text/Formatting.h"

#include <cstddef>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::richtext {

struct CodeLanguage {
    std::string id;
    std::string name;

    bool operator==(const CodeLanguage&) const = default;
};

/// A stretch of code whose scope has a colour of its own, in UTF-16 units of the code. What no
/// stretch covers has the label colour.
struct ScopeRun {
    TextRange range;
    SystemColor color = SystemColor::label;

    bool operator==(const ScopeRun&) const = default;
};

/// The look of code runs: monospaced on a quiet ground, coloured by a script that analyses their
/// syntax. Colours are never stored, only computed when they are shown. The engine is made when it
/// is first needed, once; without one code shows uncoloured. For one thread, the one that
/// makes the first call; whoever must not wait uses CodeHighlighter.
class CodeSyntax {
public:
    /// Longer code stays uncoloured, so that a huge paste stays quick. UTF-16 units.
    static constexpr std::size_t kMaximumHighlighted = 20'000;
    static constexpr std::string_view kAutomatic = "auto";
    static constexpr std::string_view kPlainText = "plaintext";

    /// `stop` ends an analysis that runs: its code stays uncoloured.
    CodeSyntax(ScriptEngineFactory makeEngine, ResourceLookup resources, base::LogSink& log,
               std::stop_token stop = {});
    ~CodeSyntax();

    /// "Automatic", "Plain Text", then the library's languages by name, in the user's order of
    /// names. Only the first two without an engine.
    const std::vector<CodeLanguage>& languages();
    /// The coloured stretches of a piece of code, in order; none for plain text, for code that is
    /// too long, and where there is no engine. `language` is an identifier.
    std::vector<ScopeRun> scopes(std::u16string_view code, std::string_view language);

    /// The languages that need no engine: "Automatic" and "Plain Text".
    static std::vector<CodeLanguage> firstLanguages();
    /// Whether code can have colours at all: not plain text, not empty and not too long.
    static bool isHighlightable(std::u16string_view code, std::string_view language);
    /// Whether an identifier may be stored: known without an engine, since a stored text must read
    /// the same with and without one.
    static bool isKnownLanguage(std::string_view id);
    /// What code is shown with: a monospaced font, the text's colour and a quiet ground.
    static CharacterAttributes attributes(std::string_view language, CodeKind kind);
    /// The language of a run; "auto" for text that is monospaced without being in a language;
    /// empty for what is no code.
    static std::string language(const CharacterAttributes& attributes);
    /// The colour of a scope such as "title.function": its first part decides.
    static SystemColor color(std::string_view scope);

private:
    /// Null when there is no engine.
    ScriptEngine* engine();
    std::unique_ptr<ScriptEngine> preparedEngine() const;

    ScriptEngineFactory m_makeEngine;
    ResourceLookup m_resources;
    base::Logger m_log;
    std::stop_token m_stop;
    bool m_isPrepared = false;
    std::unique_ptr<ScriptEngine> m_engine;
    std::vector<CodeLanguage> m_languages;
};

} // namespace korvex::richtext
