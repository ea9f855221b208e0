#include "storage/BackgroundTask.h"

#include <mutex>
#include <optional>
#include <system_error>

namespace korvex::storage {

namespace {

std::exception_ptr noThread() {
    return std::make_exception_ptr(
        base::Error("Korvex.Storage", 2,
                    "The system has no room for more work just now. Close other programs, or try "
                    "again later."));
}

} // namespace

struct BackgroundTask::Shared {
    Shared(base::RunLoop& itsRunLoop, Work::Sink itsProgress)
        : progress(std::move(itsProgress)), runLoop(&itsRunLoop) {}

    // Of the main thread.
    const Work::Sink progress;
    // Of both.
    std::stop_source stop;
    std::mutex mutex;
    /// Null once nobody wants to be told: it may be gone then.
    base::RunLoop* runLoop;
    /// Not told yet; a post that tells it is on its way.
    std::optional<Progress> latest;

    /// Of the main thread, which is the one that ends it.
    bool isWanted() {
        const std::lock_guard lock(mutex);
        return runLoop != nullptr;
    }
    void post(std::function<void()> work) {
        const std::lock_guard lock(mutex);
        if (runLoop) {
            runLoop->post(std::move(work));
        }
    }
};

BackgroundTask::BackgroundTask(base::RunLoop& runLoop, Work::Sink progress)
    : m_shared(std::make_shared<Shared>(runLoop, std::move(progress))) {}

BackgroundTask::~BackgroundTask() {
    m_shared->stop.request_stop();
    const std::lock_guard lock(m_shared->mutex);
    m_shared->runLoop = nullptr;
}

void BackgroundTask::cancel() {
    m_shared->stop.request_stop();
}

void BackgroundTask::start(BackgroundThreads& threads, Start work, std::function<void()> finished) {
    const auto shared = m_shared;
    const auto tell = [shared] {
        std::optional<Progress> latest;
        {
            const std::lock_guard lock(shared->mutex);
            latest.swap(shared->latest);
        }
        if (shared->isWanted() && latest) {
            shared->progress(*latest);
        }
    };
    const auto note = [shared, tell](const Progress& progress) {
        const std::lock_guard lock(shared->mutex);
        const auto isOnItsWay = shared->latest.has_value();
        shared->latest = progress;
        if (!isOnItsWay && shared->runLoop) {
            shared->runLoop->post(tell);
        }
    };
    const auto end = [shared, finished = std::move(finished)] {
        if (shared->isWanted()) {
            finished();
        }
    };
    const auto run = [work = std::move(work), sink = shared->progress ? Work::Sink(note) : nullptr,
                      stop = shared->stop.get_token()](const std::exception_ptr& obstacle) {
        Work mine(sink, stop);
        work(mine, obstacle);
    };
    try {
        threads.start([shared, run, end] {
            run(nullptr);
            shared->post(end);
        });
    } catch (const std::system_error&) {
        run(noThread());
        shared->post(end);
    }
}

} // namespace korvex::storage
