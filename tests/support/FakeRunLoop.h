#pragma once

#include "base/RunLoop.h"

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace korvex::tests {

/// A run loop whose time passes only when the test says so. It must outlive its timers.
class FakeRunLoop final : public base::RunLoop {
public:
    void post(std::function<void()> work) override {
        const std::lock_guard lock(m_mutex);
        m_posted.push_back(std::move(work));
        m_change.notify_all();
    }

    [[nodiscard]] std::unique_ptr<Timer> callAfter(std::chrono::duration<double> delay,
                                                   std::function<void()> work) override {
        auto timer = std::make_unique<FakeTimer>(*this, m_time + delay.count(), std::move(work));
        m_timers.push_back(timer.get());
        return timer;
    }

    std::chrono::duration<double> elapsed() const override {
        return std::chrono::duration<double>(m_time);
    }

    std::size_t postedCount() const {
        const std::lock_guard lock(m_mutex);
        return m_posted.size();
    }
    /// Seconds until each timer fires, soonest first.
    std::vector<double> delays() const {
        std::vector<double> result;
        for (const auto* timer : m_timers) {
            result.push_back(timer->due - m_time);
        }
        std::sort(result.begin(), result.end());
        return result;
    }

    /// From then on, until it is released, what is posted waits, as if other threads were stuck.
    void holdPosted() { m_isHeld = true; }
    void releasePosted() { m_isHeld = false; }
    /// Waits until another thread has posted something; CTest's time limit ends a wait for ever.
    void waitForPosted() {
        std::unique_lock lock(m_mutex);
        m_change.wait(lock, [this] { return !m_posted.empty(); });
    }
    /// Runs what is posted, and what that posts in turn.
    void runPosted() {
        while (!m_isHeld) {
            std::vector<std::function<void()>> posted;
            {
                const std::lock_guard lock(m_mutex);
                posted.swap(m_posted);
            }
            if (posted.empty()) {
                return;
            }
            for (const auto& work : posted) {
                work();
            }
        }
    }

    /// Lets time pass: fires what falls due within it, in order, each with what it posts.
    void advance(double seconds) {
        const auto end = m_time + seconds;
        runPosted();
        for (auto* next = soonest(); next && next->due <= end; next = soonest()) {
            fire(*next);
        }
        m_time = end;
    }
    /// Lets just as much time pass as the soonest timer needs.
    void advanceToNextTimer() {
        runPosted();
        if (auto* next = soonest()) {
            fire(*next);
        }
    }

    /// The soonest timer fires only after so much time, late or not.
    void advanceToTimerLate(double seconds) {
        m_time += seconds;
        advanceToNextTimer();
    }

private:
    struct FakeTimer final : Timer {
        FakeTimer(FakeRunLoop& itsLoop, double itsDue, std::function<void()> itsWork)
            : loop(itsLoop), due(itsDue), work(std::move(itsWork)) {}
        ~FakeTimer() override { loop.forget(*this); }

        FakeRunLoop& loop;
        double due;
        std::function<void()> work;
    };

    FakeTimer* soonest() const {
        const auto found = std::min_element(
            m_timers.begin(), m_timers.end(),
            [](const auto* left, const auto* right) { return left->due < right->due; });
        return found == m_timers.end() ? nullptr : *found;
    }

    void fire(FakeTimer& timer) {
        m_time = std::max(m_time, timer.due);
        forget(timer);
        // The work may destroy the timer.
        const auto work = std::move(timer.work);
        work();
        runPosted();
    }

    void forget(const FakeTimer& timer) { std::erase(m_timers, &timer); }

    double m_time = 0;
    bool m_isHeld = false;
    mutable std::mutex m_mutex;
    std::condition_variable m_change;
    std::vector<std::function<void()>> m_posted;
    std::vector<FakeTimer*> m_timers;
};

} // namespace korvex::tests
