#pragma once

#include "support/ChildProcess.h"

#include <benchmark/benchmark.h>

#include <string>

namespace korvex::bench {

/// Measures from the start of a program to its window's first picture, which it tells on standard
/// error, and the memory that it has then.
void measureFirstPaint(benchmark::State& state, const std::string& program,
                       const Environment& environment);

} // namespace korvex::bench
