#pragma once

#include "base/RunLoop.h"
#include "storage/BackgroundThreads.h"
#include "storage/ErrorsOnly.h"
#include "storage/Work.h"

#include <exception>
#include <functional>
#include <future>
#include <memory>
#include <type_traits>
#include <utility>

namespace korvex::storage {

/// Runs one long function on a thread of its own and brings its result to the main thread. The
/// function may use nothing that lives on the main thread, nor what ends before the threads do: for
/// the store it opens a container of its own. Main thread; the run loop and the threads must
/// outlive it. Destroying it asks the function to stop and waits for nothing: nobody is told any
/// more.
class BackgroundTask {
public:
    /// What `finished` gets of a function: `get` returns what that did, or throws an Error
    /// (`throwAsError`), and never waits.
    template <typename Function>
    using Outcome = std::future<std::invoke_result_t<Function&, Work&>>;

    /// `work` is given a Work and runs on the thread, where also what it holds ends, whether it
    /// fails or not: that may take long too. `finished` is called once, on the main thread, after
    /// that; it may destroy the task. `progress` is called on the main thread, before that; while
    /// the main thread is busy only the latest is kept. Where the system has no thread for it, the
    /// outcome is an Error that says so.
    template <typename Function>
    BackgroundTask(BackgroundThreads& threads, base::RunLoop& runLoop, Function work,
                   std::function<void(Outcome<Function>)> finished, Work::Sink progress = {})
        : BackgroundTask(runLoop, std::move(progress)) {
        using Result = std::invoke_result_t<Function&, Work&>;
        const auto task =
            std::make_shared<std::packaged_task<Result(Work&, const std::exception_ptr&)>>(
                [work = withErrorsOnly(std::move(work))](
                    Work& mine, const std::exception_ptr& obstacle) mutable -> Result {
                    auto once = std::move(work);
                    if (obstacle) {
                        std::rethrow_exception(obstacle);
                    }
                    return once(mine);
                });
        start(
            threads,
            [task](Work& mine, const std::exception_ptr& obstacle) { (*task)(mine, obstacle); },
            [task, finished = std::move(finished)] { finished(task->get_future()); });
    }
    ~BackgroundTask();
    BackgroundTask(const BackgroundTask&) = delete;
    BackgroundTask& operator=(const BackgroundTask&) = delete;

    /// Asks the function to stop at the next good place. `finished` still comes, mostly with
    /// Cancelled.
    void cancel();

private:
    /// What both threads know. Who posts holds it, so that what is posted may come late.
    struct Shared;
    /// The function, or what keeps it from being run.
    using Start = std::function<void(Work&, const std::exception_ptr& obstacle)>;

    BackgroundTask(base::RunLoop& runLoop, Work::Sink progress);
    void start(BackgroundThreads& threads, Start work, std::function<void()> finished);

    std::shared_ptr<Shared> m_shared;
};

} // namespace korvex::storage
