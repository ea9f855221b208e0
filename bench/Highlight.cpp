// Colouring the longest code that is coloured, 20,000 units of C++, the first ten times that a new
// engine does it: what a window has to do in which code is opened. Against `node` running the same
// script over the same text as often, in a new process. Neither's start is counted. Beside it: the
// same code with its language detected; and what the engine takes until it stands.

#include "support/ChildProcess.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"

#include "base/Utf16.h"
#include "platform/javascriptcore/ScriptModule.h"
#include "richtext/code/CodeScript.h"
#include "richtext/code/CodeSyntax.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <fstream>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace korvex;

/// How often both sides analyse the text.
constexpr int kRuns = 10;

/// A source file as people write them: comments, classes, literals, templates; no line twice.
std::string cppSource() {
    static constexpr auto kNouns =
        std::to_array<const char*>({"Board", "Entry", "Window", "Cursor", "Journal", "Palette"});
    static constexpr auto kVerbs =
        std::to_array<const char*>({"open", "merge", "collect", "paint", "resolve"});
    std::string text =
        "#include <map>\n#include <string>\n#include <vector>\n\nnamespace demo {\n\n";
    for (std::size_t i = 0; text.size() < richtext::CodeSyntax::kMaximumHighlighted; ++i) {
        const std::string noun = kNouns[i % kNouns.size()] + std::to_string(i);
        const std::string verb = kVerbs[i % kVerbs.size()];
        text += "/// Keeps the " + noun + " in order; see `" + verb + "` for its limits.\n" +
                "class " + noun + " final : public Base<" + std::to_string(i) + "> {\npublic:\n" +
                "    explicit " + noun + "(std::string name, double scale = " + std::to_string(i) +
                ".25e-3)\n        : m_name(std::move(name)), m_scale(scale) {}\n\n" +
                "    template <typename Visit>\n    void " + verb + "(Visit&& visit) const {\n" +
                "        for (const auto& [key, value] : m_items) {\n" +
                "            if (value > 0x" + std::to_string(i + 10) + "u && key != \"skip " +
                std::to_string(i) + "\\n\") {\n" +
                "                visit(key, static_cast<int>(value) * " + std::to_string(i * 7) +
                "); // the " + verb + " of it\n            } else {\n" +
                "                throw std::runtime_error(\"no " + noun + "\");\n            }\n" +
                "        }\n    }\n\nprivate:\n    std::string m_name;\n    double m_scale;\n" +
                "    std::map<std::string, unsigned> m_items{{\"" + verb + "\", " +
                std::to_string(i) + "}};\n};\n\n";
    }
    text.resize(richtext::CodeSyntax::kMaximumHighlighted);
    return text;
}

const platform::javascriptcore::ScriptModule& scriptModule() {
    static base::StandardErrorLog log(base::LogLevel::warning);
    static const platform::javascriptcore::ScriptModule module(
        platform::javascriptcore::ScriptModule::defaultFile(), log);
    return module;
}

base::LogSink& errorLog() {
    static base::StandardErrorLog log(base::LogLevel::error);
    return log;
}

richtext::CodeSyntax makeSyntax() {
    return {scriptModule().engineFactory(), scriptModule().resources(), errorLog()};
}

double secondsOf(const auto& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double medianOf(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void highlight(benchmark::State& state, std::string_view language) {
    const auto code = base::utf16(cppSource());
    for (auto _ : state) {
        auto syntax = makeSyntax();
        std::vector<double> times;
        std::size_t runs = 0;
        for (int i = 0; i < kRuns; ++i) {
            times.push_back(secondsOf([&] { runs = syntax.scopes(code, language).size(); }));
        }
        if (runs < 1000) {
            state.SkipWithError("the code was not coloured");
        }
        state.SetIterationTime(medianOf(times));
    }
}

/// The same in node: one process, which times itself and prints its median in seconds.
void highlightInNode(benchmark::State& state, std::string_view language) {
    const bench::Scratch scratch;
    const auto library = scriptModule().resources()("highlight.min", "js");
    if (!library) {
        state.SkipWithError("there is no highlighter");
        return;
    }
    std::ofstream(scratch / "library.js") << *library;
    std::ofstream(scratch / "functions.js")
        << richtext::kConsoleScript << richtext::kHighlightScript;
    std::ofstream(scratch / "code.cpp") << cppSource();
    std::ofstream(scratch / "measure.js") << R"js(
        const { readFileSync } = require("fs");
        const { join } = require("path");
        const { runInThisContext } = require("vm");
        const [language, runs] = process.argv.slice(2);
        const read = name => readFileSync(join(__dirname, name), "utf8");
        runInThisContext(read("library.js"));
        runInThisContext(read("functions.js"));
        const code = read("code.cpp");
        const times = [];
        for (let i = 0; i < runs; ++i) {
            const start = process.hrtime.bigint();
            korvexHighlight(code, language);
            times.push(Number(process.hrtime.bigint() - start) / 1e9);
        }
        times.sort((a, b) => a - b);
        process.stdout.write("median " + times[times.length >> 1] + "\n");
    )js";
    for (auto _ : state) {
        bench::ChildProcess node(
            {"node", scratch / "measure.js", std::string(language), std::to_string(kRuns)}, {},
            bench::ChildProcess::Output::watched);
        const auto line = node.waitForLine("median ");
        state.SetIterationTime(std::stod(line.substr(line.find(' '))));
    }
}

/// From nothing to the first colours of a line; the module is loaded already.
void firstColors(benchmark::State& state) {
    makeSyntax().languages();
    for (auto _ : state) {
        bench::timed(state, [&] { makeSyntax().scopes(u"int a = 1;", "cpp"); });
    }
}

void add(const char* name, const char* nameOfLimit, const char* language) {
    const auto addOne = [&](const char* itsName, auto* function) {
        benchmark::RegisterBenchmark(itsName, function, language)
            ->UseManualTime()
            ->Iterations(1)
            ->Unit(benchmark::kMillisecond);
    };
    addOne(name, &highlight);
    addOne(nameOfLimit, &highlightInNode);
}

const bool kAreAdded = [] {
    add("korvex", "limit", "cpp");
    add("detected", "detected_limit", "auto");
    return true;
}();

BENCHMARK(firstColors)
    ->Name("first_colors")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

} // namespace
