#pragma once

#include "base/RunLoop.h"

#include <poll.h>

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace korvex::tests {

/// A run loop whose time passes only when the test says so. It must outlive its timers and watches.
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

    [[nodiscard]] std::unique_ptr<Watch> watch(int descriptor, Interest interest,
                                               std::function<void()> work) override {
        auto watch = std::make_unique<FakeWatch>(*this, descriptor, interest, std::move(work));
        m_watches.push_back(watch.get());
        return watch;
    }

    std::chrono::duration<double> elapsed() const override {
        return std::chrono::duration<double>(m_time);
    }

    std::size_t postedCount() const {
        const std::lock_guard lock(m_mutex);
        return m_posted.size();
    }
    /// How often a watched descriptor was ready.
    std::size_t readyCount() const { return m_readyCount; }
    std::size_t watchCount() const { return m_watches.size(); }
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
        while (runPostedOnce()) {
        }
    }

    /// Runs what is posted and what the watched descriptors are ready for, until the condition
    /// holds. Returns whether it does before the real time is over; the loop's own stands still.
    template <typename Condition>
    bool runUntil(Condition&& condition,
                  std::chrono::milliseconds patience = std::chrono::seconds(10)) {
        const auto end = std::chrono::steady_clock::now() + patience;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
            runReady();
        }
        return true;
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

    struct FakeWatch final : Watch {
        FakeWatch(FakeRunLoop& itsLoop, int itsDescriptor, Interest itsInterest,
                  std::function<void()> itsWork)
            : loop(itsLoop),
              descriptor(itsDescriptor),
              interest(itsInterest),
              work(std::move(itsWork)) {}
        ~FakeWatch() override { std::erase(loop.m_watches, this); }
        void setInterest(Interest now) override { interest = now; }
        short events() const {
            switch (interest) {
            case Interest::nothing:
                break;
            case Interest::reading:
                return POLLIN;
            case Interest::writing:
                return POLLOUT;
            case Interest::both:
                return POLLIN | POLLOUT;
            }
            return 0;
        }

        FakeRunLoop& loop;
        int descriptor;
        Interest interest;
        std::function<void()> work;
    };

    /// Whether there was something; what it posts in turn waits.
    bool runPostedOnce() {
        std::vector<std::function<void()>> posted;
        if (!m_isHeld) {
            const std::lock_guard lock(m_mutex);
            posted.swap(m_posted);
        }
        for (const auto& work : posted) {
            work();
        }
        return !posted.empty();
    }

    void runReady() {
        runPostedOnce();
        std::vector<pollfd> watched;
        for (const auto* watch : m_watches) {
            if (watch->interest != Interest::nothing) {
                watched.push_back({watch->descriptor, watch->events(), 0});
            }
        }
        ::poll(watched.data(), watched.size(), postedCount() == 0 ? 1 : 0);
        for (const auto& each : watched) {
            // What ran before it may have ended this watch.
            const auto found =
                std::find_if(m_watches.begin(), m_watches.end(), [&](const auto* watch) {
                    return watch->descriptor == each.fd &&
                           (each.revents & (watch->events() | POLLHUP | POLLERR)) != 0;
                });
            if (found != m_watches.end()) {
                ++m_readyCount;
                const auto work = (*found)->work;
                work();
            }
        }
    }

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
    std::size_t m_readyCount = 0;
    mutable std::mutex m_mutex;
    std::condition_variable m_change;
    std::vector<std::function<void()>> m_posted;
    std::vector<FakeTimer*> m_timers;
    std::vector<FakeWatch*> m_watches;
};

} // namespace korvex::tests
