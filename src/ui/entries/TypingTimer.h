#pragma once

#include "base/RunLoop.h"

#include <functional>
#include <memory>

namespace korvex::ui {

/// Says when what is being typed is to be stored: at the first pause, and while typing goes on
/// without one every two seconds, however slow the disk is: a pause that is felt is better than
/// words that are lost. What may be taken later is tried again by itself. A save takes 5 to 12 ms,
/// fsync and all, on a text of 10,000 characters in some 500 formats. Main thread; the run loop
/// must outlive it.
class TypingTimer {
public:
    /// So long nothing was typed: the user thinks, and does not feel a save.
    static constexpr std::chrono::duration<double> kPause{1.0};
    /// No more than what was typed in so long a time is lost when the program is killed.
    static constexpr std::chrono::duration<double> kLongest{2.0};

    /// So long after a refusal it is tried again.
    static constexpr std::chrono::duration<double> kAgain{3.0};

    TypingTimer(base::RunLoop& runLoop, std::function<void()> store)
        : m_runLoop(runLoop), m_store(std::move(store)) {}

    /// The text has changed.
    void typed();
    /// It could not be stored, and perhaps can be later.
    void refused();
    /// What it was refused for may be over.
    void tryAgain();
    /// All of it is stored, or given up.
    void stop();

private:
    void fire();

    base::RunLoop& m_runLoop;
    std::function<void()> m_store;
    std::unique_ptr<base::RunLoop::Timer> m_pause;
    /// Runs from the first change that is not stored.
    std::unique_ptr<base::RunLoop::Timer> m_longest;
    /// Runs from a refusal.
    std::unique_ptr<base::RunLoop::Timer> m_again;
};

} // namespace korvex::ui
