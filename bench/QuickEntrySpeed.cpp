// Quick Entry under a window manager. From `korvex quick-entry`, where no app runs, until its panel
// has the keyboard ("start"), over a store of 10,000 entries, against a bare Qt window with one
// label until it is painted ("limit_start"). In a running app, from the moment at which it hears of
// the shortcut until the panel is painted and has the keyboard ("press"), against the same of a
// bare window in that process ("limit_press"): of a hundred times the 95th.

#include "support/BenchWindow.h"
#include "support/Frames.h"
#include "support/Stopwatch.h"

#include "app/QuickEntryState.h"
#include "platform/qt/WindowActivation.h"
#include "ui/capture/QuickEntryPanel.h"

#include <QLabel>

#include <algorithm>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <thread>

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 10'000;
constexpr int kPresses = 100;
constexpr std::chrono::seconds kLongest{5};
constexpr std::chrono::seconds kUntilManaged{1};

/// Who gives the keyboard to windows, on the screen that this environment names.
class WindowManager {
public:
    explicit WindowManager(const bench::Environment& screen)
        : m_process({"openbox"}, screen, bench::ChildProcess::Output::dropped) {
        std::this_thread::sleep_for(kUntilManaged);
    }

private:
    bench::ChildProcess m_process;
};

void start(benchmark::State& state, const std::vector<std::string>& command, const char* line) {
    static const bench::VirtualScreen screen;
    static const WindowManager manager(screen.environment());
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
    auto environment = screen.environment();
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

/// Waits until a window is painted and has the keyboard.
class Shown final : public QObject {
public:
    explicit Shown(QWidget& window) : m_window(window) { window.installEventFilter(this); }

    template <typename Open>
    double secondsOf(Open&& open) {
        m_isPainted = false;
        const auto start = std::chrono::steady_clock::now();
        open();
        while (!m_isPainted || !m_window.isActiveWindow()) {
            pass(start);
        }
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    /// Waits for the next event; throws where what is waited for does not come.
    static void pass(std::chrono::steady_clock::time_point since) {
        QApplication::processEvents(QEventLoop::AllEvents, 10);
        if (std::chrono::steady_clock::now() - since > kLongest) {
            throw std::runtime_error("the window does not get, or give back, the keyboard");
        }
    }
    bool eventFilter(QObject*, QEvent* event) override {
        m_isPainted = m_isPainted || event->type() == QEvent::Paint;
        return false;
    }

private:
    QWidget& m_window;
    bool m_isPainted = false;
};

template <typename Open>
void press(benchmark::State& state, QWidget& window, Open&& open) {
    Shown shown(window);
    for (auto _ : state) {
        std::vector<double> times;
        for (int i = 0; i < kPresses; ++i) {
            times.push_back(shown.secondsOf(open));
            window.hide();
            const auto hidden = std::chrono::steady_clock::now();
            while (QApplication::activeWindow() == &window) {
                Shown::pass(hidden);
            }
        }
        std::sort(times.begin(), times.end());
        state.SetIterationTime(times[times.size() * 95 / 100]);
        state.counters["median_ms"] = times[times.size() / 2] * 1e3;
        state.counters["longest_ms"] = times.back() * 1e3;
    }
}

void call(QWidget& window) {
    platform::qt::activateCalledWindow(*window.windowHandle(), 0);
}

/// The main window of a running app, with what Quick Entry needs beside it.
struct RunningApp {
    RunningApp() { bench::settle(); }

    static bench::Environment onThisScreen() {
        return {{"DISPLAY", qgetenv("DISPLAY").toStdString()}};
    }

    QApplication& application = bench::application();
    WindowManager manager{onThisScreen()};
    bench::BenchWindow main{[](bench::OpenStore& store) {
        static_cast<void>(store.entries().createTodos({.contents = bench::titles(kEntries),
                                                       .board = *store.boards().inboxBoard(),
                                                       .now = bench::kNow}));
    }};
    app::QuickEntryDraftFile draftFile{main.workspace().drafts.folders()};
};

RunningApp& runningApp() {
    static auto& instance = *new RunningApp;
    return instance;
}

void pressForPanel(benchmark::State& state) {
    auto& app = runningApp();
    const auto& workspace = app.main.workspace();
    app::QuickEntryState draft({.context = workspace.context,
                                .preferences = workspace.preferences,
                                .reminders = workspace.reminders,
                                .widgets = workspace.widgets,
                                .draftFile = app.draftFile,
                                .runLoop = workspace.runLoop,
                                .clock = workspace.clock,
                                .log = workspace.log,
                                .inBackground = [](const auto& work) { work(); }});
    ui::QuickEntryPanel panel(draft, workspace, app.main.theme());
    press(state, panel, [&] {
        panel.open({});
        call(panel);
    });
}

void pressForBareWindow(benchmark::State& state) {
    runningApp();
    QLabel label(QStringLiteral("Korvex"));
    label.resize(560, 120);
    press(state, label, [&] {
        label.show();
        label.raise();
        label.activateWindow();
        call(label);
    });
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

[[maybe_unused]] const bool kAdded = [] {
    bench::add("press", pressForPanel);
    bench::add("limit_press", pressForBareWindow);
    return true;
}();

} // namespace
