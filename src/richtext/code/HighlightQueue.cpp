#include "richtext/code/HighlightQueue.h"

#include <algorithm>
#include <utility>

namespace korvex::richtext {

void HighlightQueue::ask(CodeKey key, std::u16string_view code) {
    const auto known = std::find_if(m_waiting.begin(), m_waiting.end(),
                                    [&](const Request& each) { return each.key == key; });
    if (known != m_waiting.end()) {
        known->round = m_round;
        std::rotate(known, known + 1, m_waiting.end());
        return;
    }
    if (m_waiting.size() == kMaximumWaiting) {
        m_waiting.erase(m_waiting.begin());
    }
    m_waiting.push_back({std::move(key), std::u16string(code), m_round});
}

HighlightQueue::Request HighlightQueue::takeNewest() {
    auto request = std::move(m_waiting.back());
    m_waiting.pop_back();
    return request;
}

void HighlightQueue::forgetUnwanted() {
    std::erase_if(m_waiting, [&](const Request& each) { return each.round < m_round; });
    ++m_round;
}

} // namespace korvex::richtext
