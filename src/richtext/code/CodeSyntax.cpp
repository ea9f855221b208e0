#include "richtext/code/CodeSyntax.h"

#include "base/Collation.h"
#include "base/Utf16.h"
#include "richtext/code/CodeLanguages.h"
#include "richtext/code/CodeScript.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace korvex::richtext {

namespace {

using Value = ScriptEngine::Value;

/// A whole number from 0 to `maximum`; absent for anything else.
std::optional<std::size_t> integerOf(const Value* value, std::size_t maximum) {
    if (!value || value->kind != Value::Kind::number || !(value->number >= 0) ||
        value->number > static_cast<double>(maximum) ||
        std::floor(value->number) != value->number) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(value->number);
}

std::optional<ScopeRun> scopeRunOf(const Value& value, std::size_t codeLength) {
    const auto location = integerOf(value.member("location"), codeLength);
    const auto length = integerOf(value.member("length"), codeLength);
    const auto* const scope = value.member("scope");
    if (!location || !length || *length > codeLength - *location || !scope ||
        scope->kind != Value::Kind::string) {
        return std::nullopt;
    }
    return ScopeRun{{*location, *length}, CodeSyntax::color(scope->string)};
}

std::optional<CodeLanguage> languageOf(const Value& value) {
    const auto* const id = value.member("id");
    const auto* const name = value.member("name");
    if (!id || id->kind != Value::Kind::string || !name || name->kind != Value::Kind::string) {
        return std::nullopt;
    }
    return CodeLanguage{id->string, name->string.empty() ? id->string : name->string};
}

} // namespace

CodeSyntax::CodeSyntax(ScriptEngineFactory makeEngine, ResourceLookup resources, base::LogSink& log,
                       std::stop_token stop)
    : m_makeEngine(std::move(makeEngine)),
      m_resources(std::move(resources)),
      m_log(log, "CodeSyntax"),
      m_stop(std::move(stop)) {}

CodeSyntax::~CodeSyntax() = default;

ScriptEngine* CodeSyntax::engine() {
    if (!m_isPrepared) {
        m_isPrepared = true;
        m_engine = preparedEngine();
    }
    return m_engine.get();
}

std::unique_ptr<ScriptEngine> CodeSyntax::preparedEngine() const {
    const auto library = m_resources ? m_resources("highlight.min", "js") : std::nullopt;
    auto engine = library && m_makeEngine ? m_makeEngine(m_stop) : nullptr;
    // A stop is no failure.
    const auto refuse = [&](std::string_view message) -> std::unique_ptr<ScriptEngine> {
        if (!m_stop.stop_requested()) {
            m_log.error(message);
        }
        return nullptr;
    };
    if (!engine) {
        return refuse("Bundled code highlighter unavailable");
    }
    for (const auto source : {*library, kConsoleScript, kHighlightScript}) {
        if (!engine->evaluate(source)) {
            return refuse("Bundled code highlighter failed to initialize");
        }
    }
    return engine;
}

std::vector<CodeLanguage> CodeSyntax::firstLanguages() {
    return {{std::string(kAutomatic), "Automatic"}, {std::string(kPlainText), "Plain Text"}};
}

const std::vector<CodeLanguage>& CodeSyntax::languages() {
    if (!m_languages.empty()) {
        return m_languages;
    }
    m_languages = firstLanguages();
    const auto first = static_cast<std::ptrdiff_t>(m_languages.size());
    if (auto* const script = engine()) {
        const auto reported = script->call("korvexLanguages", {});
        for (const auto& value : reported ? reported->array : ScriptEngine::Array()) {
            // The library has a plain text of its own, which stands in the list already.
            if (auto language = languageOf(value); language && language->id != kPlainText) {
                m_languages.push_back(std::move(*language));
            }
        }
        const base::NameOrder order;
        std::stable_sort(m_languages.begin() + first, m_languages.end(),
                         [&](const CodeLanguage& left, const CodeLanguage& right) {
                             return order.compare(left.name, right.name) < 0;
                         });
    }
    return m_languages;
}

bool CodeSyntax::isHighlightable(std::u16string_view code, std::string_view language) {
    return language != kPlainText && !code.empty() && code.size() <= kMaximumHighlighted;
}

std::vector<ScopeRun> CodeSyntax::scopes(std::u16string_view code, std::string_view language) {
    std::vector<ScopeRun> result;
    if (!isHighlightable(code, language) || !engine()) {
        return result;
    }
    const auto runs = m_engine->call("korvexHighlight", {code, base::utf16(language)});
    for (const auto& value : runs ? runs->array : ScriptEngine::Array()) {
        const auto run = scopeRunOf(value, code.size());
        if (!run || run->range.length == 0 || run->color == SystemColor::label) {
            continue;
        }
        if (!result.empty() && result.back().color == run->color &&
            result.back().range.end() == run->range.location) {
            result.back().range.length += run->range.length;
        } else {
            result.push_back(*run);
        }
    }
    return result;
}

bool CodeSyntax::isKnownLanguage(std::string_view id) {
    const auto known = highlighterLanguages();
    return id == kAutomatic || id == kPlainText ||
           std::binary_search(known.begin(), known.end(), id);
}

CharacterAttributes CodeSyntax::attributes(std::string_view language, CodeKind kind) {
    CharacterAttributes attributes;
    applyCode(attributes, language, kind);
    attributes.foreground = Color::named(SystemColor::label);
    attributes.background = Color::named(SystemColor::quaternaryLabel);
    return attributes;
}

std::string CodeSyntax::language(const CharacterAttributes& attributes) {
    if (attributes.isCode()) {
        return attributes.korvexCodeLanguage;
    }
    return countsAsCode(attributes) ? std::string(kAutomatic) : std::string();
}

SystemColor CodeSyntax::color(std::string_view scope) {
    struct Row {
        std::string_view scope;
        SystemColor color;
    };
    static constexpr auto kRows = std::to_array<Row>({
        {"keyword", SystemColor::purple},
        {"selector-tag", SystemColor::purple},
        {"type", SystemColor::purple},
        {"string", SystemColor::green},
        {"regexp", SystemColor::green},
        {"symbol", SystemColor::green},
        {"bullet", SystemColor::green},
        {"addition", SystemColor::green},
        {"number", SystemColor::orange},
        {"literal", SystemColor::orange},
        {"attr", SystemColor::orange},
        {"attribute", SystemColor::orange},
        {"title", SystemColor::blue},
        {"built_in", SystemColor::blue},
        {"section", SystemColor::blue},
        {"comment", SystemColor::secondaryLabel},
        {"doctag", SystemColor::secondaryLabel},
        {"meta", SystemColor::pink},
        {"tag", SystemColor::pink},
        {"name", SystemColor::pink},
        {"variable", SystemColor::pink},
        {"deletion", SystemColor::red},
    });
    const auto first = scope.substr(0, scope.find('.'));
    const auto* const row = std::find_if(kRows.begin(), kRows.end(),
                                         [&](const Row& each) { return each.scope == first; });
    return row == kRows.end() ? SystemColor::label : row->color;
}

} // namespace korvex::richtext
