#include "storage/StoreAdvice.h"

#include "app/StoreLocation.h"
#include "storage/RestorePreparation.h"
#include "storage/SharedModelContainer.h"
#include "store/StoreFile.h"
#include "store/StoreUpgrade.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace korvex::storage {

namespace {

/// As it is typed in a terminal.
std::string quoted(const std::filesystem::path& path) {
    std::string text = "'";
    for (const auto character : path.native()) {
        text += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return text + "'";
}

/// Present where there is one.
std::optional<std::filesystem::path> recoveryFolder(const std::filesystem::path& storeFile) {
    auto folder = recoveryFile(storeFile.parent_path()).parent_path();
    std::error_code unknown;
    return std::filesystem::exists(folder, unknown) ? std::optional(std::move(folder))
                                                    : std::nullopt;
}

/// All of the folder: what else is in it says that a store belongs there.
std::string beginningAnew(const std::filesystem::path& storeFile) {
    const auto folder = storeFile.parent_path();
    const auto recovery = recoveryFolder(storeFile);
    const auto goesAlong = recovery && recovery->parent_path() == folder;
    return "To begin with an empty store, move the folder " + folder.string() +
           " away and start Korvex." +
           (goesAlong ? " " + recovery->filename().string() + " goes along with it." : "");
}

/// The newest one that is kept so, with what has to come along; empty where there is none. Of a
/// store that did not open all words may stand in its journal.
std::string newestKept(const store::StoreFile& store, std::string_view what) {
    auto files = store.kept(what);
    const auto isJournal = [](const std::filesystem::path& file) {
        return std::any_of(store::StoreFile::kJournals.begin(), store::StoreFile::kJournals.end(),
                           [&](const char* suffix) { return file.native().ends_with(suffix); });
    };
    std::erase_if(files, isJournal);
    if (files.empty()) {
        return {};
    }
    auto line = "\n" + files.back().filename().string();
    for (const auto* const suffix : store::StoreFile::kJournals) {
        std::error_code unknown;
        if (std::filesystem::exists(files.back().native() + suffix, unknown)) {
            line += " (together with " + files.back().filename().string() + suffix + ", as " +
                    store.path().filename().string() + suffix + ")";
        }
    }
    return line;
}

/// What can take the place of a store that is gone, the newest of each kind.
std::string puttingBack(const std::filesystem::path& storeFile) {
    const store::StoreFile store(storeFile);
    const auto name = storeFile.filename().string();
    const auto beforeUpgrade = store::formerStoreName(SharedModelContainer::schema());
    std::string whole;
    for (const auto& what : {std::string("former"), beforeUpgrade, std::string("BeforeCloudV11")}) {
        whole += newestKept(store, what);
    }
    const auto damaged = newestKept(store, "damaged");
    return "If you have moved " + name + " away from " + storeFile.parent_path().string() +
           ", put it back." +
           (whole.empty() ? ""
                          : " These were kept beside it; one that gets the name " + name +
                                " is the store again:" + whole) +
           (damaged.empty() ? ""
                            : "\nThis one is damaged; with the name " + name +
                                  " it can be repaired once more:" + damaged);
}

} // namespace

std::string repairCommand(const std::filesystem::path& storeFile) {
    const auto folder = storeFile.parent_path();
    return "korvex " + (app::isUsersOwn(folder) ? "" : "--data-dir " + quoted(folder) + " ") +
           "store repair";
}

namespace {

/// After the beginning of a sentence.
std::string savingWhatCanBeRead(const std::filesystem::path& storeFile) {
    return ", close Korvex and run this in a terminal; it saves what can be read: " +
           repairCommand(storeFile);
}

} // namespace

std::string adviceOn(store::StoreErrorCase reason, const std::filesystem::path& storeFile,
                     Attempt attempt) {
    if (reason == store::StoreErrorCase::busy && attempt == Attempt::repair) {
        return "Close Korvex and every other program that uses this store first.";
    }
    const auto isDamage =
        reason == store::StoreErrorCase::damaged || reason == store::StoreErrorCase::notAStore;
    std::string advice;
    if (reason == store::StoreErrorCase::nothingReadable ||
        (isDamage && attempt == Attempt::repair)) {
        advice = beginningAnew(storeFile);
    } else if (isDamage ||
               (reason == store::StoreErrorCase::inputOutput && attempt == Attempt::opening)) {
        advice = std::string(isDamage ? "If it is damaged" : "If it fails each time") +
                 savingWhatCanBeRead(storeFile);
    } else {
        return {};
    }
    return advice + "\n" + adviceOnBackups(storeFile);
}

std::string adviceOn(SharedStoreErrorCase reason, const std::filesystem::path& storeFile) {
    if (reason != SharedStoreErrorCase::incompleteStore) {
        return {};
    }
    return puttingBack(storeFile) + "\n" + beginningAnew(storeFile) + "\n" +
           adviceOnBackups(storeFile);
}

std::string damageNotice(const std::filesystem::path& storeFile) {
    return "The store is damaged. Before you go on" + savingWhatCanBeRead(storeFile);
}

std::string adviceOnBackups(const std::filesystem::path& storeFile) {
    const auto recovery = recoveryFolder(storeFile);
    return std::string("Backups hold what was there too, and can be imported into a store that "
                       "opens: those that you exported") +
           (app::isUsersOwn(storeFile.parent_path()) ? ", and automatic ones" : "") +
           (recovery ? "; what was there before the last replacement is in " + recovery->string()
                     : "") +
           ".";
}

} // namespace korvex::storage
