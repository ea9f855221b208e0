#pragma once

#include "support/BenchStore.h"

#include "base/Clock.h"
#include "base/RunLoop.h"

#include <chrono>
#include <functional>
#include <memory>

namespace korvex::bench {

class StandingClock final : public base::Clock {
public:
    base::Instant now() const override { return kNow; }
};

/// Everything happens when it is called.
class NoRunLoop final : public base::RunLoop {
public:
    void post(std::function<void()> work) override { work(); }
    std::unique_ptr<Timer> callAfter(std::chrono::duration<double>,
                                     std::function<void()>) override {
        return nullptr;
    }
    std::unique_ptr<Watch> watch(int, Interest, std::function<void()>) override { return nullptr; }
};

} // namespace korvex::bench
