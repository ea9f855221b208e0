// `korvex add "x" --remind …` with 10,000 open todos and the agent running, from the start of the
// process to its end; against the same without a reminder, which asks the agent for the same.

#include "support/BenchSession.h"
#include "support/Stopwatch.h"

namespace {

using namespace korvex;

constexpr std::size_t kTodos = 10'000;
constexpr int kIterations = 20;

void add(benchmark::State& state, std::vector<std::string> more) {
    const bench::BenchSession session(kTodos);
    const bench::ChildProcess agent({KORVEX_AGENT_PROGRAM}, session.environment(),
                                    bench::ChildProcess::Output::dropped);
    session.waitForOwner("dev.korvex.Agent");
    std::vector<std::string> command{KORVEX_PROGRAM, "add", "x"};
    command.insert(command.end(), more.begin(), more.end());
    for (auto _ : state) {
        bench::timed(state, [&] { bench::runToEnd(command, session.environment()); });
    }
}

BENCHMARK_CAPTURE(add, remind, {"--remind", "2099-03-10T09:00"})
    ->Name("korvex")
    ->UseManualTime()
    ->Iterations(kIterations)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(add, plain, {})
    ->Name("limit")
    ->UseManualTime()
    ->Iterations(kIterations)
    ->Unit(benchmark::kMillisecond);

} // namespace
