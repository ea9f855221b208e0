#pragma once

#include <cstdio>
#include <cstdlib>
#include <optional>

namespace korvex::tests {

/// What the work yields; absent when it throws the expected error.
template <typename Error, typename Work>
auto unlessRefused(Work&& work) -> std::optional<decltype(work())> {
    try {
        return work();
    } catch (const Error&) {
        return std::nullopt;
    }
}

/// Ends the program, which the fuzzer takes for a finding.
inline void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

} // namespace korvex::tests
