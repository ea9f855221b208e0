#include "app/StoreLocation.h"

#include "app/UserFolders.h"

namespace korvex::app {

namespace fs = std::filesystem;

fs::path dataDirectory(const std::optional<fs::path>& given) {
    const auto folder = given.value_or(userFolder("XDG_DATA_HOME", ".local/share") / "korvex");
    // Programs tell each other of changes by the store's path, so one folder must have one name.
    std::error_code error;
    const auto canonical = fs::weakly_canonical(folder, error);
    return error ? fs::absolute(folder) : canonical;
}

fs::path storeFile(const fs::path& dataDirectory) {
    return dataDirectory / kStoreFileName;
}

} // namespace korvex::app
