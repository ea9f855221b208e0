#pragma once

#include "base/FileDescriptor.h"
#include "model/EntryAttachment.h"

#include <cstddef>
#include <deque>
#include <filesystem>

namespace korvex::services {

/// Copies of attachments for other programs to open, each in a folder of its own for this user
/// only. Removed with this object; what a killed program left is removed by the next one
/// (`removeLeftovers`). Each folder is locked as long as it is of use, which also keeps
/// systemd-tmpfiles from cleaning it up.
class TemporaryAttachmentCopies {
public:
    /// The oldest copy is removed when there would be more.
    static constexpr std::size_t kMaximumCopies = 64;

    /// Below this folder, by default the system's for temporary files.
    explicit TemporaryAttachmentCopies(std::filesystem::path parent = {});
    ~TemporaryAttachmentCopies();
    TemporaryAttachmentCopies(const TemporaryAttachmentCopies&) = delete;
    TemporaryAttachmentCopies& operator=(const TemporaryAttachmentCopies&) = delete;

    /// `KorvexAttachment-<fresh identifier>/<filename>`; a name that is too long for a file is cut
    /// before its extension. Throws std::filesystem::filesystem_error.
    std::filesystem::path copy(const model::EntryAttachment& attachment);
    /// Removes what programs that no longer run left behind. Never throws.
    void removeLeftovers() noexcept;

private:
    /// A folder, open and locked.
    struct Folder {
        std::filesystem::path path;
        base::FileDescriptor descriptor;
    };

    std::filesystem::path parent() const;
    static Folder makeFolder(const std::filesystem::path& parent);

    std::filesystem::path m_parent;
    std::deque<Folder> m_folders;
};

} // namespace korvex::services
