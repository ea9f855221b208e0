#pragma once

#include "base/RunLoop.h"
#include "storage/Work.h"

#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <type_traits>
#include <utility>

namespace korvex::storage {

/// Runs one long function on a thread of its own and brings its result to the main thread. The
/// function may use nothing that lives on the main thread: for the store it opens a container of
/// its own. Main thread; the run loop must outlive it. Destroying it asks the function to stop,
/// waits until it has, and nobody is told any more.
class BackgroundTask {
public:
    /// What `finished` gets of a function: `get` returns or throws what that did, and never waits.
    template <typename Function>
    using Outcome = std::future<std::invoke_result_t<Function&, Work&>>;

    /// `work` is given a Work and runs on the thread. `finished` is called once, on the main
    /// thread; it may destroy the task. `progress` is called on the main thread, before that; while
    /// the main thread is busy only the latest is kept.
    template <typename Function>
    BackgroundTask(base::RunLoop& runLoop, Function work,
                   std::function<void(Outcome<Function>)> finished, Work::Sink progress = {})
        : BackgroundTask(runLoop, std::move(progress)) {
        using Result = std::invoke_result_t<Function&, Work&>;
        const auto task = std::make_shared<std::packaged_task<Result(Work&)>>(std::move(work));
        start([task](Work& mine) { (*task)(mine); },
              [task, finished = std::move(finished)] { finished(task->get_future()); });
    }
    ~BackgroundTask();
    BackgroundTask(const BackgroundTask&) = delete;
    BackgroundTask& operator=(const BackgroundTask&) = delete;

    /// Asks the function to stop at the next good place. `finished` still comes, mostly with
    /// Cancelled.
    void cancel() { m_thread.request_stop(); }

private:
    /// What both threads know. Who posts holds it, so that what is posted may come late.
    struct Shared;

    BackgroundTask(base::RunLoop& runLoop, Work::Sink progress);
    void start(std::function<void(Work&)> work, std::function<void()> finished);

    std::shared_ptr<Shared> m_shared;
    std::jthread m_thread;
};

} // namespace korvex::storage
