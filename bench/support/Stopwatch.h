#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <utility>

namespace korvex::bench {

/// One iteration's time: that of `work` alone, whatever is made ready before and cleared after it.
template <typename Work>
void timed(benchmark::State& state, Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    std::forward<Work>(work)();
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    state.SetIterationTime(taken.count());
}

} // namespace korvex::bench
