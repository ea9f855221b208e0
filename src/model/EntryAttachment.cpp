#include "model/EntryAttachment.h"

#include "base/Text.h"
#include "model/AttachmentPlist.h"

#include <plist/plist.h>

#include <memory>
#include <unordered_set>

namespace korvex::model {

namespace {

struct PlistFree {
    void operator()(void* node) const { plist_free(node); }
    void operator()(char* bytes) const { plist_to_bin_free(bytes); }
};
using PlistNode = std::unique_ptr<void, PlistFree>;
using PlistBytes = std::unique_ptr<char, PlistFree>;

PlistNode dictionary(const EntryAttachment& attachment) {
    PlistNode node(plist_new_dict());
    plist_dict_set_item(node.get(), attachmentPlist::kIdKey,
                        plist_new_string(attachment.id.text().c_str()));
    plist_dict_set_item(node.get(), attachmentPlist::kFilenameKey,
                        plist_new_string(attachment.filename.c_str()));
    // The library copies from the address even of no bytes.
    const char* bytes =
        attachment.data.empty() ? "" : reinterpret_cast<const char*>(attachment.data.data());
    plist_dict_set_item(node.get(), attachmentPlist::kDataKey,
                        plist_new_data(bytes, attachment.data.size()));
    return node;
}

} // namespace

std::string descriptionOf(AttachmentErrorCase which) {
    switch (which) {
    case AttachmentErrorCase::invalidFile:
        return "Choose a regular file with a valid filename. Folders cannot be attached.";
    case AttachmentErrorCase::tooLarge:
        return "Attachments can be up to 10 MB each, with up to 3 files per entry.";
    case AttachmentErrorCase::invalidData:
        return "These attachments could not be read. Nothing was changed.";
    case AttachmentErrorCase::multipleTodos:
        return "To attach files, add one todo at a time or switch to Text.";
    }
    return {};
}

std::string domainOf(AttachmentErrorCase) {
    return "Korvex.Attachment";
}

bool EntryAttachment::isValidFilename(std::string_view filename) {
    using namespace std::string_view_literals;
    return !filename.empty() && filename != "." && filename != ".." &&
           filename.find_first_of("/\\:\0"sv) == std::string_view::npos &&
           filename.size() <= kMaximumFilenameBytes && base::isValidUtf8(filename);
}

void EntryAttachment::validate(std::span<const EntryAttachment> attachments) {
    if (attachments.size() > kMaximumCount) {
        throw AttachmentError(AttachmentErrorCase::tooLarge);
    }
    std::unordered_set<base::Uuid> ids;
    for (const auto& attachment : attachments) {
        if (!ids.insert(attachment.id).second) {
            throw AttachmentError(AttachmentErrorCase::invalidData);
        }
    }
    for (const auto& attachment : attachments) {
        if (!isValidFilename(attachment.filename)) {
            throw AttachmentError(AttachmentErrorCase::invalidFile);
        }
    }
    std::size_t total = 0;
    for (const auto& attachment : attachments) {
        if (attachment.data.size() > kMaximumBytes) {
            throw AttachmentError(AttachmentErrorCase::tooLarge);
        }
        total += attachment.data.size();
    }
    if (total > kMaximumTotalBytes) {
        throw AttachmentError(AttachmentErrorCase::tooLarge);
    }
}

std::optional<base::Bytes> EntryAttachment::encode(std::span<const EntryAttachment> attachments) {
    validate(attachments);
    if (attachments.empty()) {
        return std::nullopt;
    }
    PlistNode list(plist_new_array());
    for (const auto& attachment : attachments) {
        plist_array_append_item(list.get(), dictionary(attachment).release());
    }
    char* written = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(list.get(), &written, &length);
    const PlistBytes bytes(written);
    // Attachments are large: no more copies of them at a time than there must be.
    list.reset();
    if (!bytes) {
        throw AttachmentError(AttachmentErrorCase::invalidData);
    }
    return base::Bytes(written, written + length);
}

std::vector<EntryAttachment> EntryAttachment::decode(std::span<const std::uint8_t> data) {
    if (data.empty()) {
        return {};
    }
    try {
        auto attachments = attachmentPlist::read(data);
        validate(attachments);
        return attachments;
    } catch (const AttachmentError&) {
        // Which rule it breaks tells of a file that was chosen, not of what is stored.
        throw AttachmentError(AttachmentErrorCase::invalidData);
    }
}

} // namespace korvex::model
