#include "storage/BackupService.h"

#include "app/DraftFolder.h"
#include "base/Text.h"
#include "model/Entry.h"
#include "model/SchemaVersions.h"
#include "services/OrderKey.h"
#include "storage/CloudStorePreparation.h"
#include "storage/RestoreError.h"
#include "storage/StoreAdvice.h"
#include "storage/StoreMarkers.h"
#include "store/StoreFile.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <numeric>
#include <tuple>

namespace korvex::storage {

namespace {

using backup::BackupDocument;
using backup::BackupError;
using backup::BackupErrorCase;

constexpr const char* kVersion = KORVEX_VERSION;

void repairText(std::string& text) {
    if (!base::isValidUtf8(text)) {
        text = base::repairedUtf8(text);
    }
}

/// Gives the values the places that `order` names for each.
template <typename Value>
void arrange(std::vector<Value>& values, const std::vector<std::size_t>& order) {
    std::vector<Value> arranged;
    arranged.reserve(values.size());
    for (const auto place : order) {
        arranged.push_back(std::move(values[place]));
    }
    values = std::move(arranged);
}

void sortBoards(std::vector<BackupDocument::BoardRecord>& boards) {
    std::sort(boards.begin(), boards.end(), [](const auto& left, const auto& right) {
        return services::OrderKey{left.sortOrder, left.createdAt, left.id} <
               services::OrderKey{right.sortOrder, right.createdAt, right.id};
    });
}

/// Board by board, each in its order. Throws `incompleteRelationships`.
void sortEntries(BackupDocument& document) {
    std::vector<base::Uuid> ids;
    ids.reserve(document.boards.size());
    for (const auto& board : document.boards) {
        ids.push_back(board.id);
    }
    std::vector<std::size_t> byIdentifier(ids.size());
    std::iota(byIdentifier.begin(), byIdentifier.end(), std::size_t{0});
    std::sort(byIdentifier.begin(), byIdentifier.end(),
              [&](std::size_t left, std::size_t right) { return ids[left] < ids[right]; });

    using Key = std::tuple<std::size_t, services::OrderKey>;
    std::vector<Key> keys;
    keys.reserve(document.entries.size());
    for (const auto& entry : document.entries) {
        // Entries mostly come board by board.
        auto board = keys.empty() ? ids.size() : std::get<0>(keys.back());
        if (board == ids.size() || ids[board] != entry.boardID) {
            const auto found = std::lower_bound(
                byIdentifier.begin(), byIdentifier.end(), entry.boardID,
                [&](std::size_t place, const base::Uuid& id) { return ids[place] < id; });
            if (found == byIdentifier.end() || ids[*found] != entry.boardID) {
                throw BackupError(BackupErrorCase::incompleteRelationships);
            }
            board = *found;
        }
        keys.emplace_back(board, services::OrderKey{entry.sortOrder, entry.createdAt, entry.id});
    }
    if (!std::is_sorted(keys.begin(), keys.end())) {
        std::vector<std::size_t> order(keys.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        std::sort(order.begin(), order.end(),
                  [&](std::size_t left, std::size_t right) { return keys[left] < keys[right]; });
        arrange(document.entries, order);
    }
}

/// Whether a file is one of the store's or lies where its recovery snapshots do, by this or any
/// other name.
bool isOfStore(std::filesystem::path file, const std::filesystem::path& store) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    file = fs::absolute(file, ignored);
    if (base::followLinks(file)) {
        return false; // it cannot be written to either
    }
    const auto isSame = [&](const fs::path& left, const fs::path& right) {
        return fs::equivalent(left, right, ignored);
    };
    const auto folder = file.parent_path();
    const auto data = store.parent_path();
    const auto name = store.filename().native();
    const std::array others{recoveryFile(data).parent_path(), app::DraftFolder::beside(store),
                            data / storeMarkers::kPrepared, data / storeMarkers::kPreparedForCloud,
                            data / CloudStorePreparation::kBackupName};
    const auto isOneOfThem = [&](const fs::path& each) {
        return isSame(file, each) || isSame(folder, each) ||
               (isSame(folder, each.parent_path()) && file.filename() == each.filename());
    };
    if (std::any_of(others.begin(), others.end(), isOneOfThem)) {
        return true;
    }
    std::error_code error;
    for (fs::directory_iterator each(data, error), end; !error && each != end;
         each.increment(error)) {
        if (each->path().filename().native().starts_with(name) && isSame(file, each->path())) {
            return true;
        }
    }
    // One that is not there just now is its as well.
    return isSame(folder, data) && file.filename().native().starts_with(name);
}

/// Another store, as of another data folder: whoever lets a backup replace what is there means
/// another backup.
void requireNoDatabase(const std::filesystem::path& file) {
    std::array<char, store::StoreFile::kMagic.size()> first{};
    std::ifstream(file, std::ios::binary).read(first.data(), first.size());
    if (std::equal(first.begin(), first.end(), store::StoreFile::kMagic.begin())) {
        throw FileError(file.string() +
                        " is a database, no backup. Nothing was written; choose another place.");
    }
}

} // namespace

std::unique_ptr<store::ModelContainer> openForReading(const std::filesystem::path& storeFile,
                                                      base::LogSink& log) {
    return store::ModelContainer::open(model::currentSchema(),
                                       {.file = storeFile,
                                        .allowsSave = false,
                                        .whenMissing = store::ModelConfiguration::Missing::refuse},
                                       log);
}

StoreSnapshot createBackup(store::ModelContainer& container, base::Instant at, Work& work) {
    // A new one sees what is saved and nothing else.
    store::ModelContext context(container);
    const store::ReadingStep step(container);
    StoreSnapshot snapshot{.revision = container.revision()};
    auto& document = snapshot.document;
    document.exportedAt = at;
    document.appVersion = kVersion;
    const auto count = context.count<model::Entry>();
    work.begin(Stage::reading, count);
    context.visit<model::Board>({}, [&](const model::Board& board) {
        document.boards.push_back(backup::recordOf(board));
        repairText(document.boards.back().name);
    });
    document.entries.reserve(count);
    context.visit<model::Entry>({}, [&](const model::Entry& entry) {
        work.advance(1);
        const auto board = entry.boardID();
        if (!board) {
            throw BackupError(BackupErrorCase::incompleteRelationships);
        }
        document.entries.push_back(backup::recordOf(entry, *board));
        repairText(document.entries.back().content);
    });
    sortBoards(document.boards);
    sortEntries(document);
    return snapshot;
}

StoreSnapshot createValidBackup(store::ModelContainer& container, base::Instant at,
                                base::LogSink& log, Work& work) {
    try {
        auto snapshot = createBackup(container, at, work);
        work.begin(Stage::checking);
        backup::validate(snapshot.document, log);
        return snapshot;
    } catch (const BackupError& error) {
        const auto mayArrive = error.which() == BackupErrorCase::incompleteRelationships &&
                               BackupService::isCloudBacked(container);
        if (mayArrive || error.which() == BackupErrorCase::tooLarge) {
            throw;
        }
        throw BackupError(error.which(),
                          "What the store holds contradicts itself. This mends it: " +
                              repairCommand(container.configuration().file));
    }
}

BackupSummary exportBackup(store::ModelContainer& container, const std::filesystem::path& file,
                           base::Instant now, base::LogSink& log, Work& work,
                           base::StagedFile::Existing existing) {
    if (isOfStore(file, container.configuration().file)) {
        throw RestoreError(RestoreErrorCase::ofStore);
    }
    requireFile(file);
    requireNoDatabase(file);
    // Before anything is written: on a full disk there is room for a new one only without them.
    if (auto target = std::filesystem::absolute(file); !base::followLinks(target)) {
        removeUnfinished(target.parent_path());
    }
    return writeBackup(createValidBackup(container, now, log, work).document, file, work,
                       {.existing = existing});
}

} // namespace korvex::storage
