// `korvex search WORD` of 10,000 todos, from the start of the process to its end; against
// `task WORD list` of 10,000 pending tasks. One word that a hundredth of them has, and one that all
// of them have ("everything").

#include "support/Stopwatch.h"
#include "support/TodoPrograms.h"

namespace {

using namespace korvex;

constexpr std::size_t kTodos = 10'000;
constexpr const char* kSomeHaveIt = "77";
constexpr const char* kAllHaveIt = "weekend";

const bench::KorvexProgram& korvexProgram() {
    static const bench::KorvexProgram program(kTodos);
    return program;
}

const bench::TaskProgram& taskProgram() {
    static const bench::TaskProgram program(kTodos);
    return program;
}

void korvexSearch(benchmark::State& state, const char* word) {
    for (auto _ : state) {
        bench::timed(state, [&] { korvexProgram().run({"search", word}); });
    }
}

void taskSearch(benchmark::State& state, const char* word) {
    for (auto _ : state) {
        bench::timed(state, [&] { taskProgram().run({word, "list"}); });
    }
}

BENCHMARK_CAPTURE(korvexSearch, some, kSomeHaveIt)
    ->Name("korvex")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(taskSearch, some, kSomeHaveIt)
    ->Name("limit")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(korvexSearch, all, kAllHaveIt)
    ->Name("everything")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(taskSearch, all, kAllHaveIt)
    ->Name("limit_everything")
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
