#pragma once

#include "base/Error.h"
#include "ui/kit/words/Text.h"

#include <QString>

#include <optional>

namespace korvex::ui {

/// Runs an operation and returns what the user is to be told when it was refused, in the error's
/// own words, translated; absent when it was done. The one place of the windows that catches.
template <typename Operation>
[[nodiscard]] std::optional<QString> refusal(Operation&& operation) {
    try {
        operation();
        return std::nullopt;
    } catch (const base::Error& error) {
        return translated(error.errorDescription());
    }
}

} // namespace korvex::ui
