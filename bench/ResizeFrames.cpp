// The longest frame while the window of a board of 1,000 formatted texts is made wider and
// narrower, as one who drags its edge does: from the moment that it gets another width until the
// window system has the new picture. Against one frame of a screen.

#include "support/BenchWindow.h"
#include "support/Frames.h"
#include "support/Notes.h"
#include "ui/entries/EntryListView.h"

#include <QScrollBar>

namespace {

using namespace korvex;

constexpr std::size_t kTexts = 1'000;
constexpr int kNarrow = 640;
constexpr int kWide = 1'400;
constexpr int kStep = 8;

std::vector<double> dragEdge(ui::MainWindow& window, const bench::PaintCount& paints) {
    std::vector<double> frames;
    const auto resize = [&](int width) {
        frames.push_back(paints.secondsOf([&] { window.resize(width, window.height()); }));
    };
    for (int width = kNarrow + kStep; width < kWide; width += kStep) {
        resize(width);
    }
    for (int width = kWide; width > kNarrow; width -= kStep) {
        resize(width);
    }
    return frames;
}

void korvexWindow(benchmark::State& state) {
    bench::application();
    bench::BenchWindow owner(
        [](bench::OpenStore& store) { bench::addNotes(store, store.inbox(), kTexts); });
    auto& list = *owner.window().findChild<ui::EntryListView*>();
    const bench::PaintCount paints(*list.viewport());
    bench::settle();
    // In the midst of the texts: what is above keeps its place too.
    list.verticalScrollBar()->setValue(list.verticalScrollBar()->maximum() / 2);
    owner.window().resize(kNarrow, owner.window().height());
    bench::settle();
    for (auto _ : state) {
        bench::report(state, dragEdge(owner.window(), paints));
    }
}

const bool kAreAdded = [] {
    bench::add("korvex", korvexWindow);
    bench::addFrame();
    return true;
}();

} // namespace
