#pragma once

#include "app/UserDefaults.h"
#include "base/FileLock.h"
#include "base/Log.h"
#include "base/RunLoop.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace korvex::app {

class SettingsObject;

/// Settings in one small JSON file (docs/formats/settings.md), replaced whole at each change
/// (written beside it, synced, renamed). What the file holds besides the key that changes stays as
/// it is, also when another program writes at the same moment: they take turns by a lock beside it.
/// What changes nothing is not written. A file that is missing or no JSON object reads as no
/// settings, and as those that were known when it becomes so while the program runs; a damaged one
/// is kept under another name by the next set, and one that cannot be read is left alone.
///
/// What cannot be written holds here, and is tried again: with the next change, when the file has
/// become another, by the timer of a SettingsWriter, and at the end. Where the key holds something
/// else by then, another program has set it since, and that holds.
class FileUserDefaults final : public UserDefaults {
public:
    /// How the file beside it is locked, and for how long who else has the lock is waited for.
    using Locking = std::function<base::FileLock(const std::filesystem::path& file,
                                                 std::chrono::milliseconds patience)>;
    static base::FileLock lock(const std::filesystem::path& file,
                               std::chrono::milliseconds patience);

    /// The log, if there is one, outlives it.
    explicit FileUserDefaults(std::filesystem::path file, base::LogSink* log = nullptr,
                              Locking locking = lock);
    /// Waits for up to two seconds until it can write what is left.
    ~FileUserDefaults() override;

    /// The user's settings file: `$XDG_CONFIG_HOME/korvex/settings.json`, else
    /// `~/.config/korvex/settings.json`.
    static std::filesystem::path defaultFile();

    bool contains(std::string_view key) const override;
    std::optional<std::string> string(std::string_view key) const override;
    std::optional<std::int64_t> integer(std::string_view key) const override;
    std::optional<double> real(std::string_view key) const override;
    std::optional<bool> boolean(std::string_view key) const override;
    std::optional<base::Bytes> bytes(std::string_view key) const override;

    void setString(std::string_view key, std::string_view value) override;
    void setInteger(std::string_view key, std::int64_t value) override;
    void setReal(std::string_view key, double value) override;
    void setBoolean(std::string_view key, bool value) override;
    void setBytes(std::string_view key, const base::Bytes& value) override;
    void remove(std::string_view key) override;
    void replaceString(std::string_view key, const std::optional<std::string>& expected,
                       const std::optional<std::string>& wanted) override;

    std::string settle(std::string_view key,
                       const std::function<bool(std::string_view)>& isAcceptable,
                       std::string_view otherwise) override;
    void refresh() override;
    std::unique_ptr<UserDefaults> forAnotherThread() const override;
    void mayWait(std::string_view key) override;
    bool isKept() const override { return m_isKept; }
    base::Signal<>& keptChanged() override { return m_keptChanged; }

    /// By its timers what may wait is written from now on, and what could not be is tried again. At
    /// once what is left is tried; with null it stays so, and nothing waits.
    void setRunLoop(base::RunLoop* runLoop);
    /// Writes what the file lacks, unless somebody else has the lock.
    void writeLeft();

private:
    /// A member's JSON text; absent where there is no such member.
    using Value = std::optional<std::string>;
    struct Change {
        Value wanted;
        /// What the file held when it was made.
        Value before;
        /// Whatever the file holds when it is first written: this is the last word.
        bool isNew = false;
    };
    /// What stands in the file's place.
    struct Found;
    enum class Outcome { written, taken, failed };

    Found read();
    /// Forgets the changes that the file has, and those that it has other values for; the rest is
    /// what holds.
    void settleChanges(const Found& found);
    void showChanges();
    void nothingIsLeft();
    void writeAfter(std::chrono::duration<double> delay);
    void change(std::string_view key, Value wanted);
    /// No patience where the timer comes again.
    std::chrono::milliseconds unlessTimed(std::chrono::milliseconds patience) const;
    void write(std::chrono::milliseconds patience);
    Outcome tryToWrite(std::chrono::milliseconds patience);
    Outcome replace(const Found& found);
    bool keepDamaged(const std::string& contents);
    void setKept(bool isKept);

    std::filesystem::path m_file;
    base::LogSink* m_log;
    Locking m_locking;
    /// What the file held when it could last be read.
    std::unique_ptr<SettingsObject> m_held;
    /// That with the changes.
    std::unique_ptr<SettingsObject> m_settings;
    /// By key, what the file does not have.
    std::map<std::string, Change, std::less<>> m_unwritten;
    std::set<std::string, std::less<>> m_mayWait;
    /// Null: nobody would write it later.
    base::RunLoop* m_runLoop = nullptr;
    std::unique_ptr<base::RunLoop::Timer> m_timer;
    /// By the run loop's time, since when the first of what may wait has.
    std::optional<std::chrono::duration<double>> m_waitsSince;
    /// How often in a row it could not be written, and what stood in the file's place then.
    int m_failures = 0;
    std::unique_ptr<Found> m_failedOn;
    /// The contents that were kept as damaged last.
    std::string m_keptDamaged;
    bool m_isKept = true;
    base::Signal<> m_keptChanged;
};

} // namespace korvex::app
