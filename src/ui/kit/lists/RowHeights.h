#pragma once

#include <cstdint>
#include <vector>

namespace korvex::ui {

/// The heights of a list's rows, measured or estimated, and where each row starts: setting a height
/// and finding a row cost O(log n), a change of the rows O(n) once. Heights are 0 or more; row
/// numbers must be in range.
class RowHeights {
public:
    int count() const { return static_cast<int>(m_rows.size()); }
    /// Begins anew with so many rows, none of them measured.
    template <typename Estimate>
    void reset(int count, Estimate&& estimate) {
        m_rows.clear();
        insert(0, count, estimate);
    }
    template <typename Estimate>
    void insert(int first, int count, Estimate&& estimate) {
        m_rows.insert(m_rows.begin() + first, static_cast<std::size_t>(count), Row{});
        for (int row = first; row < first + count; ++row) {
            m_rows[static_cast<std::size_t>(row)].height = estimate(row);
        }
        m_treeIsValid = false;
    }
    void remove(int first, int count);
    /// Moves rows so that they stand before what is row `destination` now, which is none of them.
    void move(int first, int count, int destination);

    int height(int row) const { return m_rows[static_cast<std::size_t>(row)].height; }
    bool isMeasured(int row) const { return m_rows[static_cast<std::size_t>(row)].isMeasured; }
    void setMeasured(int row, int height);
    /// The height stays as an estimate until the row is measured again.
    void forget(int row) { m_rows[static_cast<std::size_t>(row)].isMeasured = false; }

    /// Where a row starts; for `count()`, where the last one ends.
    std::int64_t top(int row) const;
    std::int64_t total() const { return top(count()); }
    /// The row that covers `y`; the first for a negative one, the last beyond the end, -1 when
    /// there are no rows. Rows of height 0 cover nothing.
    int rowAt(std::int64_t y) const;

private:
    struct Row {
        int height = 0;
        bool isMeasured = false;
    };

    void buildTree() const;

    std::vector<Row> m_rows;
    /// A Fenwick tree of the heights, 1-based; built again when it is asked for after a change of
    /// the rows.
    mutable std::vector<std::int64_t> m_tree;
    mutable bool m_treeIsValid = false;
};

} // namespace korvex::ui
