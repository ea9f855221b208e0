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
    if (value == nullptr || value->kind != Value::Kind::number || !(value->number >= 0) ||
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
    if (!location || !length || *length > codeLength - *location || scope == nullptr ||
        scope->kind != Value::Kind::string) {
        return std::nullopt;
    }
    return ScopeRun{{*location, *length}, CodeSyntax::color(scope->string)};
}

std::optional<CodeLanguage> languageOf(const Value& value) {
    const auto* const id = value.member("id");
    const auto* const name = value.member("name");
    if (id == nullptr || id->kind != Value::Kind::string || name == nullptr ||
        name->kind != Value::Kind::string) {
        return std::nullopt;
    }
    return CodeLanguage{id->string, name->string.empty() ? id->string : name->string};
}

/// The maximal ranges of one language each.
struct CodeRun {
    TextRange range;
    std::string language;
};

std::vector<CodeRun> codeRunsOf(const AttributedString& text) {
    std::vector<CodeRun> result;
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        if (!run.attributes.isCode()) {
            return;
        }
        const auto& language = run.attributes.korvexCodeLanguage;
        if (!result.empty() && result.back().range.end() == run.range.location &&
            result.back().language == language) {
            result.back().range.length += run.range.length;
        } else {
            result.push_back({run.range, language});
        }
    });
    return result;
}

/// One colour for each unit; `none` leaves the unit as it is.
AttributedString colored(const AttributedString& text, const std::vector<SystemColor>& colors) {
    AttributedString::Builder builder;
    builder.reserve(text.length());
    const std::u16string_view units = text.text();
    text.forEachParagraph([&](const AttributedString::ParagraphRun& paragraph) {
        text.forEachRun(paragraph.range, [&](const AttributedString::CharacterRun& run) {
            for (auto start = run.range.location; start < run.range.end();) {
                const auto color = colors[start];
                auto end = start + 1;
                while (end < run.range.end() && colors[end] == color) {
                    ++end;
                }
                auto attributes = run.attributes;
                if (color != SystemColor::none) {
                    attributes.foreground = Color::named(color);
                }
                builder.append(units.substr(start, end - start), builder.idOf(attributes));
                start = end;
            }
        });
        builder.endParagraph(builder.idOf(paragraph.style));
    });
    return builder.take();
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

std::string CodeSyntax::title(std::string_view id) {
    const auto& known = languages();
    const auto found = std::find_if(known.begin(), known.end(),
                                    [&](const CodeLanguage& each) { return each.id == id; });
    return found == known.end() ? std::string(id) : found->name;
}

bool CodeSyntax::isHighlightable(std::u16string_view code, std::string_view language) {
    return language != kPlainText && !code.empty() && code.size() <= kMaximumHighlighted;
}

std::vector<ScopeRun> CodeSyntax::scopes(std::u16string_view code, std::string_view language) {
    std::vector<ScopeRun> result;
    if (!isHighlightable(code, language) || engine() == nullptr) {
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

AttributedString CodeSyntax::highlighted(const AttributedString& text) {
    std::vector<SystemColor> colors(text.length(), SystemColor::none);
    const auto paint = [&](TextRange range, SystemColor color) {
        const auto start = colors.begin() + static_cast<std::ptrdiff_t>(range.location);
        std::fill(start, start + static_cast<std::ptrdiff_t>(range.length), color);
    };
    for (const auto& run : codeRunsOf(text)) {
        const auto code =
            std::u16string_view(text.text()).substr(run.range.location, run.range.length);
        if (!isHighlightable(code, run.language) || engine() == nullptr) {
            continue;
        }
        paint(run.range, SystemColor::label);
        for (const auto& scope : scopes(code, run.language)) {
            paint({run.range.location + scope.range.location, scope.range.length}, scope.color);
        }
    }
    return colored(text, colors);
}

bool CodeSyntax::isKnownLanguage(std::string_view id) {
    const auto known = highlighterLanguages();
    return id == kAutomatic || id == kPlainText ||
           std::binary_search(known.begin(), known.end(), id);
}

CharacterAttributes CodeSyntax::attributes(std::string_view language, bool isBlock) {
    return {.font = {.family = FontFamily::monospaced},
            .korvexCodeLanguage = std::string(language),
            .korvexCodeBlock = isBlock,
            .foreground = Color::named(SystemColor::label),
            .background = Color::named(SystemColor::quaternaryLabel)};
}

AttributedString CodeSyntax::applying(std::string_view language, bool isBlock,
                                      const AttributedString& text) {
    auto result = text;
    const TextRange whole{0, result.length()};
    const auto code = attributes(language, isBlock);
    result.editAttributes(whole, [&](CharacterAttributes& run) {
        run.font = code.font;
        run.korvexCodeLanguage = code.korvexCodeLanguage;
        run.korvexCodeBlock = code.korvexCodeBlock;
        run.foreground = code.foreground;
        run.background = code.background;
    });
    result.editStyles(whole, [isBlock](ParagraphStyle& style) {
        if (isBlock) {
            style.lineSpacing = kBlockLineSpacing;
        } else if (style.lineSpacing == kBlockLineSpacing) {
            // A block that becomes inline code gives back what made it a block.
            style.lineSpacing = 0;
        }
    });
    return result;
}

bool CodeSyntax::isBlock(const AttributedString& text) {
    bool found = false;
    text.forEachRun([&](const AttributedString::CharacterRun& run) {
        found = found || run.attributes.korvexCodeBlock;
    });
    return found;
}

std::string CodeSyntax::language(const AttributedString& text, std::size_t offset) {
    const auto& attributes = text.attributesAt(offset);
    if (attributes.isCode()) {
        return attributes.korvexCodeLanguage;
    }
    return attributes.font.family == FontFamily::monospaced ? std::string(kAutomatic)
                                                            : std::string();
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
