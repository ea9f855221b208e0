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
/// Reads the files in order; the first error ends it and nothing is kept. It names the file where
/// there are several.
std::vector<model::EntryAttachment> readAttachments(std::span<const std::filesystem::path> files);

/// Writes an attachment into a folder: whole or not at all, and never over a file. Under its own
/// name, or where that is taken under the next free one ("plan 2.pdf"), which it returns; a name
/// that is too long for a file is cut before its extension. Throws
/// std::filesystem::filesystem_error.
std::filesystem::path saveAttachment(const model::EntryAttachment& attachment,
                                     const std::filesystem::path& folder);

} // namespace korvex::services
