// From the start of korvex-desktop to its window's first picture with a board of 10,000 entries,
// and the memory that it has then; against a bare Qt window with one label.

#include "support/BenchStore.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"
#include "support/VirtualScreen.h"

#include <algorithm>

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 10'000;

void startWindow(benchmark::State& state, const char* program) {
    static const bench::VirtualScreen screen;
    static const bench::Scratch scratch;
    static const bench::Environment home = [] {
        const auto folder = scratch / "korvex";
        std::filesystem::create_directory(folder);
        bench::makeStore(folder / "Primary.store", bench::titles(kEntries));
        return bench::Environment{{"XDG_DATA_HOME", scratch.path()},
                                  {"XDG_CONFIG_HOME", scratch.path()},
                                  {"XDG_RUNTIME_DIR", scratch.path()}};
    }();
    auto environment = screen.environment();
    environment.insert(home.begin(), home.end());
    environment["KORVEX_TRACE_STARTUP"] = "1";
    std::int64_t memory = 0;
    for (auto _ : state) {
        std::unique_ptr<bench::ChildProcess> process;
        bench::timed(state, [&] {
            process = std::make_unique<bench::ChildProcess>(std::vector<std::string>{program},
                                                            environment,
                                                            bench::ChildProcess::Output::watched);
            process->waitForLine("first paint");
        });
        memory = std::max(memory, process->proportionalMemory());
    }
    state.counters["memory"] = static_cast<double>(memory);
}

BENCHMARK_CAPTURE(startWindow, korvex, KORVEX_DESKTOP_PROGRAM)
    ->Name("korvex")
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(startWindow, bare, KORVEX_BARE_WINDOW_PROGRAM)
    ->Name("limit")
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);

} // namespace
