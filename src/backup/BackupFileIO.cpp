#include "backup/BackupFileIO.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace korvex::backup::BackupFileIO {

namespace {

constexpr std::size_t kChunkBytes = 1024 * 1024;

[[noreturn]] void fail(const char* what, const std::filesystem::path& file) {
    throw std::filesystem::filesystem_error(what, file,
                                            std::error_code(errno, std::generic_category()));
}

std::size_t sizeWithinLimit(std::uint64_t size) {
    if (size > BackupDocument::kMaximumBytes) {
        throw BackupError(BackupErrorCase::tooLarge);
    }
    return static_cast<std::size_t>(size);
}

} // namespace

base::FileDescriptor openFile(const std::filesystem::path& file) {
    // Without waiting for who writes into a pipe.
    base::FileDescriptor open(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!open.isOpen()) {
        fail("open", file);
    }
    return open;
}

base::Bytes readFile(const std::filesystem::path& file, const Advance& advance) {
    return readFile(openFile(file), file, advance);
}

base::Bytes readFile(const base::FileDescriptor& open, const std::filesystem::path& file,
                     const Advance& advance) {
    struct stat status {};
    if (::fstat(open.get(), &status) != 0) {
        fail("stat", file);
    }
    if (!S_ISREG(status.st_mode)) {
        throw BackupError(BackupErrorCase::invalidDocument);
    }
    // Room for one byte more than the file has: that it stays free shows where the file ends, even
    // if it has grown meanwhile.
    base::Bytes bytes(sizeWithinLimit(static_cast<std::uint64_t>(status.st_size)) + 1);
    std::size_t used = 0;
    while (true) {
        const auto count =
            ::read(open.get(), bytes.data() + used, std::min(bytes.size() - used, kChunkBytes));
        if (count < 0 && errno != EINTR) {
            fail("read", file);
        }
        if (count == 0) {
            break;
        }
        const auto more = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        used += more;
        if (advance) {
            advance(more);
        }
        if (used == bytes.size()) {
            bytes.resize(
                std::min(sizeWithinLimit(used) + kChunkBytes, BackupDocument::kMaximumBytes + 1));
        }
    }
    bytes.resize(used);
    return bytes;
}

} // namespace korvex::backup::BackupFileIO
