#pragma once

#include "model/EntryAttachment.h"

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

/// Copies of attachments for other programs to open, each in a folder of its own for this user
/// only. Removed with this object; what a killed program left is removed by the next one
/// (`removeLeftovers`).
class TemporaryAttachmentCopies {
public:
    /// Below this folder, by default the system's for temporary files.
    explicit TemporaryAttachmentCopies(std::filesystem::path parent = {});
    ~TemporaryAttachmentCopies();
    TemporaryAttachmentCopies(const TemporaryAttachmentCopies&) = delete;
    TemporaryAttachmentCopies& operator=(const TemporaryAttachmentCopies&) = delete;

    /// `KorvexAttachment-<fresh identifier>/<filename>`. Throws std::filesystem::filesystem_error.
    std::filesystem::path copy(const model::EntryAttachment& attachment);
    /// Removes what programs that no longer run left behind. Never throws.
    void removeLeftovers() noexcept;

private:
    std::filesystem::path m_parent;
    std::vector<std::filesystem::path> m_folders;
};

} // namespace korvex::services
