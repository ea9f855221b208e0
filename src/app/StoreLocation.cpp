#include "app/StoreLocation.h"

#include "app/DraftFolder.h"
#include "app/UserFolders.h"
#include "base/Digest.h"

#include <cinttypes>
#include <cstdio>

namespace korvex::app {

namespace fs = std::filesystem;

namespace {

constexpr const char* kUsualFolder = ".local/share";
constexpr const char* kFolderName = "korvex";

} // namespace

fs::path dataDirectory(const std::optional<fs::path>& given) {
    const auto folder = given.value_or(userFolder("XDG_DATA_HOME", kUsualFolder) / kFolderName);
    // Programs tell each other of changes by the store's path, so one folder must have one name.
    std::error_code error;
    // Made absolute first: what does not exist yet has no other name that is canonical.
    const auto canonical = fs::weakly_canonical(fs::absolute(folder), error);
    return error ? fs::absolute(folder) : canonical;
}

std::optional<fs::path> legacyStoreFile(const fs::path& dataDirectory) {
    if (!isUsersOwn(dataDirectory)) {
        return std::nullopt;
    }
    return userFolder("XDG_DATA_HOME", kUsualFolder) / "Korvex" / "default.store";
}

bool isUsersOwn(const fs::path& dataDirectory) {
    return dataDirectory == app::dataDirectory(std::nullopt);
}

fs::path storeFile(const fs::path& dataDirectory) {
    return dataDirectory / kStoreFileName;
}

std::string storeMark(const fs::path& storeFile) {
    const auto path = storeFile.string();
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(path.data());
    char mark[17];
    std::snprintf(mark, sizeof mark, "%016" PRIx64, base::checksum({bytes, path.size()}));
    return mark;
}

fs::path reminderFile(const fs::path& stateFolder, const fs::path& dataDirectory) {
    const auto isUsual =
        dataDirectory == app::dataDirectory(folderUnderHome(kUsualFolder) / kFolderName);
    const auto mark = isUsual ? "" : "-" + storeMark(storeFile(dataDirectory));
    return stateFolder / kFolderName / ("reminders" + mark + ".sqlite");
}

std::optional<std::string> missingStoreNotice(const fs::path& dataDirectory) {
    const auto file = storeFile(dataDirectory);
    std::error_code ignored;
    if (fs::exists(file, ignored) || !DraftFolder::areIn(DraftFolder::beside(file))) {
        return std::nullopt;
    }
    return "The store that was in " + dataDirectory.string() +
           " is gone, and a new one was made there. What was typed and could not be stored is "
           "still "
           "kept beside it.";
}

} // namespace korvex::app
