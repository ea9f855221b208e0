#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace korvex::base {

/// The run loop of the main thread, as Qt, sd-event or the command line bring it.
class RunLoop {
public:
    /// A one-shot timer; destroying it before it fires cancels it. Its own work may destroy it.
    class Timer {
    public:
        virtual ~Timer() = default;
    };

    virtual ~RunLoop() = default;

    /// Calls `work` on the main thread, soon. Any thread.
    virtual void post(std::function<void()> work) = 0;

    /// How much time has passed since some moment, by a clock that is never set. Any thread.
    virtual std::chrono::duration<double> elapsed() const {
        return std::chrono::steady_clock::now().time_since_epoch();
    }

    /// Calls `work` once, not earlier than after `delay`. Main thread.
    [[nodiscard]] virtual std::unique_ptr<Timer> callAfter(std::chrono::duration<double> delay,
                                                           std::function<void()> work) = 0;
};

} // namespace korvex::base
