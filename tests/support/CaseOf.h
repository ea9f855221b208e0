#pragma once

#include <optional>
#include <utility>

namespace korvex::tests {

/// As which case of an error some work is refused: `caseOf<StoreError>([&] { open(); })`.
template <typename Error, typename Work>
auto caseOf(Work&& work) -> std::optional<decltype(std::declval<const Error&>().which())> {
    try {
        static_cast<void>(work());
        return std::nullopt;
    } catch (const Error& error) {
        return error.which();
    }
}

} // namespace korvex::tests
