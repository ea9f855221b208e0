// Normalising a text of 10,000 characters, which every save of a formatted text does; against a
// plain copy of the string. Beside it: the same for a text of tables, and for one in which every
// character looks different from its neighbours.

#include "richtext/code/CodeSyntax.h"
#include "richtext/stored/RichTextSerializer.h"
#include "richtext/table/RichTextTable.h"

#include <benchmark/benchmark.h>

#include <string>

namespace {

using namespace korvex;
using richtext::AttributedString;
using richtext::RichTextSerializer;

constexpr std::size_t kCharacters = 10'000;

void cut(AttributedString& text) {
    text.remove({kCharacters, text.length()});
}

/// As people write: headings, paragraphs with an emphasised word here and there, a list, code.
AttributedString notes() {
    const auto list = std::make_shared<richtext::TextList>(richtext::TextList{u"{disc}"});
    const auto code = richtext::CodeSyntax::attributes("cpp", richtext::CodeKind::block);
    AttributedString text;
    while (text.length() < kCharacters) {
        text.append(u"What we know about it\n",
                    {.font = richtext::fontOf(richtext::HeadingLevel::level2)},
                    {.spacingBefore = 160});
        for (int i = 0; i < 6; ++i) {
            richtext::ParagraphStyle style;
            if (i >= 4) {
                style.lists = {list};
            }
            text.append(u"A sentence of some words, and one of them is ", {}, style);
            text.append(u"important", {.font = {.isBold = true}}, style);
            text.append(u"; the rest is just as it comes, with ", {}, style);
            text.append(u"a link", {.link = "https://example.org/"}, style);
            text.append(u" at the end.\n", {}, style);
        }
        text.append(u"int main() {\n    return 0;\n}\n", code, {.lineSpacing = 60});
    }
    cut(text);
    return text;
}

AttributedString tables() {
    AttributedString text;
    while (text.length() < kCharacters) {
        text.append(richtext::RichTextTable::make(50, 10));
        text.append(u"words between the tables\n", {}, {});
    }
    cut(text);
    // So that it is whole: what is measured is the look, not the repair.
    return RichTextSerializer::normalized(text);
}

AttributedString motley() {
    AttributedString text;
    while (text.length() < kCharacters) {
        const auto i = text.length();
        text.append(u"x",
                    {.font = {.isBold = i % 2 == 0, .isItalic = i % 3 == 0},
                     .link = i % 5 == 0 ? "https://example.org/" : "",
                     .foreground = richtext::Color{.red = static_cast<std::uint8_t>(i)}},
                    {});
    }
    return text;
}

void normalize(benchmark::State& state, AttributedString (*make)()) {
    const auto text = make();
    for (auto _ : state) {
        benchmark::DoNotOptimize(RichTextSerializer::normalized(text));
    }
}

void copy(benchmark::State& state, AttributedString (*make)()) {
    const auto text = make();
    for (auto _ : state) {
        auto result = text;
        benchmark::DoNotOptimize(result);
    }
}

BENCHMARK_CAPTURE(normalize, notes, notes)->Name("korvex")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(copy, notes, notes)->Name("limit")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(normalize, tables, tables)->Name("tables")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(copy, tables, tables)->Name("tables_limit")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(normalize, motley, motley)->Name("motley")->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(copy, motley, motley)->Name("motley_limit")->Unit(benchmark::kMicrosecond);

} // namespace
