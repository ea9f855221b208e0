// Reading and writing of stored texts: 1 MiB of mixed text, lists and tables, against one look at
// each of its bytes and against unrtf as a whole process; and what hostile files cost at n and 2n,
// where "growth" is how many times as long the larger one takes and "memory" the most that was
// allocated beyond the file.

#include "base/Bytes.h"
#include "richtext/rtf/RtfReader.h"
#include "richtext/rtf/RtfWriter.h"
#include "richtext/table/RichTextTable.h"
#include "richtext/text/HeadingLevel.h"
#include "support/AllocationCounter.h"
#include "support/ChildProcess.h"
#include "support/Scratch.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <fstream>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace korvex;
using namespace korvex::richtext;

constexpr std::size_t kMebibyte = 1 << 20U;
/// Of a hostile file: the quickest counts.
constexpr int kIterations = 5;
constexpr std::u16string_view kSentence =
    u"The quick brown fox jumps over the lazy dog, and the dog does not mind it at all. ";

void appendSection(AttributedString& text, int number) {
    text.append(u"A heading, number " +
                    std::u16string(1, static_cast<char16_t>(u'0' + number % 10)) + u"\n",
                {.font = fontOf(HeadingLevel::level2)},
                {.spacingBefore = spacingBeforeOf(HeadingLevel::level2)});
    for (int paragraph = 0; paragraph < 3; ++paragraph) {
        text.append(kSentence, {}, {});
        text.append(u"Bold words", {.font = {.isBold = true}}, {});
        text.append(u" and \u201Cquoted\u201D ones, na\u00EFve caf\u00E9s and \u65E5\u672C. ", {},
                    {});
        text.append(u"a link", {.link = "https://example.org/a/path?with=query"}, {});
        text.append(kSentence, {}, {});
        text.append(u"\n", {}, {});
    }
    const auto outer = std::make_shared<TextList>(TextList{u"{decimal}."});
    const auto inner = std::make_shared<TextList>(TextList{u"{disc}"});
    for (int item = 0; item < 6; ++item) {
        ParagraphStyle style{.leftIndent = 720, .firstLineIndent = -360, .lists = {outer}};
        if (item % 3 == 1) {
            style.lists.push_back(inner);
        }
        text.append(u"An item of a list, with some words\n", {}, style);
    }
    auto table = RichTextTable::make(3, 4);
    for (auto offset = table.length(); offset-- > 0;) {
        table.replace({offset, 0},
                      AttributedString(u"cell", table.attributesAt(offset), table.styleAt(offset)));
    }
    text.append(table);
}

/// About a mebibyte when it is written.
const AttributedString& mixedText() {
    static const AttributedString text = [] {
        AttributedString section;
        appendSection(section, 0);
        const auto sections = kMebibyte / writeRtf(section).size();
        AttributedString whole;
        for (std::size_t number = 0; number < sections; ++number) {
            appendSection(whole, static_cast<int>(number));
        }
        return whole;
    }();
    return text;
}

const base::Bytes& mixedDocument() {
    static const auto document = writeRtf(mixedText());
    return document;
}

void countBytes(benchmark::State& state) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(mixedDocument().size()));
}

void reading(benchmark::State& state) {
    const auto& document = mixedDocument();
    for (auto _ : state) {
        benchmark::DoNotOptimize(readRtf(document));
    }
    countBytes(state);
}

void writing(benchmark::State& state) {
    const auto& text = mixedText();
    mixedDocument();
    for (auto _ : state) {
        benchmark::DoNotOptimize(writeRtf(text));
    }
    countBytes(state);
}

void scanning(benchmark::State& state) {
    const auto& document = mixedDocument();
    for (auto _ : state) {
        std::int64_t depth = 0;
        for (const auto byte : document) {
            if (byte == '{') {
                ++depth;
            } else if (byte == '}') {
                --depth;
            }
            benchmark::DoNotOptimize(depth);
        }
    }
    countBytes(state);
}

void otherProgram(benchmark::State& state) {
    const auto& document = mixedDocument();
    const bench::Scratch scratch;
    const auto file = scratch / "mixed.rtf";
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(document.data()),
               static_cast<std::streamsize>(document.size()));
    for (auto _ : state) {
        bench::runToEnd({"unrtf", "--text", "--quiet", file.string()});
    }
    countBytes(state);
}

std::string repeated(std::string_view piece, std::size_t bytes) {
    std::string text;
    text.reserve(bytes + piece.size());
    while (text.size() < bytes) {
        text += piece;
    }
    return text;
}

/// `piece` is given the number of the repetition.
std::string numbered(const std::function<std::string(const std::string&)>& piece,
                     std::size_t bytes) {
    std::string text;
    text.reserve(bytes);
    for (int number = 1; text.size() < bytes; ++number) {
        text += piece(std::to_string(number));
    }
    return text;
}

struct Family {
    const char* name;
    std::function<std::string(std::size_t bytes)> make;
};

std::string document(std::string_view content) {
    return "{\\rtf1\\ansi\\cocoartf2822 " + std::string(content) + "}";
}

const std::vector<Family>& families() {
    static const std::vector<Family> all{
        {"groups", [](std::size_t bytes) { return document(repeated("{", bytes)); }},
        {"closed-groups", [](std::size_t bytes) { return document(repeated("{\\b x}", bytes)); }},
        {"fonts",
         [](std::size_t bytes) {
             return document(
                 "{\\fonttbl" +
                 numbered([](const std::string& number) { return "\\f" + number + " a;"; }, bytes) +
                 "}x");
         }},
        {"grouped-fonts",
         [](std::size_t bytes) {
             return document(
                 "{\\fonttbl" +
                 numbered(
                     [](const std::string& number) { return "{\\f" + number + "\\fcharset0 a;}"; },
                     bytes) +
                 "}x");
         }},
        {"font-tables",
         [](std::size_t bytes) { return document(repeated("{\\fonttbl}a", bytes)); }},
        {"colors",
         [](std::size_t bytes) { return document("{\\colortbl" + repeated(";", bytes) + "}x"); }},
        {"cells", [](std::size_t bytes) { return document(repeated("\\cell", bytes)); }},
        {"rows", [](std::size_t bytes) { return document(repeated("\\cell\\row", bytes)); }},
        {"defined-rows",
         [](std::size_t bytes) {
             return document(repeated("\\trowd\\cellx9\\pard\\intbl a\\cell\\row", bytes));
         }},
        {"wide-rows",
         [](std::size_t bytes) {
             return document("\\trowd" + repeated("\\cellx1", 256 * 7) +
                             repeated(repeated("\\cell", 256 * 5) + "\\row", bytes));
         }},
        {"merged-rows",
         [](std::size_t bytes) {
             return document("\\trowd" + repeated("\\clvmgf\\cellx1", 256 * 14) +
                             repeated("\\cell", 256 * 5) + "\\row\\trowd" +
                             repeated("\\clvmrg\\cellx1", 256 * 14) +
                             repeated(repeated("\\cell", 256 * 5) + "\\row", bytes));
         }},
        {"uneven-rows",
         [](std::size_t bytes) {
             return "{\\rtf1 " +
                    repeated("\\trowd\\cellx1000\\cellx2000\\cell\\cell\\row"
                             "\\trowd\\cellx500\\cell\\row",
                             bytes) +
                    "}";
         }},
        {"row-definitions",
         [](std::size_t bytes) { return document(repeated("\\trowd\\cellx9", bytes)); }},
        {"cell-edges",
         [](std::size_t bytes) { return document("\\trowd" + repeated("\\cellx9", bytes)); }},
        {"nested-tables",
         [](std::size_t bytes) {
             return document(repeated("\\pard\\intbl\\itap2000000000 a\\nestcell\\nestrow", bytes));
         }},
        {"alternating-depth",
         [](std::size_t bytes) {
             return document(repeated("\\pard\\intbl\\itap16 a\\par\\pard b\\par", bytes));
         }},
        {"tab-stops",
         [](std::size_t bytes) {
             return document(
                 numbered([](const std::string& number) { return "\\tx" + number; }, bytes) + "x");
         }},
        {"saved-paragraphs",
         [](std::size_t bytes) {
             return document(
                 numbered([](const std::string& number) { return "\\tx" + number; }, 500) +
                 repeated("{\\li1}", bytes));
         }},
        {"paragraph-styles",
         [](std::size_t bytes) {
             return document(numbered(
                 [](const std::string& number) { return "\\li" + number + "\\\n"; }, bytes));
         }},
        {"character-styles",
         [](std::size_t bytes) {
             return document(numbered(
                 [](const std::string& number) { return "\\fsmilli" + number + " a"; }, bytes));
         }},
        {"links",
         [](std::size_t bytes) {
             return document(numbered(
                 [](const std::string& number) {
                     return "{\\field{\\*\\fldinst HYPERLINK " + number + "}{\\fldrslt a}}";
                 },
                 bytes));
         }},
        {"lists",
         [](std::size_t bytes) {
             return document(
                 "{\\*\\listtable" +
                 numbered(
                     [](const std::string& number) {
                         return "{\\list{\\listlevel}\\listid" + number + "}";
                     },
                     bytes / 2) +
                 "}{\\*\\listoverridetable" +
                 numbered(
                     [](const std::string& number) {
                         return "{\\listoverride\\listid" + number + "\\ls" + number + "}";
                     },
                     bytes / 2) +
                 "}" +
                 numbered([](const std::string& number) { return "\\ls" + number + "\\par"; },
                          bytes / 4));
         }},
        {"old-numberings",
         [](std::size_t bytes) {
             return document(numbered(
                 [](const std::string& number) {
                     return "{\\*\\pn\\pndec\\pnstart" + number + "}a\\par";
                 },
                 bytes));
         }},
        {"binary",
         [](std::size_t bytes) {
             return document(repeated("\\bin0 ", bytes) + "\\bin2147483647 x");
         }},
        {"skipped",
         [](std::size_t bytes) { return document("{\\*\\unknown" + repeated("{\\a{}", bytes)); }},
        {"lead-bytes",
         [](std::size_t bytes) {
             return document("{\\fonttbl\\f0\\fcharset128 a;}\\f0 " + repeated("{\\'82}", bytes));
         }},
        {"code-pages",
         [](std::size_t bytes) {
             return document(
                 "{\\fonttbl" +
                 numbered(
                     [](const std::string& number) {
                         return "\\f" + number + "\\cpg" + number + " a;";
                     },
                     bytes / 2) +
                 "}" +
                 numbered([](const std::string& number) { return "\\f" + number + "\\'e4"; },
                          bytes / 2));
         }},
        {"characters", [](std::size_t bytes) { return document(repeated("\\u1", bytes)); }},
        {"long-word", [](std::size_t bytes) { return document("\\" + repeated("a", bytes)); }},
        {"long-number", [](std::size_t bytes) { return document("\\b" + repeated("9", bytes)); }},
        {"alternating-runs",
         [](std::size_t bytes) { return document(repeated("\\b1a\\b0a", bytes)); }},
        {"paragraphs", [](std::size_t bytes) { return document(repeated("\\\n", bytes)); }},
    };
    return all;
}

/// Of the processor, so that other programs do not count.
double secondsToRead(const std::string& file) {
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(file.data()), file.size());
    const auto start = std::clock();
    benchmark::DoNotOptimize(readRtf(bytes));
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

void hostile(benchmark::State& state, const Family& family) {
    const auto small = family.make(kMebibyte);
    const auto large = family.make(2 * kMebibyte);
    auto smallSeconds = std::numeric_limits<double>::max();
    auto largeSeconds = smallSeconds;
    std::size_t memory = 0;
    for (auto _ : state) {
        smallSeconds = std::min(smallSeconds, secondsToRead(small));
        const auto before = bench::allocatedBytes();
        bench::forgetMostAllocated();
        const auto taken = secondsToRead(large);
        memory = std::max(memory, bench::mostAllocatedBytes() - before);
        largeSeconds = std::min(largeSeconds, taken);
        state.SetIterationTime(taken);
    }
    state.counters["growth"] = largeSeconds / smallSeconds;
    state.counters["memory"] = static_cast<double>(memory) / static_cast<double>(large.size());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(large.size()));
}

BENCHMARK(reading)->Name("read")->Unit(benchmark::kMillisecond);
BENCHMARK(writing)->Name("write")->Unit(benchmark::kMillisecond);
BENCHMARK(scanning)->Name("limit/scan")->Unit(benchmark::kMillisecond);
BENCHMARK(otherProgram)->Name("limit/unrtf")->Unit(benchmark::kMillisecond)->UseRealTime();

const bool kAreFamiliesRegistered = [] {
    for (const auto& family : families()) {
        benchmark::RegisterBenchmark((std::string("hostile/") + family.name).c_str(),
                                     [&family](benchmark::State& state) { hostile(state, family); })
            ->UseManualTime()
            ->Iterations(kIterations)
            ->Unit(benchmark::kMillisecond);
    }
    return true;
}();

} // namespace
