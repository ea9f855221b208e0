#pragma once

#include "base/Log.h"
#include "services/BoardService.h"
#include "services/EntryOrder.h"
#include "services/EntryService.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"
#include "support/PlainSqlite.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace korvex::bench {

/// When everything happens; no schedule depends on it.
inline constexpr base::Instant kNow{800'000'000};

/// `count` different texts of 300 bytes, for the store's own rows.
std::vector<std::string> bodies(std::size_t count);
/// `count` different texts as people write them on todos, for whole programs.
std::vector<std::string> titles(std::size_t count);

/// A store as a program has it open: container, context and the services over them.
class OpenStore {
public:
    explicit OpenStore(const std::filesystem::path& file);

    store::ModelContainer& container() { return *m_container; }
    store::ModelContext& context() { return m_context; }
    services::BoardService boards() { return {m_context, m_reminders, m_widgets, m_log}; }
    services::EntryService entries(services::UndoManager* undo = nullptr) {
        return {m_context, m_reminders, m_widgets, m_log, undo};
    }
    model::Board& inbox() { return *boards().inboxBoard(); }

private:
    base::StandardErrorLog m_log{base::LogLevel::error};
    services::NoReminders m_reminders;
    services::NoWidgets m_widgets;
    std::unique_ptr<store::ModelContainer> m_container;
    store::ModelContext m_context;
};

/// A new store whose Inbox holds an open todo for each of `contents`.
void makeStore(const std::filesystem::path& file, const std::vector<std::string>& contents = {});

/// The entries of a store as plain rows: a table of the same shape, with the same indexes.
class PlainEntries {
public:
    /// Makes the empty table in the new file `file`, after the pattern of `store`.
    PlainEntries(const std::filesystem::path& file, const std::filesystem::path& store);

    const PlainDatabase& database() const { return m_database; }
    /// One row; no transaction of its own.
    void insert(const model::EntryFields& fields);
    /// The same fields that `EntryService` gives a new todo.
    static model::EntryFields todo(const std::string& content, std::int64_t sortOrder,
                                   const base::Uuid& board);

private:
    PlainDatabase m_database;
    std::unique_ptr<PlainStatement> m_insert;
};

/// All entries of a store's rows, as structs: what reading them costs at least.
std::vector<model::EntryFields> readEntries(const PlainDatabase& database);

} // namespace korvex::bench
