#include "storage/BackgroundTask.h"

#include <mutex>
#include <optional>

namespace korvex::storage {

struct BackgroundTask::Shared {
    Shared(base::RunLoop& itsRunLoop, Work::Sink itsProgress)
        : runLoop(itsRunLoop), progress(std::move(itsProgress)) {}

    base::RunLoop& runLoop;
    // Of the main thread.
    const Work::Sink progress;
    bool isWanted = true;
    // Of both.
    std::mutex mutex;
    /// Not told yet; a post that tells it is on its way.
    std::optional<Progress> latest;
};

BackgroundTask::BackgroundTask(base::RunLoop& runLoop, Work::Sink progress)
    : m_shared(std::make_shared<Shared>(runLoop, std::move(progress))) {}

BackgroundTask::~BackgroundTask() {
    m_shared->isWanted = false;
}

void BackgroundTask::start(std::function<void(Work&)> work, std::function<void()> finished) {
    const auto shared = m_shared;
    const auto tell = [shared] {
        std::optional<Progress> latest;
        {
            const std::lock_guard lock(shared->mutex);
            latest.swap(shared->latest);
        }
        if (shared->isWanted && latest) {
            shared->progress(*latest);
        }
    };
    const auto note = [shared, tell](const Progress& progress) {
        const std::lock_guard lock(shared->mutex);
        const auto isOnItsWay = shared->latest.has_value();
        shared->latest = progress;
        if (!isOnItsWay) {
            shared->runLoop.post(tell);
        }
    };
    auto sink = shared->progress ? Work::Sink(note) : Work::Sink();
    auto end = [shared, finished = std::move(finished)] {
        if (shared->isWanted) {
            finished();
        }
    };
    m_thread = std::jthread([shared, work = std::move(work), sink = std::move(sink),
                             end = std::move(end)](const std::stop_token& stop) {
        Work mine(sink, stop);
        work(mine);
        shared->runLoop.post(end);
    });
}

} // namespace korvex::storage
