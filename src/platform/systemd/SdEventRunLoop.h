#pragma once

#include "base/FileDescriptor.h"
#include "base/RunLoop.h"

#include <exception>
#include <memory>
#include <mutex>
#include <vector>

struct sd_event;

namespace korvex::platform::systemd {

/// The run loop of a program without Qt. It must outlive its timers and watches. Work that throws
/// ends the run, which throws that on. Main thread, but for `post`.
class SdEventRunLoop final : public base::RunLoop {
public:
    /// Throws std::system_error where the system has no more descriptors.
    SdEventRunLoop();
    ~SdEventRunLoop() override;

    void post(std::function<void()> work) override;
    std::unique_ptr<Timer> callAfter(std::chrono::duration<double> delay,
                                     std::function<void()> work) override;
    std::unique_ptr<Watch> watch(int descriptor, Interest interest,
                                 std::function<void()> work) override;

    /// Until `quit` is called.
    void run();
    void quit() { m_isEnding = true; }
    /// Until the condition holds, and no longer than the limit; whether it holds then. It is looked
    /// at after each piece of work.
    bool runUntil(const std::function<bool()>& condition, std::chrono::duration<double> limit);

private:
    class EventTimer;
    class EventWatch;
    struct Unreference {
        void operator()(sd_event* event) const;
    };

    /// Waits for one event, and carries out what it asks for.
    void runOnce(std::chrono::duration<double> limit);
    void carryOut(const std::function<void()>& work) noexcept;
    void carryOutPosted();

    std::unique_ptr<sd_event, Unreference> m_event;
    base::FileDescriptor m_wakeUp;
    std::unique_ptr<Watch> m_posts;
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_posted;
    std::exception_ptr m_thrown;
    bool m_isEnding = false;
};

} // namespace korvex::platform::systemd
