#include "app/DraftFolder.h"

#include "app/DraftJson.h"
#include "app/QuickEntryDraft.h"
#include "app/StoreLocation.h"
#include "base/Base64.h"
#include "base/FileReplacement.h"
#include "base/SmallFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

namespace korvex::app {

namespace fs = std::filesystem;

namespace {

constexpr int kFormVersion = 1;
constexpr const char* kExtension = ".draft";

std::string encoded(const Draft& draft) {
    DraftWriter writer(kFormVersion);
    writer.text("type", rawValue(draft.type));
    writer.text("board", draft.board.text());
    if (draft.edited) {
        writer.text("entry", draft.edited->entry.text());
        writer.instant("entryUpdatedAt", draft.edited->updatedAt);
    }
    if (draft.after) {
        writer.text("after", draft.after->text());
    }
    writer.instant("typedAt", draft.typedAt);
    writer.text("content", draft.content);
    if (draft.richTextData) {
        writer.text("richTextData", base::base64(*draft.richTextData));
    }
    return writer.finish();
}

std::optional<Draft> decoded(const base::Uuid& id, const std::string& contents) {
    const auto members = DraftMembers::of(contents, kFormVersion);
    if (!members) {
        return std::nullopt;
    }
    const auto type = members->text("type");
    const auto board = members->id("board");
    const auto typedAt = members->instant("typedAt");
    const auto content = members->text("content");
    if (!type || !board || !typedAt || !content) {
        return std::nullopt;
    }
    Draft draft{.id = id,
                .type = model::entryType(*type),
                .board = *board,
                .edited = {},
                .after = members->id("after"),
                .typedAt = *typedAt,
                .content = std::string(*content),
                .richTextData = {}};
    const auto entry = members->id("entry");
    const auto updatedAt = members->instant("entryUpdatedAt");
    if (entry && updatedAt) {
        draft.edited = {*entry, *updatedAt};
    }
    if (const auto data = members->text("richTextData")) {
        draft.richTextData = base::bytesOfBase64(*data);
    }
    return draft;
}

std::vector<fs::path> filesIn(const fs::path& folder, std::string_view extension) {
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator each(folder, error), end; !error && each != end;
         each.increment(error)) {
        if (each->path().extension() == extension) {
            files.push_back(each->path());
        }
    }
    return files;
}

fs::path fileOf(const fs::path& folder, const base::Uuid& id) {
    return folder / (id.text() + kExtension);
}

} // namespace

fs::path DraftFolder::beside(const fs::path& storeFile) {
    return storeFile.parent_path() / "Drafts";
}

bool DraftFolder::areIn(const fs::path& folder) {
    return !filesIn(folder, kExtension).empty() || QuickEntryDraftFile::isIn(folder);
}

fs::path DraftFolder::in(const fs::path& stateFolder, const fs::path& storeFile) {
    return stateFolder / "korvex" / "drafts" / storeMark(storeFile);
}

std::error_code DraftFolder::write(const Draft& draft) {
    auto contents = encoded(draft);
    if (contents.size() > kMaximumFileBytes) {
        auto plain = draft;
        plain.richTextData.reset();
        contents = encoded(plain);
    }
    std::error_code first;
    for (const auto& folder : m_folders) {
        const auto error = writeIn(folder, draft.id, contents);
        if (!error) {
            for (const auto& other : m_folders) {
                if (other != folder) {
                    removeFrom(other, draft.id); // what it said before
                }
            }
            return {};
        }
        first = first ? first : error;
    }
    return first;
}

std::error_code DraftFolder::writeIn(const fs::path& folder, const base::Uuid& id,
                                     std::string_view contents) {
    // Where that fails, so does what follows.
    static_cast<void>(base::makeFolders(folder, S_IRWXU));
    const auto file = fileOf(folder, id);
    m_claims.claim(file); // before others can see it
    const auto failure = base::replaceFile(file, contents);
    std::error_code error;
    if (failure && !fs::exists(file, error)) {
        removeFrom(folder, id); // no claim without a file
    }
    return failure;
}

void DraftFolder::remove(const base::Uuid& id) {
    for (const auto& folder : m_folders) {
        removeFrom(folder, id);
    }
}

void DraftFolder::removeFrom(const fs::path& folder, const base::Uuid& id) {
    std::error_code error;
    const auto file = fileOf(folder, id);
    fs::remove(file, error);
    release(file);
}

void DraftFolder::release(const fs::path& file) {
    m_claims.release(file);
    // An empty folder tells nobody anything; to one with drafts nothing happens, nor to what
    // somebody else has put in its place.
    static_cast<void>(::rmdir(file.parent_path().c_str()));
}

DraftFolder::Found DraftFolder::find() {
    Found found;
    for (const auto& folder : m_folders) {
        findIn(folder, found);
    }
    auto& drafts = found.drafts;
    std::stable_sort(drafts.begin(), drafts.end(), [](const Draft& left, const Draft& right) {
        return left.typedAt < right.typedAt;
    });
    for (auto each = drafts.begin(); each != drafts.end();) {
        const auto isOlder = std::any_of(each + 1, drafts.end(),
                                         [&](const Draft& newer) { return newer.id == each->id; });
        each = isOlder ? drafts.erase(each) : each + 1;
    }
    return found;
}

void DraftFolder::findIn(const fs::path& folder, Found& found) {
    std::error_code error;
    for (auto file : filesIn(folder, FileClaims::kExtension)) {
        file.replace_extension(kExtension);
        if (!fs::exists(file, error) && m_claims.claim(file) == FileClaims::Claim::ours) {
            release(file); // a program was killed before it wrote
        }
    }
    // Files of other names are what a killed program was writing.
    for (const auto& file : filesIn(folder, kExtension)) {
        const auto id = base::Uuid::parse(file.stem().string());
        if (id && m_claims.claim(file) == FileClaims::Claim::theirs) {
            continue;
        }
        const auto contents = id ? base::readSmallFile(file, kMaximumFileBytes) : std::nullopt;
        if (auto draft = contents ? decoded(*id, *contents) : std::nullopt) {
            found.drafts.push_back(std::move(*draft));
            continue;
        }
        m_claims.release(file);
        // One that has just been stored by who had it is gone.
        if (fs::exists(file, error)) {
            found.unreadable.push_back(file);
        }
    }
}

} // namespace korvex::app
