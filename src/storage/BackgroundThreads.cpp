#include "storage/BackgroundThreads.h"

#include <thread>
#include <utility>

namespace korvex::storage {

BackgroundThreads::~BackgroundThreads() {
    std::unique_lock lock(m_mutex);
    m_change.wait(lock, [this] { return m_running == 0; });
}

void BackgroundThreads::start(std::function<void()> work) {
    // Held until the thread is there: it is counted before it can end.
    const std::lock_guard starting(m_mutex);
    std::thread([this, work = std::move(work)]() mutable {
        work();
        work = nullptr; // what it holds goes while it counts as running
        const std::lock_guard lock(m_mutex);
        --m_running;
        m_change.notify_all();
    }).detach();
    ++m_running;
}

bool BackgroundThreads::waitUntilEnded(std::chrono::milliseconds patience) {
    std::unique_lock lock(m_mutex);
    return m_change.wait_for(lock, patience, [this] { return m_running == 0; });
}

} // namespace korvex::storage
