#pragma once

#include "app/FileUserDefaults.h"
#include "support/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace korvex::tests {

/// A settings file in a folder of its own.
class SettingsFile {
public:
    explicit SettingsFile(std::string_view contents = {}) {
        if (!contents.empty()) {
            write(contents);
        }
    }

    std::filesystem::path path() const { return m_folder / "settings.json"; }
    app::FileUserDefaults open() const { return app::FileUserDefaults(path()); }

    void write(std::string_view contents) const {
        std::ofstream(path(), std::ios::binary) << contents;
    }
    std::string contents() const {
        std::ifstream stream(path(), std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    TemporaryFolder m_folder;
};

} // namespace korvex::tests
