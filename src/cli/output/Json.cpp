#include "cli/output/Json.h"

#include "cli/output/AttachmentText.h"

#include "base/Text.h"

namespace korvex::cli {

void Json::key(std::string_view name) {
    m_writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size()));
}

void Json::text(std::string_view value) {
    if (base::isValidUtf8(value)) {
        m_writer.String(value.data(), static_cast<rapidjson::SizeType>(value.size()));
    } else {
        const auto repaired = base::repairedUtf8(value);
        m_writer.String(repaired.data(), static_cast<rapidjson::SizeType>(repaired.size()));
    }
}

void Json::board(const model::Board& board) {
    beginObject();
    member("id", board.id());
    member("name", std::string_view(board.name()));
    member("createdAt", board.createdAt());
    member("updatedAt", board.updatedAt());
    member("sortOrder", board.sortOrder());
    flag("isSystem", board.isSystem());
    flag("isArchived", board.isArchived());
    member("icon", board.icon());
    member("iconColor", board.iconColor());
    member("systemIdentifier", board.systemIdentifier());
    member("mergedIntoBoardID", board.mergedIntoBoardID());
    endObject();
}

void Json::entry(const model::Entry& entry, DueLabels& labels) {
    beginObject();
    entryMembers(entry, labels);
    endObject();
}

void Json::entryMembers(const model::Entry& entry, DueLabels& labels) {
    member("id", entry.id());
    member("type", model::rawValue(entry.type()));
    member("content", std::string_view(entry.content()));
    member("createdAt", entry.createdAt());
    member("updatedAt", entry.updatedAt());
    member("sortOrder", entry.sortOrder());
    flag("isCompleted", entry.isCompleted());
    member("completedAt", entry.completedAt());
    member("dueDay", entry.dueDay());
    member("dueDate", entry.dueDate());
    member("dueStartDate", entry.dueStartDate());
    member("reminderDate", entry.reminderDate());
    member("boardID", entry.boardID());
    if (const auto label = labels.label(entry); !label.empty()) {
        member("dueLabel", label);
    }
    // Of one that is deleted they are gone with it.
    if (!entry.isLive()) {
        return;
    }
    if (const auto list = services::attachmentsOf(entry); !list.isEmpty()) {
        key("attachments");
        writeAttachments(*this, list);
    }
}

void Json::boards(std::span<model::Board* const> boards) {
    beginArray();
    for (const auto* each : boards) {
        board(*each);
    }
    endArray();
}

void Json::entries(std::span<model::Entry* const> entries, DueLabels& labels) {
    beginArray();
    for (const auto* each : entries) {
        entry(*each, labels);
    }
    endArray();
}

void Json::member(std::string_view name, std::string_view value) {
    key(name);
    text(value);
}

void Json::member(std::string_view name, std::int64_t value) {
    key(name);
    integer(value);
}

void Json::member(std::string_view name, double value) {
    key(name);
    m_writer.Double(value);
}

void Json::flag(std::string_view name, bool value) {
    key(name);
    m_writer.Bool(value);
}

void Json::member(std::string_view name, const base::Uuid& value) {
    member(name, value.text());
}

void Json::member(std::string_view name, base::Instant value) {
    // A store may hold dates that are none; they read as absent.
    if (value.isValid()) {
        member(name, base::isoText(value));
    }
}

} // namespace korvex::cli
