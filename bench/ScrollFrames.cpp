// The longest frame while a board of 10,000 entries is scrolled: from the moment that the scroll
// bar moves until the window system has the new picture. Screen by screen through the whole list,
// line by line as a wheel does, and in jumps as the handle does when it is dragged. Against the
// same in a bare list of as many plain rows ("limit"), and against one frame of a screen ("frame").

#include "support/BenchWindow.h"
#include "ui/entries/EntryListView.h"

#include <QListView>
#include <QScrollBar>
#include <QStringListModel>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <optional>

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 10'000;
constexpr double kLongestFrame = 0.016;

/// A list that is scrolled, once it has been painted.
class Scrolled {
public:
    explicit Scrolled(QAbstractScrollArea& list) : m_list(list), m_paints(*list.viewport()) {
        list.viewport()->update();
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
    QAbstractScrollArea& m_list;
    bench::PaintCount m_paints;
};

/// The desktop app's window on a board of that many entries.
class Window {
public:
    Window()
        : m_window([](bench::OpenStore& store) {
              store.entries().createTodos({.contents = bench::titles(kEntries),
                                           .board = store.inbox(),
                                           .now = bench::kNow});
          }),
          m_list(*m_window.window().findChild<ui::EntryListView*>()) {
        // What the start puts off until the window has been painted is no part of a frame.
        constexpr std::chrono::seconds kSettling{3};
        const auto start = std::chrono::steady_clock::now();
        while (std::chrono::steady_clock::now() - start < kSettling) {
            QApplication::processEvents(QEventLoop::AllEvents, 100);
        }
    }

    QAbstractScrollArea& list() { return m_list; }

private:
    bench::BenchWindow m_window;
    ui::EntryListView& m_list;
};

/// Qt's own list of the same texts, as large.
class BareList {
public:
    explicit BareList(QSize size) {
        QStringList texts;
        for (const auto& title : bench::titles(kEntries)) {
            texts.append(QString::fromStdString(title));
        }
        m_model.setStringList(texts);
        m_list.setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
        m_list.setModel(&m_model);
        m_list.resize(size);
        m_list.show();
    }

    QAbstractScrollArea& list() { return m_list; }

private:
    QStringListModel m_model;
    QListView m_list;
};

std::vector<double> scrollThrough(Scrolled& list) {
    std::vector<double> frames;
    const auto draw = [&](int position) {
        if (const auto seconds = list.frame(position)) {
            frames.push_back(*seconds);
        }
    };
    auto& bar = list.scrollBar();
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

void scroll(benchmark::State& state, QAbstractScrollArea& list) {
    Scrolled scrolled(list);
    for (auto _ : state) {
        const auto frames = scrollThrough(scrolled);
        state.SetIterationTime(frames.back());
        state.counters["frames"] = static_cast<double>(frames.size());
        state.counters["p99"] = frames[frames.size() * 99 / 100];
        state.counters["median"] = frames[frames.size() / 2];
    }
}

void korvexWindow(benchmark::State& state) {
    bench::application();
    Window window;
    scroll(state, window.list());
}

void bareList(benchmark::State& state) {
    bench::application();
    BareList bare(Window().list().size());
    scroll(state, bare.list());
}

void frame(benchmark::State& state) {
    for (auto _ : state) {
        state.SetIterationTime(kLongestFrame);
    }
}

template <typename Function>
void add(const char* name, Function function) {
    benchmark::RegisterBenchmark(name, function)
        ->UseManualTime()
        ->Iterations(1)
        ->Unit(benchmark::kMillisecond);
}

const bool kAreAdded = [] {
    add("korvex", korvexWindow);
    add("limit", bareList);
    add("frame", frame);
    return true;
}();

} // namespace
