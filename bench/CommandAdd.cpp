// `korvex add "x"` with 10,000 open todos, from the start of the process to its end; against
// `task add` with 10,000 pending tasks.

#include "support/Stopwatch.h"
#include "support/TodoPrograms.h"

namespace {

using namespace korvex;

constexpr std::size_t kTodos = 10'000;
/// Each run leaves one todo more: few enough to stay 10,000.
constexpr int kIterations = 10;

template <typename Program>
void add(benchmark::State& state) {
    static const Program program(kTodos);
    for (auto _ : state) {
        bench::timed(state, [&] { program.run({"add", "x"}); });
    }
}

BENCHMARK(add<bench::KorvexProgram>)
    ->Name("korvex")
    ->UseManualTime()
    ->Iterations(kIterations)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(add<bench::TaskProgram>)
    ->Name("limit")
    ->UseManualTime()
    ->Iterations(kIterations)
    ->Unit(benchmark::kMillisecond);

} // namespace
