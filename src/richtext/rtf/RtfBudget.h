#pragma once

#include <cstddef>

namespace korvex::richtext::rtf {

/// What a document may take up in tables and distinct styles: in proportion to its size, so that a
/// few bytes cannot ask for much. When it is used up, the text goes on, without what would cost
/// more.
class Budget {
public:
    explicit Budget(std::size_t documentSize) : m_left(kBase + kPerByte * documentSize) {}

    bool isExhausted() const { return m_left == 0; }
    /// `bytes` is an estimate; the last one may overdraw the budget.
    void spend(std::size_t bytes) { m_left -= bytes < m_left ? bytes : m_left; }

private:
    static constexpr std::size_t kBase = std::size_t{15} << 20U;
    static constexpr std::size_t kPerByte = 8;

    std::size_t m_left;
};

} // namespace korvex::richtext::rtf
