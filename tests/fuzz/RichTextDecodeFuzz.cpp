// Any bytes as a stored text: they may be refused, but what is read from them must be stored and
// read again as the same text, in the same bytes.

#include "base/Error.h"
#include "fuzz/Fuzzing.h"
#include "richtext/stored/RichTextSerializer.h"
#include "support/SilentLog.h"

#include <cstdint>

using namespace korvex;
using tests::require;
using tests::unlessRefused;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    tests::SilentLog log;
    const richtext::RichTextSerializer serializer(log);
    const auto text = unlessRefused<base::Error>([&] { return serializer.decode({data, size}); });
    if (!text) {
        return 0;
    }
    const auto stored = unlessRefused<base::Error>([&] { return serializer.encode(*text); });
    if (!stored) {
        return 0;
    }
    const auto again = unlessRefused<base::Error>([&] { return serializer.decode(*stored); });
    require(again.has_value(), "a stored text was refused");
    require(again->isEquivalentTo(*text), "a stored text was read as another one");
    require(unlessRefused<base::Error>([&] { return serializer.encode(*again); }) == stored,
            "a text was stored differently the second time");
    return 0;
}
