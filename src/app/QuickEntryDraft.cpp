#include "app/QuickEntryDraft.h"

#include "app/DraftJson.h"
#include "base/FileReplacement.h"
#include "base/SmallFile.h"
#include "base/Text.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <span>
#include <utility>

namespace korvex::app {

namespace fs = std::filesystem;

namespace {

using model::EntryAttachment;

constexpr int kFormVersion = 1;
constexpr const char* kName = "QuickEntry.json";
constexpr const char* kAttachmentsName = "QuickEntry.files";
constexpr std::size_t kMaximumBytes = 8 * 1024 * 1024;
/// Identifiers, names and the list's own form come on top of the contents.
constexpr std::size_t kMaximumAttachmentsBytes = EntryAttachment::kMaximumTotalBytes + 64 * 1024;

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
    /// Where it stands.
    fs::path folder = {};
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
std::vector<EntryAttachment> attachmentsIn(const fs::path& folder) {
    const auto contents = base::readSmallFile(folder / kAttachmentsName, kMaximumAttachmentsBytes);
    if (!contents) {
        return {};
    }
    try {
        const auto* const bytes = reinterpret_cast<const std::uint8_t*>(contents->data());
        return EntryAttachment::decode(std::span(bytes, contents->size()));
    } catch (const model::AttachmentError&) {
        return {};
    }
}

fs::path nameAside() {
    return "QuickEntry-" + base::Uuid::random().text();
}

std::error_code keepFilesAside(const fs::path& folder, const fs::path& name) {
    std::error_code error;
    if (const auto attachments = folder / kAttachmentsName; fs::exists(attachments, error)) {
        error = base::moveToNew(attachments, folder / (name.native() + ".files"));
    }
    return error;
}

/// The next draft must not take its place.
void keepAside(const fs::path& folder) {
    const auto name = nameAside();
    if (!keepFilesAside(folder, name)) {
        static_cast<void>( // else it is tried again before one is written
            base::moveToNew(folder / kName, folder / (name.native() + ".unreadable")));
    }
}

} // namespace

bool QuickEntryDraft::isEmpty() const {
    return base::trimmed(content).empty() && schedule.isEmpty() && attachments.empty();
}

std::vector<base::Uuid> QuickEntryDraft::attachmentIDs() const {
    std::vector<base::Uuid> ids;
    ids.reserve(attachments.size());
    for (const auto& each : attachments) {
        ids.push_back(each.id);
    }
    return ids;
}

bool QuickEntryDraft::hasWordsOf(const QuickEntryDraft& other) const {
    if (content.starts_with(base::trimmed(other.content))) {
        return true; // an older state of the same words is no second text
    }
    const auto mine = base::filledLines(content);
    const auto theirs = base::filledLines(other.content);
    return std::all_of(theirs.begin(), theirs.end(), [&](const auto& line) {
        return std::find(mine.begin(), mine.end(), line) != mine.end();
    });
}

bool QuickEntryDraft::add(QuickEntryDraft other) {
    if (isEmpty()) {
        *this = std::move(other);
        return true;
    }
    if (!hasWordsOf(other)) {
        content = base::trimmed(content).empty() ? std::move(other.content)
                                                 : content + "\n" + other.content;
    }
    if (schedule.isEmpty()) {
        schedule = other.schedule;
    }
    if (!heading) {
        heading = other.heading;
    }
    auto all = attachments;
    for (auto& each : other.attachments) {
        if (std::none_of(attachments.begin(), attachments.end(),
                         [&](const auto& mine) { return mine.id == each.id; })) {
            all.push_back(std::move(each));
        }
    }
    try {
        EntryAttachment::validate(all);
        attachments = std::move(all);
        return true;
    } catch (const model::AttachmentError&) {
        return false;
    }
}

bool QuickEntryDraftFile::isIn(const fs::path& folder) {
    std::error_code ignored;
    return fs::exists(folder / kName, ignored);
}

std::optional<QuickEntryDraft> QuickEntryDraftFile::read() {
    m_attachments.clear();
    return readLeft({});
}

std::optional<QuickEntryDraft> QuickEntryDraftFile::readLeft(const QuickEntryDraft& standing) {
    std::vector<Dated> left;
    for (const auto& folder : m_folders) {
        const auto file = folder / kName;
        if (!isNotOurs(folder) || m_claims.claim(file) == FileClaims::Claim::theirs) {
            continue;
        }
        const auto contents = base::readSmallFile(file, kMaximumBytes);
        auto found = contents ? decoded(*contents) : std::nullopt;
        if (!found) {
            // What cannot be read now may be a good one.
            std::error_code error;
            if (contents || (fs::file_size(file, error) > kMaximumBytes && !error)) {
                keepAside(folder);
            }
            m_claims.release(file);
            continue;
        }
        found->draft.attachments = attachmentsIn(folder);
        found->folder = folder;
        m_attachments[folder] = found->draft.attachmentIDs();
        left.push_back(*std::move(found));
    }
    if (left.empty()) {
        return std::nullopt;
    }
    std::sort(left.begin(), left.end(),
              [](const Dated& one, const Dated& other) { return other.typedAt < one.typedAt; });
    auto all = standing;
    for (auto& each : left) {
        if (!all.add(std::move(each.draft)) && !keepFilesAside(each.folder, nameAside())) {
            m_attachments[each.folder].clear();
        }
    }
    return all;
}

std::error_code QuickEntryDraftFile::write(const QuickEntryDraft& draft, base::Instant now,
                                           Files files) {
    m_areWordsKept = true;
    if (draft.isEmpty()) {
        remove();
        return {};
    }
    const auto error = writeSomewhere(draft, now, files);
    m_areWordsKept = !error;
    if (error && !draft.attachments.empty()) {
        m_areWordsKept = files == Files::written && !writeSomewhere(draft, now, Files::left);
        if (!m_areWordsKept) { // nobody has the words elsewhere
            auto words = draft;
            words.attachments.clear();
            m_areWordsKept = !writeSomewhere(words, now, Files::written);
        }
    }
    return error;
}

std::error_code QuickEntryDraftFile::writeSomewhere(const QuickEntryDraft& draft, base::Instant now,
                                                    Files files) {
    std::error_code first;
    for (const auto& folder : m_folders) {
        const auto error = writeIn(folder, draft, now, files);
        if (!error) {
            for (const auto& other : m_folders) {
                // What it said before. The attachments may stand nowhere else.
                if (other != folder && (files == Files::written || !hasAttachments(other))) {
                    removeFrom(other);
                }
            }
            return {};
        }
        first = first ? first : error;
    }
    return first;
}

std::error_code QuickEntryDraftFile::writeIn(const fs::path& folder, const QuickEntryDraft& draft,
                                             base::Instant now, Files files) {
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
        m_claims.release(file); // others can still offer it
        return std::make_error_code(std::errc::device_or_resource_busy);
    }
    // A program that is killed between the two leaves words, and of the attachments what it had.
    std::error_code error;
    if (files == Files::written) {
        error = writeAttachments(folder, draft);
    } else if (!m_attachments.contains(folder)) {
        error = writeAttachments(folder, {}); // what stands there is of no draft
    }
    error = error ? error : base::replaceFile(file, contents);
    if (error && !isIn(folder)) {
        removeFrom(folder); // no claim without a file
    }
    return error;
}

bool QuickEntryDraftFile::isNotOurs(const fs::path& folder) const {
    return !m_attachments.contains(folder) && isIn(folder);
}

bool QuickEntryDraftFile::hasAttachments(const fs::path& folder) const {
    const auto known = m_attachments.find(folder);
    return known != m_attachments.end() && !known->second.empty();
}

std::error_code QuickEntryDraftFile::writeAttachments(const fs::path& folder,
                                                      const QuickEntryDraft& draft) {
    const auto ids = draft.attachmentIDs();
    if (const auto known = m_attachments.find(folder);
        known != m_attachments.end() && known->second == ids) {
        return {}; // megabytes, which do not change with each word
    }
    std::error_code error;
    if (ids.empty()) {
        fs::remove(folder / kAttachmentsName, error);
    } else {
        const auto bytes = EntryAttachment::encode(draft.attachments);
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
    // An empty folder tells nobody anything; to one with drafts nothing happens, nor to what
    // somebody else has put in its place.
    static_cast<void>(::rmdir(folder.c_str()));
}

} // namespace korvex::app
