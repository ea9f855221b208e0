#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvex::ui {

/// What a row shows, for telling old rows from new ones. No two rows of a list have the same key.
struct RowKey {
    int kind = 0;
    const void* subject = nullptr;

    bool operator==(const RowKey&) const = default;
};

/// One step from the old rows to the new ones; rows are counted as they stand before the step.
struct RowStep {
    enum class Kind { remove, insert, move };

    Kind kind;
    int first;
    int count;
    /// For a move: the rows go before what is this row before the step.
    int destination = 0;

    bool operator==(const RowStep&) const = default;
};

/// Few steps that lead from `before` to `after`: removals from the end, then moves of single rows,
/// then insertions from the start, at which the new row is what `after` has there. The longest run
/// of rows that keep their order is not touched.
std::vector<RowStep> rowSteps(const std::vector<RowKey>& before, const std::vector<RowKey>& after);

} // namespace korvex::ui
