// Any bytes as a stored text: they may be refused, but what is read from them must be stored and
// read again as the same text, in the same bytes.

#include "base/Error.h"
#include "base/Log.h"
#include "richtext/RichTextSerializer.h"

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
    } catch (const base::Error&) {
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
    SilentLog log;
    const richtext::RichTextSerializer serializer(log);
    const auto text = unlessRefused([&] { return serializer.decode({data, size}); });
    if (!text) {
        return 0;
    }
    const auto stored = unlessRefused([&] { return serializer.encode(*text); });
    if (!stored) {
        return 0;
    }
    const auto again = unlessRefused([&] { return serializer.decode(*stored); });
    require(again.has_value(), "a stored text was refused");
    require(again->isEquivalentTo(*text), "a stored text was read as another one");
    require(unlessRefused([&] { return serializer.encode(*again); }) == stored,
            "a text was stored differently the second time");
    return 0;
}
