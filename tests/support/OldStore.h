#pragma once

#include "base/Digest.h"
#include "base/Uuid.h"
#include "store/Value.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace korvex::tests {

/// Stores as older versions have written them, made of nothing but the versions' field lists and
/// the form of the file, so that they say what an upgrade has to cope with.
class OldStore {
public:
    struct Version {
        const char* name;
        int number;
        std::vector<std::string> boardColumns;
        std::vector<std::string> entryColumns;
        bool hasAttachments;
    };
    static const std::vector<Version>& versions() {
        static const auto all = makeVersions();
        return all;
    }
    static const Version& version(const std::string& name) {
        return *std::find_if(versions().begin(), versions().end(),
                             [&](const Version& each) { return each.name == name; });
    }

    /// A row by the names of its columns; one that is not named is absent.
    using Row = std::map<std::string, store::Value>;

    /// What every version knows of a board, and more or other columns.
    static Row board(const std::string& name, Row more = {}) {
        more.merge(Row{{"id", base::Uuid::random()},
                       {"name", name},
                       {"createdAt", 1.0},
                       {"updatedAt", 1.0},
                       {"sortOrder", std::int64_t{0}},
                       {"isSystem", std::int64_t{1}},
                       {"isArchived", std::int64_t{0}}});
        return more;
    }
    /// The same of an entry on the board; `type` is "todo" or "text".
    static Row entry(const Row& board, const std::string& type, std::string content,
                     Row more = {}) {
        more.merge(Row{{"id", base::Uuid::random()},
                       {"type", type},
                       {"typeRawValue", type},
                       {"content", std::move(content)},
                       {"createdAt", 1.0},
                       {"updatedAt", 1.0},
                       {"sortOrder", std::int64_t{0}},
                       {"isCompleted", std::int64_t{0}},
                       {"board", board.at("id")}});
        return more;
    }

    OldStore(const std::filesystem::path& file, const Version& version)
        : m_version(version),
          m_database(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE) {
        m_database.exec("PRAGMA journal_mode = WAL");
        m_database.exec("BEGIN");
        m_database.exec("PRAGMA application_id = " + std::to_string(0x4B565831));
        m_database.exec("PRAGMA user_version = " + std::to_string(version.number));
        m_database.exec("CREATE TABLE StoreInfo(storeID BLOB NOT NULL)");
        m_database.exec("INSERT INTO StoreInfo VALUES(randomblob(16))");
        m_database.exec("CREATE TABLE ChangeLog(revision INTEGER PRIMARY KEY, changes BLOB)");
        m_database.exec("INSERT INTO ChangeLog VALUES(7, NULL)");
        createTable("Board", version.boardColumns);
        createTable("Entry", version.entryColumns);
        m_database.exec("CREATE INDEX Entry_board ON Entry(board)");
        if (version.hasAttachments) {
            m_database.exec("CREATE TABLE \"Entry.attachmentData\"(owner INTEGER PRIMARY KEY, "
                            "checksum INTEGER NOT NULL, bytes BLOB NOT NULL)");
        }
    }
    ~OldStore() { m_database.exec("COMMIT"); }
    OldStore(const OldStore&) = delete;
    OldStore& operator=(const OldStore&) = delete;

    void addBoard(const Row& row) { insert("Board", m_version.boardColumns, row); }
    void addEntry(const Row& row) { insert("Entry", m_version.entryColumns, row); }
    /// To the entry that was added last, where the version has attachments.
    void attach(const base::Bytes& bytes) {
        if (m_version.hasAttachments) {
            const auto entry = m_database.getLastInsertRowid();
            SQLite::Statement insert(m_database,
                                     "INSERT INTO \"Entry.attachmentData\" VALUES(?, ?, ?)");
            insert.bind(1, entry);
            insert.bind(2, static_cast<std::int64_t>(base::checksum(bytes)));
            insert.bind(3, bytes.data(), static_cast<int>(bytes.size()));
            insert.exec();
        }
    }

private:
    using Columns = std::vector<std::string>;

    static std::vector<Version> makeVersions() {
        const auto with = [](Columns columns, const Columns& more) {
            columns.insert(columns.end(), more.begin(), more.end());
            return columns;
        };
        const Columns boardV10{"id", "name", "createdAt", "updatedAt", "sortOrder", "isSystem"};
        const auto boardV11 = with(boardV10, {"systemIdentifier", "mergedIntoBoardID"});
        const auto boardV14 = with(boardV11, {"icon"});
        const auto boardV15 = with(boardV14, {"iconColor"});
        const auto boardV16 = with(boardV15, {"isArchived"});
        const Columns entryV10{"id",        "type",      "content",     "richTextData", "createdAt",
                               "updatedAt", "sortOrder", "isCompleted", "completedAt",  "board"};
        const auto bridge = with(entryV10, {"typeRawValue"});
        auto entryV11 = bridge;
        std::erase(entryV11, "type");
        const auto entryV12 = with(entryV11, {"dueDay", "dueDate", "reminderDate"});
        return {{"V10", 100, boardV10, entryV10, false}, {"Bridge", 105, boardV10, bridge, false},
                {"V11", 110, boardV11, entryV11, false}, {"V12", 120, boardV11, entryV12, false},
                {"V13", 130, boardV11, entryV12, true},  {"V14", 140, boardV14, entryV12, true},
                {"V15", 150, boardV15, entryV12, true},  {"V16", 160, boardV16, entryV12, true}};
    }

    static std::string typeOf(const std::string& column) {
        static const std::map<std::string, std::string> types{{"id", "BLOB NOT NULL UNIQUE"},
                                                              {"name", "TEXT NOT NULL"},
                                                              {"createdAt", "REAL NOT NULL"},
                                                              {"updatedAt", "REAL NOT NULL"},
                                                              {"sortOrder", "INTEGER NOT NULL"},
                                                              {"isSystem", "INTEGER NOT NULL"},
                                                              {"isArchived", "INTEGER NOT NULL"},
                                                              {"type", "TEXT NOT NULL"},
                                                              {"typeRawValue", "TEXT NOT NULL"},
                                                              {"content", "TEXT NOT NULL"},
                                                              {"isCompleted", "INTEGER NOT NULL"},
                                                              {"systemIdentifier", "TEXT"},
                                                              {"icon", "TEXT"},
                                                              {"iconColor", "TEXT"},
                                                              {"mergedIntoBoardID", "BLOB"},
                                                              {"richTextData", "BLOB"},
                                                              {"board", "BLOB"},
                                                              {"completedAt", "REAL"},
                                                              {"dueDay", "INTEGER"},
                                                              {"dueDate", "REAL"},
                                                              {"reminderDate", "REAL"}};
        return types.at(column);
    }

    void createTable(const std::string& name, const Columns& columns) {
        auto sql =
            "CREATE TABLE " + name +
            "(rowid INTEGER PRIMARY KEY, version INTEGER NOT NULL, checksum INTEGER NOT NULL";
        for (const auto& column : columns) {
            sql += ", \"" + column + "\" " + typeOf(column);
        }
        m_database.exec(sql + ")");
    }

    static std::int64_t checksum(const std::string& table,
                                 const std::vector<store::Value>& values) {
        base::Bytes form;
        const auto word = [&](std::uint64_t bits) {
            for (int i = 0; i < 8; ++i) {
                form.push_back(static_cast<std::uint8_t>(bits >> (8 * i)));
            }
        };
        const auto number = [&](std::uint64_t bits) {
            form.push_back(1);
            word(bits);
        };
        const auto bytes = [&](const auto& each) {
            form.push_back(2);
            word(each.size());
            form.insert(form.end(), each.begin(), each.end());
        };
        bytes(table);
        for (const auto& value : values) {
            if (const auto* integer = std::get_if<std::int64_t>(&value)) {
                number(static_cast<std::uint64_t>(*integer));
            } else if (const auto* real = std::get_if<double>(&value)) {
                number(std::bit_cast<std::uint64_t>(*real));
            } else if (const auto* text = std::get_if<std::string>(&value)) {
                bytes(*text);
            } else if (const auto* data = std::get_if<base::Bytes>(&value)) {
                bytes(*data);
            } else if (const auto* id = std::get_if<base::Uuid>(&value)) {
                bytes(id->bytes);
            } else {
                form.push_back(0);
            }
        }
        return static_cast<std::int64_t>(base::checksum(form));
    }

    void insert(const std::string& table, const Columns& columns, const Row& row) {
        std::vector<store::Value> values;
        auto sql = "INSERT INTO " + table + " VALUES(NULL, 7, ?";
        for (const auto& column : columns) {
            const auto found = row.find(column);
            values.push_back(found == row.end() ? store::Value() : found->second);
            sql += ", ?";
        }
        SQLite::Statement statement(m_database, sql + ")");
        statement.bind(1, checksum(table, values));
        for (int i = 0; i < static_cast<int>(values.size()); ++i) {
            bind(statement, i + 2, values[static_cast<std::size_t>(i)]);
        }
        statement.exec();
    }

    static void bind(SQLite::Statement& statement, int index, const store::Value& value) {
        if (const auto* integer = std::get_if<std::int64_t>(&value)) {
            statement.bind(index, *integer);
        } else if (const auto* real = std::get_if<double>(&value)) {
            statement.bind(index, *real);
        } else if (const auto* text = std::get_if<std::string>(&value)) {
            statement.bind(index, *text);
        } else if (const auto* data = std::get_if<base::Bytes>(&value)) {
            statement.bind(index, data->data(), static_cast<int>(data->size()));
        } else if (const auto* id = std::get_if<base::Uuid>(&value)) {
            statement.bind(index, id->bytes.data(), static_cast<int>(id->bytes.size()));
        } else {
            statement.bind(index);
        }
    }

    Version m_version;
    SQLite::Database m_database;
};

} // namespace korvex::tests
