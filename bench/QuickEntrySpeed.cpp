// Quick Entry under a window manager. From `korvex quick-entry`, where no app runs, until its panel
// has the keyboard ("start"), over a store of 10,000 entries, against a bare Qt window with one
// label until it is painted ("limit_start"). From the first key of the shortcut, which the X server
// is given as a keyboard's (XTEST), while another program's window has the keyboard and the app
// runs in the background, until the panel is painted, has it and takes a key ("press"), against the
// same of a bare Qt program that has grabbed the same keys ("limit_press"): of a hundred times the
// 95th.

#include "support/BenchSession.h"
#include "support/FakeKeyboard.h"
#include "support/Stopwatch.h"
#include "support/VirtualScreen.h"

#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <optional>
#include <thread>

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 10'000;
constexpr int kPresses = 100;
constexpr std::chrono::seconds kUntilManaged{1};
/// An app that has its name has yet to grab the shortcut, and to do what it puts off.
constexpr std::chrono::seconds kSettling{3};
/// Nobody presses sooner again; and Qt takes a window that comes back within some 50 ms for one
/// that has never lost the keyboard, and tells it nothing.
constexpr std::chrono::milliseconds kBetweenPresses{150};
/// So soon a window goes that has taken Escape. While the window manager is still about the
/// keyboard, a key may reach nobody: then it counts as not ready, and is tried again.
constexpr std::chrono::milliseconds kTaken{50};
constexpr int kMostTries = 20;
constexpr const char* kApp = "dev.korvex.Korvex";
/// The number of the key of "n".
constexpr std::uint32_t kLetterCode = 45;

/// A screen with a window manager, which gives the keyboard to windows.
struct ManagedScreen {
    ManagedScreen() { std::this_thread::sleep_for(kUntilManaged); }

    bench::VirtualScreen screen;
    bench::ChildProcess manager{
        {"openbox"}, screen.environment(), bench::ChildProcess::Output::dropped};
};

void start(benchmark::State& state, const std::vector<std::string>& command, const char* line) {
    static const ManagedScreen managed;
    static const bench::Scratch scratch;
    static const bench::Environment home = [] {
        const auto folder = scratch / "korvex";
        std::filesystem::create_directory(folder);
        bench::makeStore(folder / "Primary.store", bench::titles(kEntries));
        return bench::Environment{{"XDG_DATA_HOME", scratch.path()},
                                  {"XDG_CONFIG_HOME", scratch.path()},
                                  {"XDG_STATE_HOME", scratch.path()},
                                  {"XDG_RUNTIME_DIR", scratch.path()}};
    }();
    auto environment = managed.screen.environment();
    environment.insert(home.begin(), home.end());
    environment["KORVEX_TRACE_STARTUP"] = "1";
    for (auto _ : state) {
        std::optional<bench::ChildProcess> process; // its end is not timed
        bench::timed(state, [&] {
            process.emplace(command, environment, bench::ChildProcess::Output::watched);
            process->waitForLine(line);
        });
    }
}

/// The session that the shortcut is pressed in, with a window that has the keyboard.
class Desktop {
public:
    Desktop() {
        app::FileUserDefaults defaults(m_session.folder() / "config/korvex/settings.json");
        base::StandardErrorLog log(base::LogLevel::warning);
        app::AppPreferences(defaults, log)
            .setQuickEntryShortcut({.keyCode = kLetterCode,
                                    .modifiers = app::QuickEntryShortcut::kCommand +
                                                 app::QuickEntryShortcut::kOption});
        m_bystander.waitForLine("first paint");
    }

    bench::Environment environment() const {
        auto environment = m_session.environment();
        environment.merge(m_managed.screen.environment()); // the session's own bus
        environment["KORVEX_TRACE_STARTUP"] = "1";
        environment["XDG_SESSION_TYPE"] = "x11";
        return environment;
    }
    const bench::BenchSession& session() const { return m_session; }
    bench::FakeKeyboard& keyboard() { return m_keyboard; }

private:
    bench::BenchSession m_session{kEntries};
    ManagedScreen m_managed;
    bench::FakeKeyboard m_keyboard{m_managed.screen.environment().at("DISPLAY")};
    bench::ChildProcess m_bystander{{KORVEX_BARE_WINDOW_PROGRAM},
                                    m_managed.screen.environment(),
                                    bench::ChildProcess::Output::watched};
};

/// How long each press took until the window took a key, the shortest first. `line`: what the
/// program says when its window is painted and has the keyboard.
std::vector<double> timesOfPresses(bench::FakeKeyboard& keyboard, bench::ChildProcess& program,
                                   const char* line) {
    std::vector<double> times;
    for (int i = 0; i < kPresses; ++i) {
        program.forgetOutput();
        keyboard.forgetWhatHappened();
        const auto begin = std::chrono::steady_clock::now();
        keyboard.press({bench::kControlKey, bench::kAltKey, bench::kLetterKey});
        program.waitForLine(line);
        auto end = begin;
        for (int tries = 0; end == begin || !keyboard.windowLeaves(kTaken); ++tries) {
            if (tries == kMostTries) {
                throw std::runtime_error("Escape does not reach the window that was shown");
            }
            end = std::chrono::steady_clock::now();
            keyboard.press({bench::kEscapeKey});
        }
        times.push_back(std::chrono::duration<double>(end - begin).count());
        std::this_thread::sleep_for(kBetweenPresses);
    }
    std::sort(times.begin(), times.end());
    return times;
}

void press(benchmark::State& state, bench::FakeKeyboard& keyboard, bench::ChildProcess& program,
           const char* line) {
    for (auto _ : state) {
        const auto times = timesOfPresses(keyboard, program, line);
        state.SetIterationTime(times[times.size() * 95 / 100 - 1]);
        state.counters["median_ms"] = times[times.size() / 2] * 1e3;
        state.counters["longest_ms"] = times.back() * 1e3;
    }
}

Desktop& desktop() {
    static Desktop instance;
    return instance;
}

void pressForPanel(benchmark::State& state) try {
    bench::ChildProcess app({KORVEX_DESKTOP_PROGRAM, "--background"}, desktop().environment(),
                            bench::ChildProcess::Output::watched);
    desktop().session().waitForOwner(kApp);
    std::this_thread::sleep_for(kSettling);
    press(state, desktop().keyboard(), app, "quick entry");
} catch (const std::exception& error) {
    // Who ends by an exception leaves its screen and the programs on it behind.
    state.SkipWithError(error.what());
}

void pressForBareWindow(benchmark::State& state) try {
    bench::ChildProcess bare({KORVEX_BARE_HOTKEY_PROGRAM}, desktop().environment(),
                             bench::ChildProcess::Output::watched);
    bare.waitForLine("listening");
    press(state, desktop().keyboard(), bare, "shown");
} catch (const std::exception& error) {
    state.SkipWithError(error.what());
}

BENCHMARK_CAPTURE(start, korvex, {KORVEX_PROGRAM, "quick-entry"}, "quick entry")
    ->Name("start")
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(start, bare, {KORVEX_BARE_WINDOW_PROGRAM}, "first paint")
    ->Name("limit_start")
    ->UseManualTime()
    ->Iterations(10)
    ->Unit(benchmark::kMillisecond);

BENCHMARK(pressForPanel)
    ->Name("press")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(pressForBareWindow)
    ->Name("limit_press")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);

} // namespace
