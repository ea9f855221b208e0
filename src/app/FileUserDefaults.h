#pragma once

#include "app/UserDefaults.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace korvex::app {

/// Settings in one small JSON file (docs/formats/settings.md), replaced whole at each change
/// (written beside it, synced, renamed). What the file holds besides the key that changes stays as
/// it is, also when another program writes at the same moment: they take turns by a lock beside it.
/// What changes nothing is not written. A file that is missing or no JSON object reads as no
/// settings, and as those that were known when it becomes so while the program runs; a damaged one
/// is kept under another name by the next set, and one that cannot be read is left alone.
class FileUserDefaults final : public UserDefaults {
public:
    explicit FileUserDefaults(std::filesystem::path file);
    ~FileUserDefaults() override;

    /// The user's settings file: `$XDG_CONFIG_HOME/korvex/settings.json`, else
    /// `~/.config/korvex/settings.json`.
    static std::filesystem::path defaultFile();

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

    std::string settle(std::string_view key,
                       const std::function<bool(std::string_view)>& isAcceptable,
                       std::string_view otherwise) override;
    void refresh() override;
    std::unique_ptr<UserDefaults> forAnotherThread() const override;

private:
    /// The file's JSON object.
    struct Settings;
    using Change = std::function<void(Settings&)>;
    /// What stands in the file's place.
    struct Found;

    Found read();
    void change(std::string_view key, Change change);
    /// Whether the file holds all changes now.
    bool write();
    /// Reads the file and makes the changes that it lacks; it lacks none where that changes
    /// nothing.
    std::optional<Found> readAndChange();

    std::filesystem::path m_file;
    std::unique_ptr<Settings> m_settings;
    /// By key, what is not in the file: it holds here, and is tried again with the next change.
    std::map<std::string, Change, std::less<>> m_unwritten;
};

} // namespace korvex::app
