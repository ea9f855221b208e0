#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"
#include "store/Record.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::model {

class Entry;

/// What marks the Inbox, and what it was called before.
inline constexpr std::string_view kInboxIdentifier = "inbox";
inline constexpr std::string_view kLegacyInboxIdentifier = "today";
/// What the name of a system board without an identifier says of it: older stores and backups have
/// none.
std::optional<std::string_view> impliedSystemIdentifier(std::string_view name);

/// The stored fields of a board, in their declared order.
struct BoardFields {
    base::Uuid id;
    std::string name;
    base::Instant createdAt;
    base::Instant updatedAt;
    std::int64_t sortOrder = 0;
    bool isSystem = false;
    bool isArchived = false;
    std::optional<std::string> icon;
    std::optional<std::string> iconColor;
    std::optional<std::string> systemIdentifier;
    std::optional<base::Uuid> mergedIntoBoardID;
};

/// A named list in the sidebar. Validates nothing: `BoardService` is the one that changes it.
class Board final : public store::Record {
public:
    enum Field : std::size_t {
        idField,
        nameField,
        createdAtField,
        updatedAtField,
        sortOrderField,
        isSystemField,
        isArchivedField,
        iconField,
        iconColorField,
        systemIdentifierField,
        mergedIntoBoardIDField,
    };
    static const store::RecordType& recordType();

    Board();
    /// A board not yet in a context, with these fields.
    explicit Board(BoardFields fields);

    const std::string& name() const { return m_fields.name; }
    base::Instant createdAt() const { return m_fields.createdAt; }
    base::Instant updatedAt() const { return m_fields.updatedAt; }
    std::int64_t sortOrder() const { return m_fields.sortOrder; }
    bool isSystem() const { return m_fields.isSystem; }
    bool isArchived() const { return m_fields.isArchived; }
    const std::optional<std::string>& icon() const { return m_fields.icon; }
    const std::optional<std::string>& iconColor() const { return m_fields.iconColor; }
    const std::optional<std::string>& systemIdentifier() const { return m_fields.systemIdentifier; }
    const std::optional<base::Uuid>& mergedIntoBoardID() const {
        return m_fields.mergedIntoBoardID;
    }
    const BoardFields& fields() const { return m_fields; }

    void setName(std::string name);
    void setCreatedAt(base::Instant createdAt);
    void setUpdatedAt(base::Instant updatedAt);
    void setSortOrder(std::int64_t sortOrder);
    void setIsSystem(bool isSystem);
    void setIsArchived(bool isArchived);
    void setIcon(std::optional<std::string> icon);
    void setIconColor(std::optional<std::string> iconColor);
    void setSystemIdentifier(std::optional<std::string> identifier);
    void setMergedIntoBoardID(std::optional<base::Uuid> id);

    /// The board's entries in no particular order; read from the store when first asked for.
    std::vector<Entry*> entries() const;
    bool entriesAreLoaded() const { return ownedIsLoaded(); }
    /// The stored symbol when it names an icon, else the default's.
    std::string iconSystemName() const;
    /// What the confirmation says before the board is deleted.
    std::string deletionMessage() const;

private:
    BoardFields m_fields;
};

} // namespace korvex::model
