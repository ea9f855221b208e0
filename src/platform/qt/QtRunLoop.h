#pragma once

#include "base/RunLoop.h"

#include <QObject>

namespace korvex::platform::qt {

/// The run loop of the Qt application. Made on the main thread, after the application; work that is
/// still waiting when it is destroyed is dropped.
class QtRunLoop final : public base::RunLoop {
public:
    void post(std::function<void()> work) override;
    std::unique_ptr<Timer> callAfter(std::chrono::duration<double> delay,
                                     std::function<void()> work) override;
    std::unique_ptr<Watch> watch(int descriptor, Interest interest,
                                 std::function<void()> work) override;

private:
    QObject m_context;
};

} // namespace korvex::platform::qt
