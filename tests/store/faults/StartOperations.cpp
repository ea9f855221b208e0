#include "store/faults/Operations.h"

#include "storage/StoreRepair.h"
#include "storage/StoreStart.h"

#include <optional>

namespace korvex::faults {

namespace {

std::filesystem::path legacyOf(const std::filesystem::path& file) {
    return file.parent_path() / "legacy" / "default.store";
}

void start(const std::filesystem::path& file, Steps& steps,
           const std::optional<std::string>& cloud) {
    Program program(steps);
    auto started = storage::StoreStart::open({.storeFile = file,
                                              .legacyFile = legacyOf(file),
                                              .cloudKitIdentifier = cloud,
                                              .now = kLater},
                                             program.log);
    program.container = std::move(started.container);
    program.context = std::move(started.context);
    program.boards().initializeDefaultBoards(kLater);
}

/// As every program starts: carries over, upgrades, repairs, whatever is to be done.
void startLocally(const std::filesystem::path& file, Steps& steps) {
    start(file, steps, std::nullopt);
}

void startWithCloud(const std::filesystem::path& file, Steps& steps) {
    start(file, steps, "iCloud.korvex");
}

void upgrade(const std::filesystem::path& file, Steps& steps) {
    Program(steps).open(file, store::ModelConfiguration::Missing::refuse);
}

/// As a user asks for it.
void repair(const std::filesystem::path& file, Steps& steps) {
    tests::SilentLog log;
    auto work = steps.work();
    storage::repairStore({.storeFile = file, .legacyFile = legacyOf(file), .now = kLater}, log,
                         work);
}

} // namespace

const FileOperations& startOperations() {
    static const FileOperations all{
        {"start", startLocally},
        {"cloud", startWithCloud},
        {"upgrade", upgrade},
        {"repair", repair},
    };
    return all;
}

} // namespace korvex::faults
