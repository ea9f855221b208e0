#include "store/Announcements.h"

#include <utility>

namespace korvex::store {

void Announcements::add(ChangeSet changes, Cause cause) {
    m_waiting.push_back({std::move(changes), cause});
}

void Announcements::deliver() noexcept {
    if (m_isDelivering) {
        return;
    }
    m_isDelivering = true;
    while (!m_waiting.empty() || !m_work.empty()) {
        if (m_waiting.empty()) {
            const auto work = std::move(m_work.front());
            m_work.pop_front();
            work();
            continue;
        }
        const auto next = std::move(m_waiting.front());
        m_waiting.pop_front();
        if (next.cause == Cause::save) {
            m_didSave.emit(next.changes);
        }
        m_didChange.emit(next.changes);
    }
    m_isDelivering = false;
}

} // namespace korvex::store
