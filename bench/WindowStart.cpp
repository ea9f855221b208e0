// From the start of korvex-desktop to its window's first picture with a board of 10,000 entries,
// and the memory that it has then; against a bare Qt window with one label.

#include "support/BenchStore.h"
#include "support/FirstPaint.h"
#include "support/Scratch.h"
#include "support/VirtualScreen.h"

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
    bench::measureFirstPaint(state, program, environment);
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
