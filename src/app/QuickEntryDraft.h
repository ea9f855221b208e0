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
    std::vector<base::Uuid> attachmentIDs() const;
    /// Puts another one's words behind its own, unless it has them already, and the files to its
    /// own, takes its schedule and heading where it has none itself; into an empty one, all.
    /// False where the files have no room: then it has the words only.
    bool add(QuickEntryDraft other);

private:
    bool hasWordsOf(const QuickEntryDraft& other) const;
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

    /// What is there, whoever wrote it, but for who lives and has it. What is none, or of a newer
    /// form, is kept under another name.
    std::optional<QuickEntryDraft> read();
    /// The same of what this object has neither read nor written, as programs leave it that have
    /// ended since: added to what stands already. Absent where there is nothing.
    std::optional<QuickEntryDraft> readLeft(const QuickEntryDraft& standing);

    /// What becomes of the attachments: they are written where they are others, or what stands on
    /// the disk is left as it is.
    enum class Files { written, left };
    /// On a disk when it returns; an empty one leaves no files. Where there is no room for all of
    /// it, the words are kept with the attachments that stand there already, or without any, and
    /// the error is returned all the same. Where another program has left something that was not
    /// read, nothing is written.
    [[nodiscard]] std::error_code write(const QuickEntryDraft& draft, base::Instant now,
                                        Files files = Files::written);
    /// Whether the last `write` has kept the words at least.
    bool areWordsKept() const { return m_areWordsKept; }
    void remove();

    /// Whether that folder has one.
    static bool isIn(const std::filesystem::path& folder);

private:
    std::error_code writeSomewhere(const QuickEntryDraft& draft, base::Instant now, Files files);
    std::error_code writeIn(const std::filesystem::path& folder, const QuickEntryDraft& draft,
                            base::Instant now, Files files);
    std::error_code writeAttachments(const std::filesystem::path& folder,
                                     const QuickEntryDraft& draft);
    bool hasAttachments(const std::filesystem::path& folder) const;
    void removeFrom(const std::filesystem::path& folder);
    /// Whether there is one that this object never read: who had it has ended since.
    bool isNotOurs(const std::filesystem::path& folder) const;

    std::vector<std::filesystem::path> m_folders;
    FileClaims m_claims;
    /// Which attachments stand in a folder, as far as this object has read or written them.
    std::map<std::filesystem::path, std::vector<base::Uuid>> m_attachments;
    bool m_areWordsKept = true;
};

} // namespace korvex::app
