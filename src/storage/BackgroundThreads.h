#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>

namespace korvex::storage {

/// The threads on which a program's long work runs. One a program, made before all that has long
/// work done and destroyed after it: who gives work up need not wait for it.
class BackgroundThreads {
public:
    BackgroundThreads() = default;
    /// Waits until the last one has ended.
    ~BackgroundThreads();
    BackgroundThreads(const BackgroundThreads&) = delete;
    BackgroundThreads& operator=(const BackgroundThreads&) = delete;

    /// Runs `work`, which throws nothing, on a thread of its own. Throws std::system_error where
    /// the system has none. Main thread.
    void start(std::function<void()> work);

    /// Waits for so long at most; whether all have ended. One that reads or writes in a folder
    /// which does not answer may never end: the program can then only be ended with it, and without
    /// destroying what it uses.
    [[nodiscard]] bool waitUntilEnded(std::chrono::milliseconds patience);

private:
    std::mutex m_mutex;
    std::condition_variable m_change;
    int m_running = 0;
};

} // namespace korvex::storage
