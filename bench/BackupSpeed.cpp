// A backup of 100,000 formatted texts, 100 MB of contents: validating, writing and reading it,
// beside a copy of its bytes, RapidJSON's own reader over them with nothing done, and their base64
// alone. "memory" is the most that was allocated meanwhile, with the document and its bytes, for
// each byte of the document in memory.

#include "backup/BackupFileIO.h"
#include "base/Base64.h"
#include "base/Log.h"
#include "support/AllocationCounter.h"
#include "support/LargeBackup.h"

#include <benchmark/benchmark.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <cstring>
#include <string>

namespace {

using namespace korvex;

base::StandardErrorLog& errors() {
    static base::StandardErrorLog log(base::LogLevel::error);
    return log;
}

struct Subject {
    backup::BackupDocument document;
    /// What it takes in memory.
    std::size_t size;
    base::Bytes bytes;

    static const Subject& get() {
        static const Subject subject = [] {
            const auto before = bench::allocatedBytes();
            Subject made;
            made.document = bench::largeBackup();
            made.size = bench::allocatedBytes() - before;
            made.bytes = backup::BackupFileIO::encode(made.document);
            return made;
        }();
        return subject;
    }
};

/// Runs the work and tells its speed over the contents, and its memory. `shared` is what both sides
/// of it keep allocated outside.
template <typename Work>
void run(benchmark::State& state, std::size_t shared, Work&& work) {
    const auto& subject = Subject::get();
    const auto before = bench::allocatedBytes();
    bench::forgetMostAllocated();
    for (auto _ : state) {
        work(subject);
    }
    state.counters["memory"] = static_cast<double>(bench::mostAllocatedBytes() - before + shared) /
                               static_cast<double>(subject.size);
    state.counters["document"] = static_cast<double>(subject.size);
    state.counters["file"] = static_cast<double>(subject.bytes.size());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bench::kBackupContents));
}

void validating(benchmark::State& state) {
    run(state, Subject::get().size,
        [](const Subject& subject) { backup::validate(subject.document, errors()); });
}

void encoding(benchmark::State& state) {
    run(state, Subject::get().size, [](const Subject& subject) {
        benchmark::DoNotOptimize(backup::BackupFileIO::encode(subject.document));
    });
}

void decoding(benchmark::State& state) {
    run(state, Subject::get().bytes.size(), [](const Subject& subject) {
        benchmark::DoNotOptimize(backup::BackupFileIO::decode(subject.bytes));
    });
}

void copying(benchmark::State& state) {
    run(state, 0, [](const Subject& subject) {
        auto copy = subject.bytes;
        benchmark::DoNotOptimize(copy);
    });
}

void copyingDocument(benchmark::State& state) {
    run(state, 0, [](const Subject& subject) {
        auto copy = subject.document;
        benchmark::DoNotOptimize(copy);
    });
}

struct Ignoring : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Ignoring> {};

void plainReading(benchmark::State& state) {
    run(state, 0, [](const Subject& subject) {
        rapidjson::MemoryStream stream(reinterpret_cast<const char*>(subject.bytes.data()),
                                       subject.bytes.size());
        rapidjson::Reader reader;
        Ignoring handler;
        benchmark::DoNotOptimize(
            reader.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseValidateEncodingFlag>(
                stream, handler));
    });
}

void base64Writing(benchmark::State& state) {
    run(state, 0, [](const Subject& subject) {
        for (const auto& entry : subject.document.entries) {
            benchmark::DoNotOptimize(base::base64(*entry.richTextData));
        }
    });
}

void base64Reading(benchmark::State& state) {
    std::vector<std::string> texts;
    for (const auto& entry : Subject::get().document.entries) {
        texts.push_back(base::base64(*entry.richTextData));
    }
    run(state, 0, [&](const Subject&) {
        for (const auto& text : texts) {
            benchmark::DoNotOptimize(base::bytesOfBase64(text));
        }
    });
}

BENCHMARK(validating)->Name("validate")->Unit(benchmark::kMillisecond);
BENCHMARK(encoding)->Name("encode")->Unit(benchmark::kMillisecond);
BENCHMARK(decoding)->Name("decode")->Unit(benchmark::kMillisecond);
BENCHMARK(copying)->Name("limit/copy")->Unit(benchmark::kMillisecond);
BENCHMARK(copyingDocument)->Name("limit/copy-document")->Unit(benchmark::kMillisecond);
BENCHMARK(plainReading)->Name("limit/rapidjson")->Unit(benchmark::kMillisecond);
BENCHMARK(base64Writing)->Name("limit/base64")->Unit(benchmark::kMillisecond);
BENCHMARK(base64Reading)->Name("limit/base64-back")->Unit(benchmark::kMillisecond);

} // namespace
