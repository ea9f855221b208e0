#include "services/AttachmentFileWriting.h"

#include "base/Text.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <span>

namespace korvex::services {

namespace {

/// NAME_MAX of every file system that Linux writes to.
constexpr std::size_t kLongestName = 255;
/// An extension beyond this is rather a text with a full stop in it.
constexpr std::size_t kLongestExtension = 32;

/// Cuts `text` to at most `size` bytes, not inside a character of it.
std::string_view prefix(std::string_view text, std::size_t size) {
    if (text.size() <= size) {
        return text;
    }
    constexpr auto isContinuation = [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
    };
    while (size > 0 && isContinuation(text[size])) {
        --size;
    }
    return text.substr(0, size);
}

int writeAll(int descriptor, std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const auto written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        bytes = bytes.subspan(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return 0;
}

} // namespace

std::string fittingFilename(std::string_view filename, std::string_view addition) {
    auto dot = filename.rfind('.');
    // ".profile" is all name.
    if (dot == std::string_view::npos || dot == 0 || filename.size() - dot > kLongestExtension) {
        dot = filename.size();
    }
    const auto extension = filename.substr(dot);
    const auto stem =
        prefix(filename.substr(0, dot), kLongestName - extension.size() - addition.size());
    std::string name(stem);
    return name.append(addition).append(extension);
}

base::FileDescriptor writeNewFile(int folder, const std::string& name, ::mode_t mode,
                                  const base::Bytes& bytes, const std::filesystem::path& path) {
    base::FileDescriptor file(
        ::openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    auto failure = file.isOpen() ? 0 : errno;
    if (file.isOpen()) {
        failure = writeAll(file.get(), bytes);
        if (failure != 0) {
            ::unlinkat(folder, name.c_str(), 0);
        }
    }
    if (failure != 0) {
        throw std::filesystem::filesystem_error("The attachment could not be written", path,
                                                {failure, std::generic_category()});
    }
    return file;
}

} // namespace korvex::services
