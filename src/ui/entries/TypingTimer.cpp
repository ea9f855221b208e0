#include "ui/entries/TypingTimer.h"

namespace korvex::ui {

void TypingTimer::typed() {
    m_pause = m_runLoop.callAfter(kPause, [this] { fire(); });
    if (!m_longest && !m_isSlow) {
        m_longest = m_runLoop.callAfter(kLongest, [this] { fire(); });
    }
}

void TypingTimer::stop() {
    m_pause.reset();
    m_longest.reset();
}

void TypingTimer::fire() {
    stop();
    const auto begin = m_clock.now();
    m_store();
    m_isSlow = m_clock.now() - begin > kFrameSeconds;
}

} // namespace korvex::ui
