#pragma once

#include "app/UserDefaults.h"

#include <filesystem>
#include <map>
#include <variant>

namespace korvex::app {

/// Settings in one small JSON file, replaced whole at each change (written beside it, synced,
/// renamed). A missing or unreadable file reads as no settings; it is overwritten at the next set.
class FileUserDefaults final : public UserDefaults {
public:
    explicit FileUserDefaults(std::filesystem::path file);

    /// `$XDG_CONFIG_HOME/korvex/settings.json`, else `~/.config/korvex/settings.json`.
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
    using Setting = std::variant<std::string, std::int64_t, bool>;

    void write() const;

    std::filesystem::path m_file;
    std::map<std::string, Setting, std::less<>> m_settings;
};

} // namespace korvex::app
