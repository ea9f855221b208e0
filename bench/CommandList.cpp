// `korvex list` of a board of 10,000, from the start of the process to its end, and the most memory
// that it had; against `task list` of 10,000 pending tasks.

#include "support/Stopwatch.h"
#include "support/TodoPrograms.h"

#include <algorithm>

namespace {

using namespace korvex;

constexpr std::size_t kTodos = 10'000;

template <typename Program>
void list(benchmark::State& state) {
    static const Program program(kTodos);
    std::int64_t peak = 0;
    for (auto _ : state) {
        bench::timed(state, [&] { peak = std::max(peak, program.run({"list"}).peakMemory); });
    }
    state.counters["memory"] = static_cast<double>(peak);
}

BENCHMARK(list<bench::KorvexProgram>)
    ->Name("korvex")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(list<bench::TaskProgram>)->Name("limit")->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
