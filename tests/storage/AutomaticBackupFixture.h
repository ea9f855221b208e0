#pragma once

#include "services/ServiceFixture.h"
#include "storage/AutomaticBackup.h"
#include "storage/BackupHistory.h"
#include "storage/FolderBookmark.h"

#include <gmock/gmock.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace korvex::tests {

/// A store with two entries, and a folder for its automatic backups.
class AutomaticBackupFixture : public ServiceFixture {
protected:
    void SetUp() override {
        ServiceFixture::SetUp();
        boards->initializeDefaultBoards(kNow);
        add({"one", "two"});
        std::filesystem::create_directory(chosen);
    }

    std::filesystem::path history() const {
        return chosen / storage::historyFolderName(installation);
    }

    static void put(const std::filesystem::path& file, const std::string& contents = "kept") {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << contents;
    }
    static void setAge(const std::filesystem::path& file, int hours) {
        std::filesystem::last_write_time(file, std::filesystem::file_time_type::clock::now() -
                                                   std::chrono::hours(hours));
    }

    /// The names in a folder in order, hidden ones too.
    static std::vector<std::string> namesIn(const std::filesystem::path& folder) {
        std::vector<std::string> names;
        for (const auto& each : std::filesystem::directory_iterator(folder)) {
            names.push_back(each.path().filename());
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    const std::filesystem::path chosen = folder / "chosen";
    const base::Uuid installation = base::Uuid::random();
};

} // namespace korvex::tests
