#pragma once

#include "app/UserDefaults.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace korvex::app {

/// Settings in one small JSON file, replaced whole at each change (written beside it, synced,
/// renamed). What the file holds besides the key that changes stays as it is, also when another
/// program wrote it meanwhile; what changes nothing is not written. A missing or unreadable file
/// reads as no settings; it is overwritten at the next set.
class FileUserDefaults final : public UserDefaults {
public:
    explicit FileUserDefaults(std::filesystem::path file);
    ~FileUserDefaults() override;

    /// The user's settings file: `$XDG_CONFIG_HOME/korvex/settings.json`, else
    /// `~/.config/korvex/settings.json`.
    static std::filesystem::path defaultFile();

    std::optional<std::string> string(std::string_view key) const override;
    std::optional<std::int64_t> integer(std::string_view key) const override;
    std::optional<bool> boolean(std::string_view key) const override;
    std::optional<base::Bytes> bytes(std::string_view key) const override;

    void setString(std::string_view key, std::string_view value) override;
    void setInteger(std::string_view key, std::int64_t value) override;
    void setBoolean(std::string_view key, bool value) override;
    void setBytes(std::string_view key, const base::Bytes& value) override;
    void remove(std::string_view key) override;

private:
    /// The file's JSON object.
    struct Settings;

    /// What the file holds now; keeps what was known when that is nothing readable.
    std::string read();
    void change(const std::function<void(Settings&)>& change);

    std::filesystem::path m_file;
    std::unique_ptr<Settings> m_settings;
};

} // namespace korvex::app
