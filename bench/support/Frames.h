#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

namespace korvex::bench {

/// Seconds for a picture of a screen at 60 Hz.
inline constexpr double kFrame = 0.016;

/// The longest is the result.
inline void report(benchmark::State& state, std::vector<double> frames) {
    std::sort(frames.begin(), frames.end());
    state.SetIterationTime(frames.back());
    state.counters["frames"] = static_cast<double>(frames.size());
    state.counters["p99"] = frames[frames.size() * 99 / 100];
    state.counters["median"] = frames[frames.size() / 2];
}

/// One run of `function`, which says itself how long it took, under this name.
template <typename Function>
void add(const char* name, Function function) {
    benchmark::RegisterBenchmark(name, function)
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

/// The limit of what must not take longer than a frame.
inline void addFrame() {
    add("frame", [](benchmark::State& state) {
        for (auto _ : state) {
            state.SetIterationTime(kFrame);
        }
    });
}

} // namespace korvex::bench
