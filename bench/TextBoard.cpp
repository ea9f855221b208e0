// From the start of korvex-desktop to its window's first picture with a board of 1,000 formatted
// texts, against the same with 1,000 todos.

#include "support/BenchStore.h"
#include "support/Notes.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"
#include "support/VirtualScreen.h"

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 1'000;

void fillWithTodos(bench::OpenStore& store) {
    store.entries().createTodos(
        {.contents = bench::titles(kEntries), .board = store.inbox(), .now = bench::kNow});
}

void fillWithTexts(bench::OpenStore& store) {
    bench::addNotes(store, store.inbox(), kEntries);
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
