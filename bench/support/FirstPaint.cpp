#include "support/FirstPaint.h"

#include "support/Stopwatch.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace korvex::bench {

void measureFirstPaint(benchmark::State& state, const std::string& program,
                       const Environment& environment) {
    auto traced = environment;
    traced["KORVEX_TRACE_STARTUP"] = "1";
    std::int64_t memory = 0;
    for (auto _ : state) {
        std::unique_ptr<ChildProcess> process;
        timed(state, [&] {
            process = std::make_unique<ChildProcess>(std::vector<std::string>{program}, traced,
                                                     ChildProcess::Output::watched);
            process->waitForLine("first paint");
        });
        memory = std::max(memory, process->proportionalMemory());
    }
    state.counters["memory"] = static_cast<double>(memory);
}

} // namespace korvex::bench
