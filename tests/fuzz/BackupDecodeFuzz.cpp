// Any bytes as a backup: they may be refused, but what is read from them can be validated, and
// written in the one form from which the same is read.

#include "backup/BackupFileIO.h"
#include "fuzz/Fuzzing.h"
#include "support/SilentLog.h"

#include <cstdint>

using namespace korvex;
using tests::require;
using tests::unlessRefused;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace backup;
    const auto document = unlessRefused<backup::BackupError>([&] {
        return BackupFileIO::decode({data, size});
    });
    if (!document) {
        return 0;
    }
    tests::SilentLog log;
    unlessRefused<backup::BackupError>([&] {
        validate(*document, log);
        return true;
    });
    const auto bytes =
        unlessRefused<backup::BackupError>([&] { return BackupFileIO::encode(*document); });
    require(bytes.has_value(), "what was read could not be written");
    const auto again =
        unlessRefused<backup::BackupError>([&] { return BackupFileIO::decode(*bytes); });
    require(again == document, "what was written was read as something else");
    require(BackupFileIO::encode(*again) == bytes, "it was written differently the second time");
    return 0;
}
