#pragma once

#include "base/FileLock.h"
#include "base/Log.h"
#include "store/StoreError.h"

#include <SQLiteCpp/Database.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

namespace korvex::agent {

/// A full disk may have room again, and nothing else says so.
inline constexpr std::chrono::seconds kTableRetry{30};

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

    /// Whether an error may come of a file that is of no use. It may also come of a disk that fails
    /// for a moment, as at a quota: `openAgain` finds out.
    static bool isDamage(const store::StoreError& error);

    /// Whether the file is the one that was there before, or was set aside and begun anew.
    enum class Opened { asItWas, anew };
    /// Closes the file where it is open and opens it, with a look at all that is in it. No
    /// statement of it may be left. Throws StoreError: then it is closed.
    Opened openAgain();
    /// Sets the file aside and begins a new one; `why` is for the log. The same holds as above.
    void beginAnew(std::string_view why);

private:
    /// Throws `Unusable` too.
    void open();
    void prepare();
    bool isNew() const;
    void setAside();

    std::filesystem::path m_file;
    base::Logger m_log;
    std::optional<base::FileLock> m_lock;
    std::unique_ptr<SQLite::Database> m_database;
};

} // namespace korvex::agent
