#include "services/AttachmentFiles.h"

#include "base/FileDescriptor.h"
#include "services/AttachmentFileWriting.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace korvex::services {

using model::AttachmentError;
using model::AttachmentErrorCase;
using model::EntryAttachment;

namespace {

namespace fs = std::filesystem;

struct stat statusOf(const base::FileDescriptor& file) {
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) {
        throw AttachmentError(AttachmentErrorCase::invalidFile);
    }
    return status;
}

bool isUnchanged(const struct stat& before, const struct stat& after) {
    return before.st_size == after.st_size && before.st_mtim.tv_sec == after.st_mtim.tv_sec &&
           before.st_mtim.tv_nsec == after.st_mtim.tv_nsec;
}

/// Neither a link is followed, nor does a pipe without a writer or a locked file make it wait.
base::FileDescriptor openForReading(const fs::path& file) {
    int number = -1;
    do {
        number = ::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    } while (number < 0 && errno == EINTR);
    if (number < 0) {
        throw AttachmentError(AttachmentErrorCase::invalidFile);
    }
    return base::FileDescriptor(number);
}

/// The file's `size` bytes, or one more if there are any.
base::Bytes readOneBeyond(const base::FileDescriptor& file, std::size_t size) {
    base::Bytes bytes(size + 1);
    std::size_t used = 0;
    while (used < bytes.size()) {
        const auto count = ::read(file.get(), bytes.data() + used, bytes.size() - used);
        if (count < 0 && errno != EINTR) {
            throw AttachmentError(AttachmentErrorCase::invalidFile);
        }
        if (count == 0) {
            break;
        }
        used += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    bytes.resize(used);
    return bytes;
}

base::FileDescriptor openFolder(const fs::path& folder) {
    base::FileDescriptor descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor.isOpen()) {
        throw fs::filesystem_error("The folder could not be opened", folder,
                                   {errno, std::generic_category()});
    }
    return descriptor;
}

/// Gives the file in an open folder another name that no file there has; an error number.
int renameIfFree(int folder, const std::string& from, const std::string& to) {
    if (::renameat2(folder, from.c_str(), folder, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    // Some file systems cannot promise that, but a hard link never replaces anything.
    if (errno != EINVAL && errno != ENOSYS) {
        return errno;
    }
    if (::linkat(folder, from.c_str(), folder, to.c_str(), 0) != 0) {
        return errno;
    }
    ::unlinkat(folder, from.c_str(), 0);
    return 0;
}

} // namespace

EntryAttachment readAttachment(const fs::path& path) {
    const auto name = path.filename().string();
    if (!EntryAttachment::isValidFilename(name)) {
        throw AttachmentError(AttachmentErrorCase::invalidFile);
    }
    const auto file = openForReading(path);
    const auto before = statusOf(file);
    if (!S_ISREG(before.st_mode)) {
        throw AttachmentError(AttachmentErrorCase::invalidFile);
    }
    if (before.st_size > static_cast<off_t>(EntryAttachment::kMaximumBytes)) {
        throw AttachmentError(AttachmentErrorCase::tooLarge);
    }
    const auto size = static_cast<std::size_t>(before.st_size);
    auto bytes = readOneBeyond(file, size);
    if (bytes.size() > EntryAttachment::kMaximumBytes) {
        throw AttachmentError(AttachmentErrorCase::tooLarge);
    }
    // Half of one version and half of the next is no version.
    if (bytes.size() != size || !isUnchanged(before, statusOf(file))) {
        throw AttachmentError(AttachmentErrorCase::invalidFile);
    }
    return {.id = base::Uuid::random(), .filename = name, .data = std::move(bytes)};
}

namespace {

/// As one of several: the reason says which.
EntryAttachment readOneOfSeveral(const fs::path& file) {
    try {
        return readAttachment(file);
    } catch (const AttachmentError& error) {
        throw AttachmentError(error.which(),
                              "\"" + file.filename().string() +
                                  "\" cannot be attached, so none of these files was.");
    }
}

} // namespace

std::vector<EntryAttachment> readAttachments(std::span<const fs::path> files) {
    // What cannot be attached together is refused before gigabytes of it are read.
    std::vector<EntryAttachment> attachments;
    for (const auto& file : files) {
        if (attachments.size() == EntryAttachment::kMaximumCount) {
            throw AttachmentError(AttachmentErrorCase::tooLarge);
        }
        attachments.push_back(files.size() == 1 ? readAttachment(file) : readOneOfSeveral(file));
    }
    return attachments;
}

fs::path saveAttachment(const EntryAttachment& attachment, const fs::path& folder) {
    constexpr int kMaximumTries = 10'000;
    const auto open = openFolder(folder);
    // A name that nobody looks at until the file is whole.
    const auto staging = ".korvex-" + base::Uuid::random().text();
    const auto file =
        writeNewFile(open.get(), staging, 0666, attachment.data, folder / attachment.filename);
    auto failure = ::fsync(file.get()) == 0 ? EEXIST : errno;
    auto name = attachment.filename;
    for (int number = 1; failure == EEXIST && number <= kMaximumTries; ++number) {
        name =
            fittingFilename(attachment.filename, number == 1 ? "" : " " + std::to_string(number));
        failure = renameIfFree(open.get(), staging, name);
    }
    if (failure != 0) {
        ::unlinkat(open.get(), staging.c_str(), 0);
        throw fs::filesystem_error("The attachment could not be written", folder / name,
                                   {failure, std::generic_category()});
    }
    return folder / name;
}

} // namespace korvex::services
