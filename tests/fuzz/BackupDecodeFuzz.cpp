// Any bytes as a backup: they may be refused, but what is read from them can be validated, and
// written in the one form from which the same is read.

#include "backup/BackupFileIO.h"
#include "base/Log.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

using namespace korvex;

class SilentLog final : public base::LogSink {
public:
    void write(base::LogLevel, std::string_view, std::string_view) override {}
};

template <typename Work>
auto unlessRefused(Work&& work) -> std::optional<decltype(work())> {
    try {
        return work();
    } catch (const backup::BackupError&) {
        return std::nullopt;
    }
}

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "%s\n", what);
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace backup;
    const auto document = unlessRefused([&] { return BackupFileIO::decode({data, size}); });
    if (!document) {
        return 0;
    }
    SilentLog log;
    unlessRefused([&] {
        validate(*document, log);
        return true;
    });
    const auto bytes = unlessRefused([&] { return BackupFileIO::encode(*document); });
    require(bytes.has_value(), "what was read could not be written");
    const auto again = unlessRefused([&] { return BackupFileIO::decode(*bytes); });
    require(again == document, "what was written was read as something else");
    require(BackupFileIO::encode(*again) == bytes, "it was written differently the second time");
    return 0;
}
