#include "base/FileReplacement.h"

#include "base/FileDescriptor.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string>

namespace korvex::base {

namespace {

namespace fs = std::filesystem;

std::error_code lastError() {
    return {errno, std::generic_category()};
}

/// Follows a chain of symbolic links to what it leads to, whether that exists or not.
std::error_code followLinks(fs::path& file) {
    constexpr int kLongestChain = 40;
    std::error_code error;
    for (int link = 0; fs::is_symlink(fs::symlink_status(file, error)); ++link) {
        if (link == kLongestChain) {
            return std::make_error_code(std::errc::too_many_symbolic_link_levels);
        }
        file = file.parent_path() / fs::read_symlink(file, error);
    }
    return {};
}

std::error_code writeAll(int descriptor, std::string_view contents) {
    while (!contents.empty()) {
        const auto written = ::write(descriptor, contents.data(), contents.size());
        if (written < 0 && errno != EINTR) {
            return lastError();
        }
        contents.remove_prefix(written < 0 ? 0 : static_cast<std::size_t>(written));
    }
    return {};
}

/// The staging file of mkstemp is for its owner alone; what it replaces may have been for others
/// too.
void takePermissions(int descriptor, const fs::path& target) {
    struct stat old {};
    if (::stat(target.c_str(), &old) == 0) {
        ::fchmod(descriptor, old.st_mode & 07777);
    }
}

std::error_code fill(const FileDescriptor& staging, const fs::path& target,
                     std::string_view contents) {
    if (const auto error = writeAll(staging.get(), contents)) {
        return error;
    }
    takePermissions(staging.get(), target);
    return ::fsync(staging.get()) == 0 ? std::error_code() : lastError();
}

/// Makes the rename itself last.
std::error_code syncFolder(const fs::path& folder) {
    const FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return descriptor.isOpen() && ::fsync(descriptor.get()) == 0 ? std::error_code() : lastError();
}

} // namespace

std::error_code replaceFile(const fs::path& file, std::string_view contents) {
    auto target = fs::absolute(file);
    auto error = followLinks(target);
    if (error) {
        return error;
    }
    fs::create_directories(target.parent_path(), error);
    if (error) {
        return error;
    }

    auto staged = target.string() + ".XXXXXX";
    const FileDescriptor staging(::mkostemp(staged.data(), O_CLOEXEC));
    if (!staging.isOpen()) {
        return lastError();
    }
    error = fill(staging, target, contents);
    if (!error && ::rename(staged.c_str(), target.c_str()) != 0) {
        error = lastError();
    }
    if (error) {
        ::unlink(staged.c_str());
        return error;
    }
    return syncFolder(target.parent_path());
}

} // namespace korvex::base
