#pragma once

#include "base/FileDescriptor.h"
#include "model/EntryAttachment.h"

#include <cstddef>
#include <deque>
#include <filesystem>
#include <functional>
#include <span>
#include <vector>

namespace korvex::services {

/// What `EntryService::attachFiles` reads files with.
using AttachmentReader =
    std::function<std::vector<model::EntryAttachment>(std::span<const std::filesystem::path>)>;

/// Reads a regular file whole, under a fresh identifier. Throws AttachmentError: `invalidFile` for
/// a folder, a link, a device, a name that no attachment may have, and whatever cannot be read to
/// its end as it was when it was opened; `tooLarge` beyond the limit, of which no more is read.
model::EntryAttachment readAttachment(const std::filesystem::path& file);
/// In order; the first error ends it and nothing is kept.
std::vector<model::EntryAttachment> readAttachments(std::span<const std::filesystem::path> files);

/// Writes an attachment into a folder: whole or not at all, and never over a file. Under its own
/// name, or where that is taken under the next free one ("plan 2.pdf"), which it returns; a name
/// that is too long for a file is cut before its extension. Throws
/// std::filesystem::filesystem_error.
std::filesystem::path saveAttachment(const model::EntryAttachment& attachment,
                                     const std::filesystem::path& folder);

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
