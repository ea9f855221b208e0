#include "storage/StoreMarkers.h"

#include "base/FileReplacement.h"
#include "base/SmallFile.h"
#include "storage/SharedStoreError.h"
#include "store/StoreError.h"

namespace korvex::storage::storeMarkers {

namespace {

constexpr std::size_t kLongest = 1024;

std::filesystem::path pathOf(const std::filesystem::path& store, std::string_view marker) {
    return store.parent_path() / marker;
}

} // namespace

bool isSet(const std::filesystem::path& store, std::string_view marker) {
    std::error_code ignored;
    return std::filesystem::exists(pathOf(store, marker), ignored);
}

void set(const std::filesystem::path& store, std::string_view marker, std::string_view contents) {
    const auto error = base::replaceFile(pathOf(store, marker), contents);
    if (error) {
        store::throwSystemError(error.value());
    }
}

void removeLeftBehind(const std::filesystem::path& store) {
    base::removeLeftBehind(store.parent_path(), [](std::string_view target) {
        return target == kPrepared || target == kPreparedForCloud;
    });
}

bool says(const std::filesystem::path& store, std::string_view marker, std::string_view contents) {
    return base::readSmallFile(pathOf(store, marker), kLongest) == contents;
}

void checkThatNothingIsGone(const std::filesystem::path& store) {
    std::error_code failure;
    const auto status = std::filesystem::status(store, failure);
    if (status.type() == std::filesystem::file_type::not_found && isSet(store, kPrepared)) {
        throw SharedStoreError(SharedStoreErrorCase::incompleteStore);
    }
}

} // namespace korvex::storage::storeMarkers
