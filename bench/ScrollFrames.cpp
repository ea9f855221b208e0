// The longest frame while a board of 10,000 entries is scrolled: from the moment that the scroll
// bar moves until the window system has the new picture. Screen by screen through the whole list,
// line by line as a wheel does, and in jumps as the handle does when it is dragged.

#include "support/BenchWindow.h"
#include "ui/entries/EntryListView.h"

#include <QScrollBar>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <optional>

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 10'000;
constexpr double kLongestFrame = 0.016;

/// The desktop app's window on a board of that many entries.
class Window {
public:
    Window()
        : m_window([](bench::OpenStore& store) {
              store.entries().createTodos({.contents = bench::titles(kEntries),
                                           .board = store.inbox(),
                                           .now = bench::kNow});
          }),
          m_list(*m_window.window().findChild<ui::EntryListView*>()),
          m_paints(*m_list.viewport()) {
        m_paints.waitForMoreThan(0);
    }

    QScrollBar& scrollBar() { return *m_list.verticalScrollBar(); }

    /// Seconds until the list has been drawn at `position`; none when it stands there already.
    std::optional<double> frame(int position) {
        position = std::clamp(position, scrollBar().minimum(), scrollBar().maximum());
        if (position == scrollBar().value()) {
            return std::nullopt;
        }
        const int paints = m_paints.count();
        const auto start = std::chrono::steady_clock::now();
        scrollBar().setValue(position);
        m_paints.waitForMoreThan(paints);
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    bench::BenchWindow m_window;
    ui::EntryListView& m_list;
    bench::PaintCount m_paints;
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
    bench::application();
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
