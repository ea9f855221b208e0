#include "storage/BackgroundTask.h"

#include "support/FakeRunLoop.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <future>
#include <memory>
#include <new>
#include <semaphore>
#include <stdexcept>
#include <thread>
#include <vector>

namespace korvex::storage {
namespace {

TEST(BackgroundTask, BringsItsResultAndItsErrorToTheMainThread) {
    tests::FakeRunLoop loop;
    BackgroundThreads threads;
    const auto mainThread = std::this_thread::get_id();
    for (const bool fails : {false, true}) {
        std::vector<Progress> progress;
        std::string end;
        std::unique_ptr<BackgroundTask> task;
        task = std::make_unique<BackgroundTask>(
            threads, loop,
            [&](Work& work) {
                EXPECT_NE(std::this_thread::get_id(), mainThread);
                work.begin(Stage::writing, 100'000);
                for (int i = 0; i < 100'000; ++i) {
                    work.advance(1);
                }
                if (fails) {
                    throw Cancelled();
                }
                return std::string("done");
            },
            [&](std::future<std::string> result) {
                EXPECT_EQ(std::this_thread::get_id(), mainThread);
                try {
                    end = result.get();
                } catch (const base::Error& error) {
                    end = error.domain();
                }
                task.reset();
            },
            [&](const Progress& each) {
                EXPECT_EQ(std::this_thread::get_id(), mainThread);
                EXPECT_TRUE(end.empty());
                progress.push_back(each);
            });
        while (task) {
            loop.waitForPosted();
            loop.runPosted();
        }
        EXPECT_EQ(end, fails ? "Korvex.Storage" : "done");
        ASSERT_FALSE(progress.empty());
        EXPECT_LE(progress.size(), 102U); // not for each of the parts
        EXPECT_EQ(progress.back(), (Progress{.stage = Stage::writing, .fraction = 1}));
    }
}

TEST(BackgroundTask, WhatOnlyProgrammersUnderstandIsToldInWordsOfTheSystem) {
    const auto full = std::make_error_code(std::errc::no_space_on_device);
    for (const auto& [thrown, told] :
         std::initializer_list<std::pair<std::exception_ptr, const char*>>{
             {std::make_exception_ptr(std::bad_alloc()), "There is not enough memory."},
             {std::make_exception_ptr(std::filesystem::filesystem_error("rename", full)),
              "The system refused it: No space left on device."},
             {std::make_exception_ptr(std::out_of_range("vector::_M_range_check")),
              "It failed for a reason that is not known. Try again."},
             {std::make_exception_ptr(Cancelled()), "Cancelled. Nothing was changed."},
         }) {
        tests::FakeRunLoop loop;
        BackgroundThreads threads;
        std::string said;
        const BackgroundTask task(
            threads, loop, [&](Work&) { std::rethrow_exception(thrown); },
            [&](std::future<void> result) {
                try {
                    result.get();
                } catch (const base::Error& error) {
                    said = error.errorDescription();
                }
            });
        loop.waitForPosted();
        loop.runPosted();
        EXPECT_EQ(said, told);
    }
}

/// What a function holds may take long to end, as a file that is yet to be written.
TEST(BackgroundTask, WhatTheFunctionHoldsEndsOnItsThreadBeforeAnybodyIsTold) {
    for (const bool fails : {false, true}) {
        tests::FakeRunLoop loop;
        BackgroundThreads threads;
        std::atomic<std::thread::id> endedOn{};
        const auto ending = [&](int* value) {
            endedOn = std::this_thread::get_id();
            delete value;
        };
        auto isTold = false;
        const BackgroundTask task(
            threads, loop,
            [held = std::unique_ptr<int, std::function<void(int*)>>(new int(7), ending),
             fails](Work&) {
                if (fails) {
                    throw Cancelled();
                }
                return *held;
            },
            [&](const std::future<int>&) {
                EXPECT_NE(endedOn.load(), std::thread::id());
                EXPECT_NE(endedOn.load(), std::this_thread::get_id());
                isTold = true;
            });
        loop.waitForPosted();
        loop.runPosted();
        EXPECT_TRUE(isTold);
    }
}

TEST(BackgroundTask, StopsWhenItIsCancelledOrDestroyedAndThenTellsNobody) {
    for (const bool isDestroyed : {false, true}) {
        tests::FakeRunLoop loop;
        BackgroundThreads threads;
        std::binary_semaphore started(0);
        std::atomic<bool> wasStopped = false;
        int told = 0;
        auto task = std::make_unique<BackgroundTask>(
            threads, loop,
            [&](Work& work) {
                started.release();
                work.begin(Stage::reading);
                try {
                    while (true) {
                        work.advance(1);
                    }
                } catch (const Cancelled&) {
                    wasStopped = true;
                    throw;
                }
                return 1;
            },
            [&](std::future<int> result) {
                ++told;
                EXPECT_THROW(result.get(), Cancelled);
            });
        started.acquire();
        if (isDestroyed) {
            task.reset();
            EXPECT_TRUE(threads.waitUntilEnded(std::chrono::hours(1)));
            EXPECT_TRUE(wasStopped);
        } else {
            task->cancel();
            loop.waitForPosted();
        }
        loop.runPosted();
        EXPECT_EQ(told, isDestroyed ? 0 : 1);
    }
}

/// As in a folder that does not answer: nobody waits for it, and what it would tell has nobody to
/// be told any more.
TEST(BackgroundTask, OneThatHangsHoldsNobodyUp) {
    BackgroundThreads threads;
    std::binary_semaphore started(0);
    std::binary_semaphore answer(0);
    {
        tests::FakeRunLoop loop;
        const BackgroundTask task(
            threads, loop,
            [&](Work& work) {
                started.release();
                answer.acquire();
                work.begin(Stage::reading);
            },
            [](const std::future<void>&) { FAIL(); }, [](const Progress&) { FAIL(); });
        started.acquire();
    }
    EXPECT_FALSE(threads.waitUntilEnded(std::chrono::milliseconds(0)));
    answer.release();
    EXPECT_TRUE(threads.waitUntilEnded(std::chrono::hours(1)));
}

} // namespace
} // namespace korvex::storage
