// The longest time from the choice of another board to its picture, among boards of 10,000 todos,
// of 1,000 formatted texts, of 100 todos and of none, each of which was shown before; "first" is
// that of the first time. Against one frame of a screen.

#include "support/BenchWindow.h"
#include "support/Frames.h"
#include "support/Notes.h"
#include "ui/entries/EntryListView.h"

namespace {

using namespace korvex;

constexpr int kRounds = 25;

void fill(bench::OpenStore& store) {
    auto boards = store.boards();
    auto entries = store.entries();
    const auto addTodos = [&](std::size_t count, model::Board& board) {
        entries.createTodos({.contents = bench::titles(count), .board = board, .now = bench::kNow});
    };
    addTodos(100, store.inbox());
    addTodos(10'000, boards.createBoard("Everything", bench::kNow));
    bench::addNotes(store, boards.createBoard("Notes", bench::kNow), 1'000);
    boards.createBoard("Nothing", bench::kNow);
}

void korvexWindow(benchmark::State& state) {
    bench::application();
    bench::BenchWindow owner(fill);
    auto& window = owner.window();
    auto& navigation = *window.findChild<ui::Navigation*>();
    const bench::PaintCount paints(*window.findChild<ui::EntryListView*>()->viewport());
    bench::settle();
    const auto boards = owner.boards();
    const auto round = [&] {
        std::vector<double> frames;
        for (auto* const board : {boards[1], boards[2], boards[3], boards[0]}) {
            frames.push_back(paints.secondsOf([&] { navigation.openBoard(*board); }));
            QApplication::processEvents(); // what follows the picture
        }
        return frames;
    };
    for (auto _ : state) {
        const auto first = round();
        std::vector<double> frames;
        for (int i = 0; i < kRounds; ++i) {
            const auto more = round();
            frames.insert(frames.end(), more.begin(), more.end());
        }
        bench::report(state, frames);
        state.counters["first"] = *std::max_element(first.begin(), first.end());
    }
}

const bool kAreAdded = [] {
    bench::add("korvex", korvexWindow);
    bench::addFrame();
    return true;
}();

} // namespace
