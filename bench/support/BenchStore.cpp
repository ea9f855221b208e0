#include "support/BenchStore.h"

#include "model/SchemaVersions.h"

namespace korvex::bench {

std::vector<std::string> bodies(std::size_t count) {
    constexpr std::size_t kBodySize = 300;
    std::vector<std::string> result;
    result.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        std::string body = "Todo " + std::to_string(i) + ":";
        while (body.size() < kBodySize) {
            body += " one more word of it";
        }
        body.resize(kBodySize, '.');
        // No white space at the end: it would be trimmed.
        body.back() = '.';
        result.push_back(std::move(body));
    }
    return result;
}

std::vector<std::string> titles(std::size_t count) {
    std::vector<std::string> result;
    result.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        result.push_back("Call back about order " + std::to_string(i) + " before the weekend");
    }
    return result;
}

OpenStore::OpenStore(const std::filesystem::path& file)
    : m_container(store::ModelContainer::open(model::currentSchema(), {.file = file}, m_log)),
      m_context(*m_container) {
    boards().initializeDefaultBoards(kNow);
}

void makeStore(const std::filesystem::path& file, const std::vector<std::string>& contents) {
    OpenStore store(file);
    if (!contents.empty()) {
        store.entries().createTodos({.contents = contents, .board = store.inbox(), .now = kNow});
    }
    store.container().checkpoint();
}

PlainEntries::PlainEntries(const std::filesystem::path& file, const std::filesystem::path& store)
    : m_database(file) {
    m_database.makeDurable();
    const PlainDatabase pattern(store);
    PlainStatement shape(pattern, "SELECT sql FROM sqlite_schema WHERE tbl_name = 'Entry' "
                                  "AND sql IS NOT NULL");
    while (shape.step()) {
        m_database.run(std::string(shape.text(0)));
    }
    m_insert = std::make_unique<PlainStatement>(
        m_database, "INSERT INTO Entry(version, checksum, id, typeRawValue, content, createdAt, "
                    "updatedAt, sortOrder, isCompleted, board) VALUES(?,?,?,?,?,?,?,?,?,?)");
}

void PlainEntries::insert(const model::EntryFields& fields) {
    m_insert->bind(1, std::int64_t{1});
    m_insert->bind(2, std::int64_t{0x1234567890abcdef});
    m_insert->bind(3, fields.id);
    m_insert->bind(4, std::string_view(fields.typeRawValue));
    m_insert->bind(5, std::string_view(fields.content));
    m_insert->bind(6, fields.createdAt.seconds);
    m_insert->bind(7, fields.updatedAt.seconds);
    m_insert->bind(8, fields.sortOrder);
    m_insert->bind(9, std::int64_t{fields.isCompleted ? 1 : 0});
    m_insert->bind(10, *fields.boardID);
    m_insert->run();
}

model::EntryFields PlainEntries::todo(const std::string& content, std::int64_t sortOrder,
                                      const base::Uuid& board) {
    return {.id = base::Uuid::random(),
            .typeRawValue = "todo",
            .content = content,
            .createdAt = kNow,
            .updatedAt = kNow,
            .sortOrder = sortOrder,
            .boardID = board};
}

std::vector<model::EntryFields> readEntries(const PlainDatabase& database) {
    PlainStatement rows(database,
                        "SELECT id, typeRawValue, content, richTextData, createdAt, updatedAt, "
                        "sortOrder, isCompleted, completedAt, dueDay, dueDate, dueStartDate, "
                        "reminderDate, board FROM Entry");
    std::vector<model::EntryFields> entries;
    const auto optionalDate = [&](int column) {
        return rows.isAbsent(column) ? std::nullopt
                                     : std::optional(base::Instant{rows.real(column)});
    };
    while (rows.step()) {
        auto& entry = entries.emplace_back();
        entry.id = rows.uuid(0);
        entry.typeRawValue = rows.text(1);
        entry.content = rows.text(2);
        if (!rows.isAbsent(3)) {
            const auto bytes = rows.text(3);
            entry.richTextData.emplace(bytes.begin(), bytes.end());
        }
        entry.createdAt = {rows.real(4)};
        entry.updatedAt = {rows.real(5)};
        entry.sortOrder = rows.integer(6);
        entry.isCompleted = rows.integer(7) != 0;
        entry.completedAt = optionalDate(8);
        if (!rows.isAbsent(9)) {
            entry.dueDay = rows.integer(9);
        }
        entry.dueDate = optionalDate(10);
        entry.dueStartDate = optionalDate(11);
        entry.reminderDate = optionalDate(12);
        entry.boardID = rows.uuid(13);
    }
    return entries;
}

} // namespace korvex::bench
