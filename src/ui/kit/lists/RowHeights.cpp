#include "ui/kit/lists/RowHeights.h"

#include <algorithm>
#include <bit>

namespace korvex::ui {

namespace {

std::size_t lowestBit(std::size_t index) {
    return index & (~index + 1);
}

} // namespace

void RowHeights::remove(int first, int count) {
    m_rows.erase(m_rows.begin() + first, m_rows.begin() + first + count);
    m_treeIsValid = false;
}

void RowHeights::move(int first, int count, int destination) {
    const auto begin = m_rows.begin();
    if (destination < first) {
        std::rotate(begin + destination, begin + first, begin + first + count);
    } else {
        std::rotate(begin + first, begin + first + count, begin + destination);
    }
    m_treeIsValid = false;
}

void RowHeights::setMeasured(int row, int height) {
    auto& changed = m_rows[static_cast<std::size_t>(row)];
    const auto difference = height - changed.height;
    changed = {.height = height, .isMeasured = true};
    if (!m_treeIsValid || difference == 0) {
        return;
    }
    for (auto i = static_cast<std::size_t>(row) + 1; i < m_tree.size(); i += lowestBit(i)) {
        m_tree[i] += difference;
    }
}

std::int64_t RowHeights::top(int row) const {
    buildTree();
    std::int64_t sum = 0;
    for (auto i = static_cast<std::size_t>(row); i > 0; i -= lowestBit(i)) {
        sum += m_tree[i];
    }
    return sum;
}

int RowHeights::rowAt(std::int64_t y) const {
    if (m_rows.empty()) {
        return -1;
    }
    buildTree();
    // Descends to the last position whose sum is at most y.
    std::size_t position = 0;
    auto rest = std::max<std::int64_t>(y, 0);
    for (auto step = std::bit_floor(m_rows.size()); step > 0; step /= 2) {
        const auto next = position + step;
        if (next < m_tree.size() && m_tree[next] <= rest) {
            position = next;
            rest -= m_tree[next];
        }
    }
    return static_cast<int>(std::min(position, m_rows.size() - 1));
}

void RowHeights::buildTree() const {
    if (m_treeIsValid) {
        return;
    }
    m_tree.assign(m_rows.size() + 1, 0);
    for (std::size_t i = 1; i < m_tree.size(); ++i) {
        m_tree[i] += m_rows[i - 1].height;
        if (const auto parent = i + lowestBit(i); parent < m_tree.size()) {
            m_tree[parent] += m_tree[i];
        }
    }
    m_treeIsValid = true;
}

} // namespace korvex::ui
