#include "ui/entries/TypingTimer.h"

namespace korvex::ui {

void TypingTimer::typed() {
    m_pause = m_runLoop.callAfter(kPause, [this] { fire(); });
    if (!m_longest) {
        m_longest = m_runLoop.callAfter(kLongest, [this] { fire(); });
    }
}

void TypingTimer::refused() {
    m_again = m_runLoop.callAfter(kAgain, [this] { fire(); });
}

void TypingTimer::tryAgain() {
    m_again = m_runLoop.callAfter({}, [this] { fire(); });
}

void TypingTimer::stop() {
    m_pause.reset();
    m_longest.reset();
    m_again.reset();
}

void TypingTimer::fire() {
    stop();
    m_store();
}

} // namespace korvex::ui
