// From the start of korvex-desktop to its window's first picture with a board of 1,000 formatted
// texts, against the same with 1,000 todos.

#include "richtext/code/CodeSyntax.h"
#include "richtext/table/RichTextTable.h"
#include "richtext/text/HeadingLevel.h"
#include "support/BenchStore.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"
#include "support/VirtualScreen.h"

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 1'000;

/// A note as people write them; every tenth has a table and code.
richtext::AttributedString note(std::size_t number) {
    using namespace richtext;
    const auto list = std::make_shared<TextList>(TextList{.marker = u"{disc}"});
    AttributedString text;
    text.append(u"Notes of the meeting\n", {.font = fontOf(HeadingLevel::level2)},
                {.spacingBefore = spacingBeforeOf(HeadingLevel::level2)});
    text.append(u"What was said is in the ", {}, {});
    text.append(u"minutes", {.link = "https://example.org/" + std::to_string(number)}, {});
    text.append(u", what is to be done is ", {}, {});
    text.append(u"decided", {.font = {.isBold = true}}, {});
    text.append(u" and stands here, so that nobody has to look for it in a hurry.\n", {}, {});
    text.append(u"Call the printer\nBook the room for the next time\nSend the drafts around\n", {},
                {.lists = {list}});
    if (number % 10 == 0) {
        text.append(u"for (int i = 0; i < 10; ++i) {\n    print(i);\n}\n",
                    CodeSyntax::attributes("cpp", richtext::CodeKind::block),
                    {.lineSpacing = richtext::kCodeBlockLineSpacing});
        text.append(RichTextTable::make(3, 3));
    }
    return text;
}

void fillWithTodos(bench::OpenStore& store) {
    store.entries().createTodos(
        {.contents = bench::titles(kEntries), .board = store.inbox(), .now = bench::kNow});
}

void fillWithTexts(bench::OpenStore& store) {
    auto entries = store.entries();
    for (std::size_t i = 0; i < kEntries; ++i) {
        entries.createText({.rich = note(i), .board = store.inbox(), .now = bench::kNow});
    }
}

void startWindow(benchmark::State& state, void (*fill)(bench::OpenStore&)) {
    static const bench::VirtualScreen screen;
    const bench::Scratch scratch;
    const auto folder = scratch / "korvex";
    std::filesystem::create_directory(folder);
    {
        bench::OpenStore store(folder / "Primary.store");
        fill(store);
        store.container().checkpoint();
    }
    auto environment = screen.environment();
    for (const auto* const name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR"}) {
        environment[name] = scratch.path();
    }
    environment["KORVEX_TRACE_STARTUP"] = "1";
    for (auto _ : state) {
        std::unique_ptr<bench::ChildProcess> process;
        bench::timed(state, [&] {
            process = std::make_unique<bench::ChildProcess>(
                std::vector<std::string>{KORVEX_DESKTOP_PROGRAM}, environment,
                bench::ChildProcess::Output::watched);
            process->waitForLine("first paint");
        });
    }
}

BENCHMARK_CAPTURE(startWindow, texts, fillWithTexts)
    ->Name("korvex")
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(startWindow, todos, fillWithTodos)
    ->Name("limit")
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);

} // namespace
