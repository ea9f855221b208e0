#include "services/TemporaryAttachmentCopies.h"

#include "services/AttachmentFileWriting.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

namespace korvex::services {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPrefix = "KorvexAttachment-";

/// The folder, open and locked by this program alone; absent when another has it, or it is gone, or
/// it is not this user's.
std::optional<base::FileDescriptor> locked(const fs::path& folder) {
    base::FileDescriptor descriptor(
        ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!descriptor.isOpen() || ::flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0 ||
        ::fstat(descriptor.get(), &status) != 0) {
        return std::nullopt;
    }
    // Who locked it before may have removed it, or somebody else may own it.
    if (status.st_nlink == 0 || status.st_uid != ::geteuid()) {
        return std::nullopt;
    }
    return descriptor;
}

bool isCopyFolder(const fs::path& folder) {
    const auto name = folder.filename().string();
    return name.starts_with(kPrefix) &&
           base::Uuid::parse(std::string_view(name).substr(kPrefix.size())).has_value();
}

void discard(const fs::path& folder) noexcept {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

} // namespace

TemporaryAttachmentCopies::TemporaryAttachmentCopies(fs::path parent)
    : m_parent(std::move(parent)) {}

TemporaryAttachmentCopies::~TemporaryAttachmentCopies() {
    for (const auto& folder : m_folders) {
        discard(folder.path);
    }
}

fs::path TemporaryAttachmentCopies::parent() const {
    return m_parent.empty() ? fs::temp_directory_path() : m_parent;
}

TemporaryAttachmentCopies::Folder TemporaryAttachmentCopies::makeFolder(const fs::path& parent) {
    fs::create_directories(parent);
    // Between its making and its locking another program may take a folder for a leftover: then
    // the next one does.
    constexpr int kMaximumTries = 100;
    fs::path path;
    for (int i = 0; i < kMaximumTries; ++i) {
        path = parent / (std::string(kPrefix) + base::Uuid::random().text());
        if (::mkdir(path.c_str(), 0700) != 0) {
            throw fs::filesystem_error("A folder for the attachment could not be made", path,
                                       {errno, std::generic_category()});
        }
        if (auto descriptor = locked(path)) {
            return {.path = std::move(path), .descriptor = std::move(*descriptor)};
        }
    }
    throw fs::filesystem_error("A folder for the attachment could not be locked", path,
                               std::make_error_code(std::errc::resource_unavailable_try_again));
}

fs::path TemporaryAttachmentCopies::copy(const model::EntryAttachment& attachment) {
    auto folder = makeFolder(parent());
    const auto name = fittingFilename(attachment.filename);
    auto file = folder.path / name;
    try {
        writeNewFile(folder.descriptor.get(), name, 0600, attachment.data, file);
        m_folders.push_back(std::move(folder));
    } catch (...) {
        discard(file.parent_path());
        throw;
    }
    if (m_folders.size() > kMaximumCopies) {
        discard(m_folders.front().path);
        m_folders.pop_front();
    }
    return file;
}

void TemporaryAttachmentCopies::removeLeftovers() noexcept {
    try {
        for (const auto& each : fs::directory_iterator(parent())) {
            // Its own are locked too: by this program, through another descriptor.
            if (!isCopyFolder(each.path())) {
                continue;
            }
            if (const auto descriptor = locked(each.path())) {
                discard(each.path());
            }
        }
    } catch (const std::exception&) {
        // What stays behind is looked for the next time.
    }
}

} // namespace korvex::services
