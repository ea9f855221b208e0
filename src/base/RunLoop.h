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

    /// What a watched descriptor is to be ready for. With `nothing` the watch only waits to be
    /// given something else.
    enum class Interest { nothing, reading, writing, both };

    /// Destroying it ends the watch. Its own work may destroy it.
    class Watch {
    public:
        virtual ~Watch() = default;
        virtual void setInterest(Interest interest) = 0;
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

    /// Calls `work` whenever the descriptor is ready for what is of interest, or has failed, again
    /// and again until that has been dealt with. It must stay open for as long as it is watched.
    /// Main thread.
    [[nodiscard]] virtual std::unique_ptr<Watch> watch(int descriptor, Interest interest,
                                                       std::function<void()> work) = 0;
};

} // namespace korvex::base
