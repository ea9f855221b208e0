#pragma once

#include "base/FileLock.h"
#include "base/Log.h"
#include "store/StoreError.h"

#include <SQLiteCpp/Database.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

namespace korvex::agent {

/// The open file of the agent's requests (docs/formats/reminders.md), for one process at a time. It
/// holds nothing that could not be had again from the store, but what was shown already, and what
/// is due and not shown yet: so one that is damaged, foreign or of a newer form is set aside, and
/// begun anew. One thread.
class ReminderFile {
public:
    /// Makes the folder and the file where they are missing; an empty path keeps all in memory.
    /// Throws StoreError: `busy` where another process has it, and what the disk refuses.
    ReminderFile(std::filesystem::path file, base::LogSink& log);
    ReminderFile(const ReminderFile&) = delete;
    ReminderFile& operator=(const ReminderFile&) = delete;

    sqlite3* handle() const { return m_database->getHandle(); }

    /// Whether an error says that the file is of no use, rather than that nothing can be read or
    /// written now.
    static bool isDamage(const store::StoreError& error);

    /// Sets the file aside and begins a new one; `why` is for the log. No statement of the former
    /// one may be left. Throws StoreError.
    void beginAnew(std::string_view why);

private:
    void open();
    void prepare();
    void setAside();

    std::filesystem::path m_file;
    base::Logger m_log;
    std::optional<base::FileLock> m_lock;
    std::unique_ptr<SQLite::Database> m_database;
};

} // namespace korvex::agent
