#pragma once

#include "app/FileClaims.h"
#include "base/Instant.h"
#include "base/Uuid.h"
#include "model/EntryAttachment.h"
#include "model/EntryType.h"
#include "model/TodoSchedule.h"
#include "richtext/text/HeadingLevel.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace korvex::app {

/// What stands in Quick Entry and was not captured yet.
struct QuickEntryDraft {
    model::EntryType type = model::EntryType::todo;
    /// UTF-8.
    std::string content;
    model::TodoSchedule schedule;
    std::optional<richtext::HeadingLevel> heading;
    std::vector<model::EntryAttachment> attachments;

    bool operator==(const QuickEntryDraft&) const = default;

    /// Whether there is nothing in it that anybody would miss.
    bool isEmpty() const;
};

/// The one draft of Quick Entry (docs/formats/drafts.md), in the folders of a store's other drafts:
/// each is tried when those before it take nothing. Its files belong to the process that has the
/// object once it has read or written them; what else is there is neither removed nor overwritten.
/// Main thread.
class QuickEntryDraftFile {
public:
    /// Nothing is created before the first draft.
    explicit QuickEntryDraftFile(std::vector<std::filesystem::path> folders)
        : m_folders(std::move(folders)) {}

    /// The newest one that is there. What is none, or of a newer form, is kept under another name.
    std::optional<QuickEntryDraft> read();

    /// On a disk when it returns; an empty one leaves no files. Where there is room for the words
    /// only, they are kept without the attachments, and the error is returned all the same.
    [[nodiscard]] std::error_code write(const QuickEntryDraft& draft, base::Instant now);
    void remove();

    /// Whether that folder has one.
    static bool isIn(const std::filesystem::path& folder);

private:
    std::error_code writeSomewhere(const QuickEntryDraft& draft, base::Instant now);
    std::error_code writeIn(const std::filesystem::path& folder, const QuickEntryDraft& draft,
                            base::Instant now);
    std::error_code writeAttachments(const std::filesystem::path& folder,
                                     const QuickEntryDraft& draft);
    void removeFrom(const std::filesystem::path& folder);
    /// Whether there is one that this object never read: who had it has ended since.
    bool isNotOurs(const std::filesystem::path& folder) const;

    std::vector<std::filesystem::path> m_folders;
    FileClaims m_claims;
    /// Which attachments stand in a folder, as far as this object has read or written them.
    std::map<std::filesystem::path, std::vector<base::Uuid>> m_attachments;
};

} // namespace korvex::app
