// A search of 100,000 entries, 30 MB of texts in many languages, on each key press while words are
// typed letter by letter: of all key presses the 95th in a hundred ("korvex"), and the same when
// after each press one entry has changed ("changed"). Against that of memmem finding the texts that
// contain the longest word of the same queries ("memmem"), and against one frame of a screen
// ("limit"). Beside it the first search of a store that has just been opened ("first"), with the
// memory that it took, and the longest slice of the preparation that spares it ("slice").

#include "support/BenchStore.h"
#include "support/Frames.h"
#include "support/MixedTexts.h"
#include "support/Scratch.h"
#include "support/Stopwatch.h"

#include "services/SearchService.h"

#include <malloc.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <optional>

namespace {

using namespace korvex;
using bench::add;

constexpr std::size_t kEntries = 100'000;
constexpr std::size_t kBoards = 20;
constexpr double kFrame = 0.016;

/// The store's file, made once.
std::filesystem::path storeFile() {
    static const bench::Scratch scratch;
    static const auto file = [] {
        auto path = scratch / "Primary.store";
        bench::OpenStore store(path);
        const auto texts = bench::mixedTexts(kEntries);
        for (std::size_t i = 0; i < kBoards; ++i) {
            auto& board = store.boards().createBoard("Board " + std::to_string(i), bench::kNow);
            const auto first = texts.begin() + static_cast<std::ptrdiff_t>(i * kEntries / kBoards);
            store.entries().createTodos({.contents = {first, first + kEntries / kBoards},
                                         .board = board,
                                         .now = bench::kNow});
        }
        store.container().checkpoint();
        return path;
    }();
    return file;
}

/// All that searching takes, over a store that has just been opened.
struct Searching {
    bench::OpenStore store{storeFile()};
    base::TextFolding folding{"en_US"};
    services::BoardService boards = store.boards();
    services::FoldedTexts texts{store.context(), folding};
    services::SearchService service{store.context(), boards, texts};
};

Searching& searching() {
    static Searching instance;
    return instance;
}

template <typename Work>
double secondsOf(Work&& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Reports the 95th in a hundred, and the rest beside it.
void report(benchmark::State& state, std::vector<double> times) {
    std::sort(times.begin(), times.end());
    state.SetIterationTime(times[times.size() * 95 / 100]);
    state.counters["median_ms"] = times[times.size() / 2] * 1e3;
    state.counters["longest_ms"] = times.back() * 1e3;
    state.counters["keys"] = static_cast<double>(times.size());
}

void typeWords(benchmark::State& state) {
    auto& service = searching().service;
    service.search("x");
    const auto queries = bench::typedQueries();
    for (auto _ : state) {
        std::vector<double> times;
        for (const auto& query : queries) {
            times.push_back(
                secondsOf([&] { benchmark::DoNotOptimize(service.search(query).size()); }));
        }
        report(state, std::move(times));
    }
}

void typeWordsWhileEntriesChange(benchmark::State& state) {
    auto& [store, folding, boards, texts, service] = searching();
    auto entries = store.entries();
    service.search("x");
    const auto queries = bench::typedQueries();
    std::size_t number = 0;
    for (auto _ : state) {
        std::vector<double> times;
        for (const auto& query : queries) {
            number = (number + 7919) % kEntries;
            auto* entry = texts.entry(static_cast<services::FoldedTexts::Number>(number));
            entries.updateTodo(*entry, entry->content() + " more", bench::kNow);
            times.push_back(
                secondsOf([&] { benchmark::DoNotOptimize(service.search(query).size()); }));
        }
        report(state, std::move(times));
    }
}

/// Which lines of `text` contain `needle`.
std::size_t linesWith(std::string_view text, std::string_view needle) {
    std::size_t lines = 0;
    const auto* const end = text.data() + text.size();
    for (const auto* at = text.data(); at < end; ++lines) {
        const auto rest = static_cast<std::size_t>(end - at);
        const auto* hit =
            static_cast<const char*>(::memmem(at, rest, needle.data(), needle.size()));
        if (!hit) {
            break;
        }
        const auto behind = static_cast<std::size_t>(end - hit);
        const auto* lineEnd = static_cast<const char*>(std::memchr(hit, '\n', behind));
        at = lineEnd ? lineEnd + 1 : end;
    }
    return lines;
}

void memmemOverTheSame(benchmark::State& state) {
    const base::TextFolding folding("en_US");
    static const auto folded = [&] {
        std::string all;
        for (const auto& text : bench::mixedTexts(kEntries)) {
            folding.appendFolded(text, all);
            all += '\n';
        }
        return all;
    }();
    const auto queries = bench::typedQueries();
    for (auto _ : state) {
        std::vector<double> times;
        for (const auto& query : queries) {
            const auto terms = services::SearchService::foldedTerms(query, folding);
            const auto& longest =
                *std::max_element(terms.begin(), terms.end(),
                                  [](const auto& a, const auto& b) { return a.size() < b.size(); });
            times.push_back(
                secondsOf([&] { benchmark::DoNotOptimize(linesWith(folded, longest)); }));
        }
        report(state, std::move(times));
    }
    state.counters["bytes"] = static_cast<double>(folded.size());
}

void limit(benchmark::State& state) {
    for (auto _ : state) {
        state.SetIterationTime(kFrame);
    }
}

/// Of this process, in bytes.
double residentMemory() {
    std::ifstream statm("/proc/self/statm");
    double size = 0;
    double resident = 0;
    statm >> size >> resident;
    constexpr double kPage = 4096;
    return resident * kPage;
}

void firstSearch(benchmark::State& state) {
    storeFile();
    for (auto _ : state) {
        std::optional<Searching> fresh(std::in_place);
        ::malloc_trim(0); // of what the making of the store has left
        const auto before = residentMemory();
        bench::timed(state, [&] { benchmark::DoNotOptimize(fresh->service.search("w").size()); });
        state.counters["memory"] = residentMemory() - before;
    }
}

void longestSlice(benchmark::State& state) {
    storeFile();
    for (auto _ : state) {
        std::optional<Searching> fresh(std::in_place);
        double longest = 0;
        double all = 0;
        for (auto isMore = true; isMore;) {
            const auto taken =
                secondsOf([&] { isMore = fresh->service.prepare(std::chrono::milliseconds(4)); });
            longest = std::max(longest, taken);
            all += taken;
        }
        state.SetIterationTime(longest);
        state.counters["all_ms"] = all * 1e3;
    }
}

const bool kAreAdded = [] {
    add("first", firstSearch);
    add("slice", longestSlice);
    add("korvex", typeWords);
    add("changed", typeWordsWhileEntriesChange);
    add("memmem", memmemOverTheSame);
    add("limit", limit);
    return true;
}();

} // namespace
