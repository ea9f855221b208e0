#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
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
    /// Moved rows go before what is this row before the step.
    int destination = 0;

    bool operator==(const RowStep&) const = default;
};

/// Few steps that lead from `before` to `after`: removals from the end, then moves of single rows,
/// then insertions from the start, at which the new row is what `after` has there. The longest run
/// of rows that keep their order is not touched.
std::vector<RowStep> rowSteps(const std::vector<RowKey>& before, const std::vector<RowKey>& after);
/// The same, or nothing when it takes more than `maximum` steps: found out at the cost of one look
/// at every row.
std::optional<std::vector<RowStep>> fewRowSteps(const std::vector<RowKey>& before,
                                                const std::vector<RowKey>& after,
                                                std::size_t maximum);

/// Carries out a step on the rows; `after` are those that all steps lead to.
template <typename Row>
void applyStep(const RowStep& step, std::vector<Row>& rows, const std::vector<Row>& after) {
    const auto first = rows.begin() + step.first;
    const auto end = step.kind == RowStep::Kind::insert ? first : first + step.count;
    switch (step.kind) {
    case RowStep::Kind::remove:
        rows.erase(first, end);
        break;
    case RowStep::Kind::insert: {
        const auto source = after.begin() + step.first;
        rows.insert(first, source, source + step.count);
        break;
    }
    case RowStep::Kind::move: {
        const auto destination = rows.begin() + step.destination;
        if (destination < first) {
            std::rotate(destination, first, end);
        } else {
            std::rotate(first, end, destination);
        }
        break;
    }
    }
}

} // namespace korvex::ui
