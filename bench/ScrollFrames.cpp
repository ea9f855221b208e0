// The longest frame while a board of 10,000 entries is scrolled: from the moment that the scroll
// bar moves until the window system has the new picture. Screen by screen through the whole list,
// line by line as a wheel does, and in jumps as the handle does when it is dragged.

#include "app/FileUserDefaults.h"
#include "platform/qt/QtRunLoop.h"
#include "support/BenchStore.h"
#include "support/Scratch.h"
#include "support/VirtualScreen.h"
#include "ui/EntryListView.h"
#include "ui/MainWindow.h"
#include "ui/Theme.h"

#include <QApplication>
#include <QScrollBar>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 10'000;
constexpr double kLongestFrame = 0.016;

/// The application needs these for as long as it lives.
int argumentCount = 1;
char programName[] = "bench_scroll_frames";
char* arguments[] = {programName, nullptr};

QApplication& application() {
    static const bench::VirtualScreen screen;
    static const bool isSet = [] {
        for (const auto& [name, value] : screen.environment()) {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
        return true;
    }();
    static_cast<void>(isSet);
    static QApplication instance(argumentCount, arguments);
    return instance;
}

/// The desktop app's window on a store of its own.
class Window {
public:
    Window()
        : m_store(makeStore(m_scratch / "Primary.store")),
          m_boards(m_store.boards()),
          m_entries(m_store.entries()),
          m_defaults(m_scratch / "settings.json"),
          m_preferences(m_defaults, m_log),
          m_theme(m_preferences),
          m_scheduleClock(m_clock, m_runLoop, base::TimeZone::system, m_log),
          m_workspace{
              m_store.container(), m_store.context(), m_boards, m_entries, m_scheduleClock, m_clock,
              m_preferences,       m_defaults,        m_dates,  m_log},
          m_window(m_workspace, m_theme) {
        m_window.show();
        m_list = m_window.findChild<ui::EntryListView*>();
        m_list->viewport()->installEventFilter(&m_paints);
        waitForPaint(0);
    }

    QScrollBar& scrollBar() { return *m_list->verticalScrollBar(); }

    /// Seconds until the list has been drawn at `position`; none when it stands there already.
    std::optional<double> frame(int position) {
        position = std::clamp(position, scrollBar().minimum(), scrollBar().maximum());
        if (position == scrollBar().value()) {
            return std::nullopt;
        }
        const int paints = m_paints.count;
        const auto start = std::chrono::steady_clock::now();
        scrollBar().setValue(position);
        waitForPaint(paints);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    struct PaintCount final : QObject {
        int count = 0;
        bool eventFilter(QObject*, QEvent* event) override {
            count += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
    };

    static std::filesystem::path makeStore(const std::filesystem::path& file) {
        bench::makeStore(file, bench::titles(kEntries));
        return file;
    }

    /// The event loop's turn in which the list is painted ends when the picture has been handed
    /// over.
    void waitForPaint(int paints) {
        while (m_paints.count == paints) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }

    bench::Scratch m_scratch;
    base::StandardErrorLog m_log{base::LogLevel::warning};
    bench::OpenStore m_store;
    services::BoardService m_boards;
    services::EntryService m_entries;
    base::SystemClock m_clock;
    app::FileUserDefaults m_defaults;
    app::AppPreferences m_preferences;
    ui::Theme m_theme;
    platform::qt::QtRunLoop m_runLoop;
    schedule::ScheduleClock m_scheduleClock;
    ui::DateTexts m_dates;
    ui::Workspace m_workspace;
    ui::MainWindow m_window;
    PaintCount m_paints;
    ui::EntryListView* m_list = nullptr;
};

std::vector<double> scrollThrough(Window& window) {
    std::vector<double> frames;
    const auto draw = [&](int position) {
        if (const auto seconds = window.frame(position)) {
            frames.push_back(*seconds);
        }
    };
    auto& bar = window.scrollBar();
    draw(bar.minimum());
    while (bar.value() < bar.maximum()) {
        draw(bar.value() + bar.pageStep());
    }
    for (int i = 0; i < 500; ++i) {
        draw(bar.value() - 3 * bar.singleStep());
    }
    for (int i = 1; i <= 200; ++i) {
        // Places all over the list, never twice the same.
        draw(static_cast<int>(static_cast<std::int64_t>(i) * 7919 % 200 * bar.maximum() / 200));
    }
    std::sort(frames.begin(), frames.end());
    return frames;
}

void korvexWindow(benchmark::State& state) {
    application();
    static Window window;
    for (auto _ : state) {
        const auto frames = scrollThrough(window);
        state.SetIterationTime(frames.back());
        state.counters["frames"] = static_cast<double>(frames.size());
        state.counters["p99"] = frames[frames.size() * 99 / 100];
        state.counters["median"] = frames[frames.size() / 2];
    }
}

void limit(benchmark::State& state) {
    for (auto _ : state) {
        state.SetIterationTime(kLongestFrame);
    }
}

BENCHMARK(korvexWindow)
    ->Name("korvex")
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(limit)->Name("limit")->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
