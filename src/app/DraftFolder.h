#pragma once

#include "app/FileClaims.h"
#include "base/Bytes.h"
#include "base/Instant.h"
#include "base/Uuid.h"
#include "model/EntryType.h"

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace korvex::app {

/// What was typed into one editor and could not be stored.
struct Draft {
    /// Names the editor that it was typed in, not an entry.
    base::Uuid id;
    model::EntryType type = model::EntryType::todo;
    base::Uuid board;
    /// The stored entry whose text this is to become, and when that was changed last; absent for a
    /// new entry.
    struct Edited {
        base::Uuid entry;
        base::Instant updatedAt;
        bool operator==(const Edited&) const = default;
    };
    std::optional<Edited> edited;
    /// What a new one is to stand behind, also where the edited one is gone; absent: nothing.
    std::optional<base::Uuid> after;
    base::Instant typedAt;
    /// As plain text, UTF-8.
    std::string content;
    /// As a text entry keeps it; absent for a todo, and where formats could not be written.
    std::optional<base::Bytes> richTextData;

    bool operator==(const Draft&) const = default;
};

/// The drafts of a store, a small file each (docs/formats/drafts.md), beside it or, where that disk
/// takes nothing, in another place. Nothing here looks into the store: drafts are written just
/// because that could not be. What this object writes or finds belongs to its process until it
/// ends: no other one finds it. Main thread.
class DraftFolder {
public:
    /// No file holds more; what a program does not write it does not read either.
    static constexpr std::size_t kMaximumFileBytes = 8 * 1024 * 1024;

    /// Nothing is created before the first draft.
    /// Each folder is tried when those before it take nothing.
    explicit DraftFolder(std::vector<std::filesystem::path> folders)
        : m_folders(std::move(folders)) {}

    /// In which drafts are looked for and written, in this order.
    const std::vector<std::filesystem::path>& folders() const { return m_folders; }

    /// The folder for the drafts of a store file.
    static std::filesystem::path beside(const std::filesystem::path& storeFile);
    /// Whether there are any in that folder, be they such as cannot be read, or Quick Entry's.
    static bool areIn(const std::filesystem::path& folder);
    /// The one for them in the folder for the state of programs.
    static std::filesystem::path in(const std::filesystem::path& stateFolder,
                                    const std::filesystem::path& storeFile);

    /// All or nothing, and on a disk when it returns; else the first folder's error. Formats that
    /// leave no room for the words are left out.
    [[nodiscard]] std::error_code write(const Draft& draft);
    /// Nothing happens when it is not there.
    void remove(const base::Uuid& id);

    struct Found {
        /// In the order in which they were typed; of one that stands in several folders the newest.
        std::vector<Draft> drafts;
        /// Files that are none, or of a newer form. They stay as they are.
        std::vector<std::filesystem::path> unreadable;
    };
    /// Those of other living processes are left out.
    Found find();

private:
    std::error_code writeIn(const std::filesystem::path& folder, const base::Uuid& id,
                            std::string_view contents);
    void removeFrom(const std::filesystem::path& folder, const base::Uuid& id);
    void release(const std::filesystem::path& file);
    void findIn(const std::filesystem::path& folder, Found& found);

    std::vector<std::filesystem::path> m_folders;
    FileClaims m_claims;
};

} // namespace korvex::app
