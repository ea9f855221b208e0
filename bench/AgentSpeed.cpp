// The agent: from the start of its process to its name on the bus, and the memory that it has a
// little later, with a store of 10,000 todos, of which 1,000 have reminders; against a program that
// does nothing but have a name. And how late a notification is asked for that is due: that which is
// later than 95 of a hundred; against the promise itself.

#include "support/BenchSession.h"
#include "support/Stopwatch.h"

#include "base/Clock.h"
#include "model/Entry.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <thread>
#include <vector>

namespace {

using namespace korvex;
using namespace std::chrono_literals;

constexpr std::size_t kTodos = 10'000;
constexpr std::size_t kReminders = 1'000;
constexpr const char* kAgent = "dev.korvex.Agent";
constexpr const char* kBare = "dev.korvex.Bare";
constexpr const char* kDaemon = "org.freedesktop.Notifications";
constexpr double kLatest = 0.050;
constexpr int kDue = 100;
constexpr auto kIdle = 60s;
/// The clock of the one who is told may be read a little before that of the one who tells.
constexpr double kEarliest = -0.001;

/// When the first of them is due.
base::Instant addReminders(const bench::BenchSession& session, std::size_t count, double first,
                           double distance) {
    bench::OpenStore store(session.storeFile());
    const auto now = base::SystemClock().now();
    const auto due = now + first;
    for (std::size_t i = 0; i < count; ++i) {
        store.context()
            .insert(std::make_unique<model::Entry>(
                model::EntryFields{.id = base::Uuid::random(),
                                   .typeRawValue = "todo",
                                   .content = "Reminder " + std::to_string(i),
                                   .createdAt = now,
                                   .updatedAt = now,
                                   .reminderDate = due + distance * static_cast<double>(i)}))
            .setBoard(&store.inbox());
    }
    store.context().save();
    return due;
}

/// How often the process has waited for something, in all its threads; -1 where it has ended.
long wakeUps(pid_t process) {
    const auto tasks = std::filesystem::path("/proc") / std::to_string(process) / "task";
    long count = -1;
    std::error_code hasEnded;
    std::filesystem::directory_iterator task(tasks, hasEnded);
    for (; !hasEnded && task != std::filesystem::directory_iterator(); task.increment(hasEnded)) {
        std::ifstream status(task->path() / "status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("voluntary_ctxt_switches:")) {
                count = std::max(count, 0L) + std::stol(line.substr(line.find(':') + 1));
            }
        }
    }
    return hasEnded ? -1 : count;
}

void startProgram(benchmark::State& state, std::vector<std::string> command, const char* name) {
    const bench::BenchSession session(kTodos);
    addReminders(session, kReminders, 86'400, 60);
    std::int64_t memory = 0;
    for (auto _ : state) {
        std::unique_ptr<bench::ChildProcess> process;
        bench::timed(state, [&] {
            process = std::make_unique<bench::ChildProcess>(command, session.environment(),
                                                            bench::ChildProcess::Output::dropped);
            session.waitForOwner(name);
        });
        std::this_thread::sleep_for(300ms);
        memory = std::max(memory, process->proportionalMemory());
        process.reset();
        session.waitForOwner(name, false);
    }
    state.counters["memory"] = static_cast<double>(memory);
}

/// With nothing due for a day it sleeps.
void idle(benchmark::State& state) {
    const bench::BenchSession session(kTodos);
    addReminders(session, kReminders, 86'400, 60);
    const bench::ChildProcess process({KORVEX_AGENT_PROGRAM}, session.environment(),
                                      bench::ChildProcess::Output::dropped);
    session.waitForOwner(kAgent);
    std::this_thread::sleep_for(3s); // until it has let go of the store
    for (auto _ : state) {
        const auto before = wakeUps(process.id());
        std::this_thread::sleep_for(kIdle);
        const auto after = wakeUps(process.id());
        if (before < 0 || after < before) {
            state.SkipWithError("the agent has ended, or a thread of it with what it had counted");
            return;
        }
        const auto count = after - before;
        // A promise is a ratio of times: each wake-up counts as a second.
        state.SetIterationTime(count == 0 ? 0.5 : static_cast<double>(count) + 1);
    }
}

void due(benchmark::State& state) {
    bench::BenchSession session(kTodos);
    addReminders(session, kReminders, 86'400, 60);
    std::vector<double> moments;
    const auto notify = [](sd_bus_message* call, void* self, sd_bus_error*) {
        static_cast<std::vector<double>*>(self)->push_back(base::SystemClock().now().seconds);
        return sd_bus_reply_method_return(
            call, "u", static_cast<unsigned>(static_cast<std::vector<double>*>(self)->size()));
    };
    const auto capabilities = [](sd_bus_message* call, void*, sd_bus_error*) {
        return sd_bus_reply_method_return(call, "as", 1, "body");
    };
    const sd_bus_vtable methods[]{
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("Notify", "susssasa{sv}i", "u", notify, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_METHOD("GetCapabilities", "", "as", capabilities, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END};
    sd_bus_add_object_vtable(session.connection(), nullptr, "/org/freedesktop/Notifications",
                             kDaemon, methods, &moments);
    sd_bus_request_name(session.connection(), kDaemon, 0);
    const bench::ChildProcess process({KORVEX_AGENT_PROGRAM}, session.environment(),
                                      bench::ChildProcess::Output::dropped);
    session.waitForOwner(kAgent);
    for (auto _ : state) {
        moments.clear();
        const auto start = addReminders(session, kDue, 2, 0.05).seconds;
        while (moments.size() < kDue && base::SystemClock().now().seconds < start + 60) {
            while (sd_bus_process(session.connection(), nullptr) > 0) {
            }
            sd_bus_wait(session.connection(), 10'000);
        }
        if (moments.size() != kDue) {
            state.SkipWithError("not all that was due was shown");
            return;
        }
        std::vector<double> late;
        for (std::size_t i = 0; i < moments.size(); ++i) {
            late.push_back(moments[i] - (start + 0.05 * static_cast<double>(i)));
        }
        std::sort(late.begin(), late.end());
        if (late.front() < kEarliest) {
            state.SkipWithError("one was shown before it was due");
            return;
        }
        state.SetIterationTime(std::max(late[kDue * 95 / 100 - 1], 1e-6));
    }
}

void constantly(benchmark::State& state, double seconds) {
    for (auto _ : state) {
        state.SetIterationTime(seconds);
    }
}

BENCHMARK_CAPTURE(startProgram, agent, {KORVEX_AGENT_PROGRAM}, kAgent)
    ->Name("start")
    ->UseManualTime()
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(startProgram, bare, {KORVEX_BARE_BUS_PROGRAM, kBare}, kBare)
    ->Name("limit_start")
    ->UseManualTime()
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(due)->Name("due")->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(constantly, due, kLatest)
    ->Name("limit_due")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(idle)->Name("idle")->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(constantly, idle, 1.0)
    ->Name("limit_idle")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

} // namespace
