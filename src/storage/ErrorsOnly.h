#pragma once

#include <utility>

namespace korvex::storage {

/// For handlers: throws what was caught if it is an Error, and otherwise an Error in words of the
/// system for it, as where there is no memory. What only programmers understand is told to nobody.
[[noreturn]] void throwAsError();

/// A function that does the same, and whose every failure can be told: see `throwAsError`.
template <typename Function>
auto withErrorsOnly(Function work) {
    return [work = std::move(work)](auto&&... arguments) mutable {
        try {
            return work(std::forward<decltype(arguments)>(arguments)...);
        } catch (...) {
            throwAsError();
        }
    };
}

} // namespace korvex::storage
