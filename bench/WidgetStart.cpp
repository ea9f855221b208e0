// From the start of korvex-widget to its widget's first picture with a board of 1,000 todos, and
// the memory that it has then; against a bare Qt window with one label.

#include "support/BenchStore.h"
#include "support/FirstPaint.h"
#include "support/Scratch.h"
#include "support/VirtualScreen.h"

namespace {

using namespace korvex;

constexpr std::size_t kTodos = 1'000;

void startWidget(benchmark::State& state, const char* program) {
    static const bench::VirtualScreen screen;
    static const bench::Scratch scratch;
    static const bench::Environment home = [] {
        bench::Environment made{{"XDG_DATA_HOME", scratch.path()},
                                {"XDG_CONFIG_HOME", scratch.path()},
                                {"XDG_STATE_HOME", scratch.path()},
                                {"XDG_RUNTIME_DIR", scratch.path()}};
        const auto folder = scratch / "korvex";
        std::filesystem::create_directory(folder);
        bench::makeStore(folder / "Primary.store", bench::titles(kTodos));
        // A widget opens what another program has prepared.
        bench::runToEnd({KORVEX_PROGRAM, "boards"}, made);
        return made;
    }();
    auto environment = screen.environment();
    environment.insert(home.begin(), home.end());
    bench::measureFirstPaint(state, program, environment);
}

BENCHMARK_CAPTURE(startWidget, korvex, KORVEX_WIDGET_PROGRAM)
    ->Name("korvex")
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(startWidget, bare, KORVEX_BARE_WINDOW_PROGRAM)
    ->Name("limit")
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);

} // namespace
