#pragma once

#include "base/Uuid.h"
#include "model/Entry.h"
#include "model/EntryAttachment.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace korvex::services {

/// What a list of attachments shows of one.
struct AttachmentSummary {
    base::Uuid id;
    std::string filename;
    /// In bytes.
    std::size_t size = 0;

    bool operator==(const AttachmentSummary&) const = default;
};

/// The attachments of an entry without their bytes.
struct AttachmentList {
    std::vector<AttachmentSummary> attachments;
    /// What is stored cannot be read: it is shown as no attachments, and nothing can be attached.
    bool isDamaged = false;

    /// Nothing is to be shown of it.
    bool isEmpty() const { return attachments.empty() && !isDamaged; }
    bool operator==(const AttachmentList&) const = default;
};

/// Reads the entry's attachments from the store without keeping their bytes, which takes time that
/// grows with them: whoever shows them keeps the result until the entry changes. Throws StoreError.
AttachmentList attachmentsOf(const model::Entry& entry);

/// One whole attachment; absent when the entry has none of that identifier. Throws AttachmentError
/// `invalidData` when they cannot be read, or StoreError.
std::optional<model::EntryAttachment> attachment(const model::Entry& entry, const base::Uuid& id);

} // namespace korvex::services
