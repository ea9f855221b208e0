// The longest frame while a board of 10,000 entries is scrolled: from the moment that the scroll
// bar moves until the window system has the new picture. Screen by screen through the whole list,
// line by line as a wheel does, and in jumps as the handle does when it is dragged. Against the
// same in a bare list of as many plain rows ("limit"), and against one frame of a screen ("frame").
// "texts" is the same over 1,000 formatted texts.

#include "support/BenchWindow.h"
#include "support/Frames.h"
#include "support/Notes.h"
#include "ui/entries/EntryListView.h"

#include <QListView>
#include <QScrollBar>
#include <QStringListModel>

#include <algorithm>
#include <optional>

namespace {

using namespace korvex;

constexpr std::size_t kEntries = 10'000;
constexpr std::size_t kTexts = 1'000;

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
        return m_paints.secondsOf([&] { scrollBar().setValue(position); });
    }

private:
    QAbstractScrollArea& m_list;
    bench::PaintCount m_paints;
};

/// The desktop app's window on a store that was filled so.
class Window {
public:
    explicit Window(void (*fill)(bench::OpenStore&))
        : m_window(fill), m_list(*m_window.window().findChild<ui::EntryListView*>()) {
        bench::settle();
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
    return frames;
}

void scroll(benchmark::State& state, QAbstractScrollArea& list) {
    Scrolled scrolled(list);
    for (auto _ : state) {
        bench::report(state, scrollThrough(scrolled));
    }
}

void fillWithTodos(bench::OpenStore& store) {
    store.entries().createTodos(
        {.contents = bench::titles(kEntries), .board = store.inbox(), .now = bench::kNow});
}

void fillWithTexts(bench::OpenStore& store) {
    bench::addNotes(store, store.inbox(), kTexts);
}

void korvexWindow(benchmark::State& state) {
    bench::application();
    Window window(fillWithTodos);
    scroll(state, window.list());
}

void windowOfTexts(benchmark::State& state) {
    bench::application();
    Window window(fillWithTexts);
    scroll(state, window.list());
}

void bareList(benchmark::State& state) {
    bench::application();
    BareList bare(Window(fillWithTodos).list().size());
    scroll(state, bare.list());
}

const bool kAreAdded = [] {
    bench::add("korvex", korvexWindow);
    bench::add("texts", windowOfTexts);
    bench::add("limit", bareList);
    bench::addFrame();
    return true;
}();

} // namespace
