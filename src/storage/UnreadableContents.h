#pragma once

#include "base/Log.h"
#include "base/Uuid.h"
#include "storage/RepairReport.h"
#include "store/ModelContext.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace korvex::storage {

/// A part of an entry that cannot be read any more and that no backup may have.
struct UnreadableContent {
    base::Uuid entry;
    /// `unreadableTexts` or `unreadableAttachments`.
    RepairKind kind;
};

/// Every such part of the stored entries: attachments, and formatted texts where an entry has no
/// other. Reads them, one at a time. Throws StoreError.
std::vector<UnreadableContent> unreadableContents(store::ModelContext& context, base::LogSink& log);

/// Takes it from its entry, after it was written to a file of its own beside the store:
/// "Primary.store.unreadable-<entry>-…". To do it again gives the same file. Saves nothing. Throws
/// StoreError.
void setAside(const UnreadableContent& content, store::ModelContext& context);

/// What the user is told of a repair that has set any aside, in full sentences.
std::optional<std::string> noticeOnSetAside(const RepairReport& report,
                                            const std::filesystem::path& storeFile);

} // namespace korvex::storage
