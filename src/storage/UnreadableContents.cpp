#include "storage/UnreadableContents.h"

#include "base/Digest.h"
#include "base/FileReplacement.h"
#include "model/Entry.h"
#include "model/EntryAttachment.h"
#include "richtext/stored/RichTextSerializer.h"
#include "store/ModelContainer.h"
#include "store/StoreError.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvex::storage {

namespace {

using model::Entry;

/// What the names of the files go on with.
constexpr const char* kAside = ".unreadable-";

template <typename Decode>
bool isReadable(Decode&& decode) {
    try {
        static_cast<void>(decode());
        return true;
    } catch (const store::StoreError&) {
        throw; // that it could not be read now says nothing of it
    } catch (const base::Error&) {
        return false;
    }
}

void keep(const base::Bytes& bytes, const base::Uuid& entry, const std::filesystem::path& store) {
    auto file = store;
    // Named for what is in it: one that a later repair sets aside must not take its place.
    file += kAside + entry.text() + "-" + std::to_string(base::checksum(bytes));
    if (const auto error =
            base::replaceFile(file, {reinterpret_cast<const char*>(bytes.data()), bytes.size()})) {
        store::throwSystemError(error.value());
    }
}

} // namespace

std::vector<UnreadableContent> unreadableContents(store::ModelContext& context,
                                                  base::LogSink& log) {
    std::vector<UnreadableContent> found;
    const richtext::RichTextSerializer serializer(log);
    context.visit<Entry>(
        store::FieldReference{Entry::contentField} == std::string() &&
            store::Condition::isPresent(Entry::richTextDataField),
        [&](const Entry& entry) {
            if (!isReadable([&] { return serializer.decode(*entry.richTextData()); })) {
                found.push_back({entry.id(), RepairKind::unreadableTexts});
            }
        });
    context.visit<Entry>(
        store::Condition::isPresent(Entry::attachmentDataField), [&](const Entry& entry) {
            const auto& stored = entry.attachmentData();
            if (!isReadable([&] { return model::EntryAttachment::decode(stored); })) {
                found.push_back({entry.id(), RepairKind::unreadableAttachments});
            }
        });
    return found;
}

void setAside(const UnreadableContent& content, store::ModelContext& context) {
    auto* const entry = context.find<Entry>(content.entry);
    const auto& file = context.container().configuration().file;
    if (!entry) {
        return; // its row is damaged
    }
    const auto isText = content.kind == RepairKind::unreadableTexts;
    const auto& bytes = isText ? entry->richTextData() : entry->attachmentData();
    if (bytes && !file.empty()) {
        keep(*bytes, content.entry, file);
    }
    if (isText) {
        entry->setRichTextData(std::nullopt);
    } else {
        entry->setAttachmentData(std::nullopt);
    }
}

std::optional<std::string> noticeOnSetAside(const RepairReport& report,
                                            const std::filesystem::path& storeFile) {
    if (!report.repaired.contains(RepairKind::unreadableTexts) &&
        !report.repaired.contains(RepairKind::unreadableAttachments)) {
        return std::nullopt;
    }
    return "Some formatted texts or attachments could not be read any more. What is left of them "
           "was kept beside the store, in files whose names begin with " +
           storeFile.filename().string() + kAside + ".";
}

} // namespace korvex::storage
