#include "app/QuickEntryDraft.h"

#include "app/DraftJson.h"
#include "base/FileReplacement.h"
#include "base/SmallFile.h"
#include "base/Text.h"

#include <sys/stat.h>

#include <span>

namespace korvex::app {

namespace fs = std::filesystem;

namespace {

constexpr int kFormVersion = 1;
constexpr const char* kName = "QuickEntry.json";
constexpr const char* kAttachmentsName = "QuickEntry.files";
constexpr std::size_t kMaximumBytes = 8 * 1024 * 1024;
/// Identifiers, names and the list's own form come on top of the contents.
constexpr std::size_t kMaximumAttachmentsBytes =
    model::EntryAttachment::kMaximumTotalBytes + 64 * 1024;

struct Date {
    const char* key;
    std::optional<base::Instant> model::TodoSchedule::*date;
};
constexpr Date kDates[] = {{"dueDate", &model::TodoSchedule::dueDate},
                           {"dueStartDate", &model::TodoSchedule::dueStartDate},
                           {"reminderDate", &model::TodoSchedule::reminderDate}};

struct Dated {
    QuickEntryDraft draft;
    base::Instant typedAt;
};

std::string encoded(const QuickEntryDraft& draft, base::Instant now) {
    DraftWriter writer(kFormVersion);
    writer.text("type", rawValue(draft.type));
    writer.instant("typedAt", now);
    writer.text("content", draft.content);
    if (draft.schedule.dueDay) {
        writer.integer("dueDay", *draft.schedule.dueDay);
    }
    for (const auto& [key, date] : kDates) {
        if (const auto& value = draft.schedule.*date; value && value->isValid()) {
            writer.instant(key, *value);
        }
    }
    if (draft.heading) {
        writer.integer("heading", static_cast<int>(*draft.heading));
    }
    return writer.finish();
}

std::optional<richtext::HeadingLevel> headingLevel(std::optional<std::int64_t> number) {
    for (const auto level : richtext::kHeadingLevels) {
        if (number == static_cast<int>(level)) {
            return level;
        }
    }
    return std::nullopt;
}

std::optional<Dated> decoded(const std::string& contents) {
    const auto members = DraftMembers::of(contents, kFormVersion);
    const auto type = members ? members->text("type") : std::nullopt;
    const auto content = members ? members->text("content") : std::nullopt;
    const auto typedAt = members ? members->instant("typedAt") : std::nullopt;
    if (!type || !content || !typedAt) {
        return std::nullopt;
    }
    Dated dated{.draft = {.type = model::entryType(*type),
                          .content = std::string(*content),
                          .schedule = {.dueDay = members->integer("dueDay")},
                          .heading = headingLevel(members->integer("heading")),
                          .attachments = {}},
                .typedAt = *typedAt};
    for (const auto& [key, date] : kDates) {
        dated.draft.schedule.*date = members->instant(key);
    }
    return dated;
}

/// None where they cannot be read: the words are worth having without them.
std::vector<model::EntryAttachment> attachmentsIn(const fs::path& folder) {
    const auto contents = base::readSmallFile(folder / kAttachmentsName, kMaximumAttachmentsBytes);
    if (!contents) {
        return {};
    }
    try {
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(contents->data());
        return model::EntryAttachment::decode(std::span(bytes, contents->size()));
    } catch (const model::AttachmentError&) {
        return {};
    }
}

/// The next draft must not take its place.
std::error_code keepAside(const fs::path& folder) {
    const auto kept = "QuickEntry-" + base::Uuid::random().text();
    std::error_code error;
    if (const auto attachments = folder / kAttachmentsName; fs::exists(attachments, error)) {
        error = base::moveToNew(attachments, folder / (kept + ".files"));
    }
    return error ? error : base::moveToNew(folder / kName, folder / (kept + ".unreadable"));
}

std::vector<base::Uuid> idsOf(const std::vector<model::EntryAttachment>& attachments) {
    std::vector<base::Uuid> ids;
    ids.reserve(attachments.size());
    for (const auto& each : attachments) {
        ids.push_back(each.id);
    }
    return ids;
}

} // namespace

bool QuickEntryDraft::isEmpty() const {
    return base::trimmed(content).empty() && schedule.isEmpty() && attachments.empty();
}

bool QuickEntryDraftFile::isIn(const fs::path& folder) {
    std::error_code ignored;
    return fs::exists(folder / kName, ignored);
}

std::optional<QuickEntryDraft> QuickEntryDraftFile::read() {
    std::optional<Dated> newest;
    for (const auto& folder : m_folders) {
        const auto file = folder / kName;
        if (!isIn(folder) || m_claims.claim(file) == FileClaims::Claim::theirs) {
            continue;
        }
        const auto contents = base::readSmallFile(file, kMaximumBytes);
        auto found = contents ? decoded(*contents) : std::nullopt;
        if (!found) {
            static_cast<void>(keepAside(folder)); // else it is tried before the next one is written
            continue;
        }
        found->draft.attachments = attachmentsIn(folder);
        m_attachments[folder] = idsOf(found->draft.attachments);
        if (!newest || newest->typedAt < found->typedAt) {
            newest = std::move(found);
        }
    }
    return newest ? std::optional(std::move(newest->draft)) : std::nullopt;
}

std::error_code QuickEntryDraftFile::write(const QuickEntryDraft& draft, base::Instant now) {
    if (draft.isEmpty()) {
        remove();
        return {};
    }
    const auto error = writeSomewhere(draft, now);
    if (error && !draft.attachments.empty()) {
        auto words = draft;
        words.attachments.clear();
        static_cast<void>(writeSomewhere(words, now));
    }
    return error;
}

std::error_code QuickEntryDraftFile::writeSomewhere(const QuickEntryDraft& draft,
                                                    base::Instant now) {
    std::error_code first;
    for (const auto& folder : m_folders) {
        const auto error = writeIn(folder, draft, now);
        if (!error) {
            for (const auto& other : m_folders) {
                if (other != folder) {
                    removeFrom(other); // what it said before
                }
            }
            return {};
        }
        first = first ? first : error;
    }
    return first;
}

std::error_code QuickEntryDraftFile::writeIn(const fs::path& folder, const QuickEntryDraft& draft,
                                             base::Instant now) {
    const auto contents = encoded(draft, now);
    if (contents.size() > kMaximumBytes) {
        return std::make_error_code(std::errc::file_too_large);
    }
    // Where that fails, so does what follows.
    static_cast<void>(base::makeFolders(folder, S_IRWXU));
    const auto file = folder / kName;
    if (m_claims.claim(file) == FileClaims::Claim::theirs) { // before others can see it
        return std::make_error_code(std::errc::device_or_resource_busy);
    }
    if (isNotOurs(folder)) {
        if (const auto error = keepAside(folder)) {
            m_claims.release(file); // others can still offer it
            return error;
        }
    }
    // A program that is killed between the two leaves words, and of the attachments what it had.
    auto error = writeAttachments(folder, draft);
    error = error ? error : base::replaceFile(file, contents);
    if (error && !isIn(folder)) {
        removeFrom(folder); // no claim without a file
    }
    return error;
}

bool QuickEntryDraftFile::isNotOurs(const fs::path& folder) const {
    return !m_attachments.contains(folder) && isIn(folder);
}

std::error_code QuickEntryDraftFile::writeAttachments(const fs::path& folder,
                                                      const QuickEntryDraft& draft) {
    const auto ids = idsOf(draft.attachments);
    if (const auto known = m_attachments.find(folder);
        known != m_attachments.end() && known->second == ids) {
        return {}; // megabytes, which do not change with each word
    }
    std::error_code error;
    if (draft.attachments.empty()) {
        fs::remove(folder / kAttachmentsName, error);
    } else {
        const auto bytes = model::EntryAttachment::encode(draft.attachments);
        error = base::replaceFile(folder / kAttachmentsName,
                                  {reinterpret_cast<const char*>(bytes->data()), bytes->size()});
    }
    if (!error) {
        m_attachments[folder] = ids;
    }
    return error;
}

void QuickEntryDraftFile::remove() {
    for (const auto& folder : m_folders) {
        removeFrom(folder);
    }
}

void QuickEntryDraftFile::removeFrom(const fs::path& folder) {
    const auto file = folder / kName;
    const auto attachments = folder / kAttachmentsName;
    std::error_code error;
    if (fs::exists(file, error) || fs::exists(attachments, error)) {
        if (m_claims.claim(file) == FileClaims::Claim::theirs) {
            return;
        }
        if (isNotOurs(folder)) {
            m_claims.release(file);
            return;
        }
        // The words first: attachments alone are no draft.
        fs::remove(file, error);
        fs::remove(attachments, error);
    }
    m_attachments.erase(folder);
    m_claims.release(file);
    // An empty folder tells nobody anything; to one with drafts nothing happens.
    fs::remove(folder, error);
}

} // namespace korvex::app
