#include "storage/CloudStorePreparation.h"

#include "services/BoardService.h"
#include "services/Collaborators.h"
#include "storage/BackupService.h"
#include "storage/DataIntegrityService.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreError.h"
#include "storage/StoreMarkers.h"
#include "storage/UnreadableContents.h"
#include "store/ModelContext.h"
#include "store/StoreError.h"
#include "store/StoreFile.h"

namespace korvex::storage {

namespace {

constexpr std::string_view kCopy = "BeforeCloudV11";

/// Of the copies that attempts before this one have left, only the first one stays: what is newer
/// was changed by them already.
void keepCopy(const store::StoreFile& store) {
    const auto earlier = store.kept(kCopy);
    const auto copy = store.keptName(kCopy);
    store.copyTo(copy, &SharedModelContainer::schema());
    for (std::size_t i = 1; i < earlier.size(); ++i) {
        std::error_code nextTime;
        std::filesystem::remove(earlier[i], nextTime);
    }
}

} // namespace

CloudStorePreparation::Prepared CloudStorePreparation::prepare(const std::filesystem::path& at,
                                                               base::Instant now) const {
    if (storeMarkers::isSet(at, storeMarkers::kPreparedForCloud)) {
        return {};
    }
    const store::StoreFile file(at);
    if (!file.exists()) {
        throw SharedStoreError(SharedStoreErrorCase::incompleteStore);
    }
    if (!file.isWritable()) {
        return {};
    }
    keepCopy(file);
    const auto container =
        SharedModelContainer::make({.storeURL = at,
                                    .existingStoreOnly = true,
                                    .whenOlder = store::ModelConfiguration::Older::upgrade},
                                   *m_log);
    Prepared prepared{.wasUpgraded = container->wasUpgraded(), .notices = container->notices()};
    {
        store::ModelContext context(*container);
        services::NoReminders reminders;
        services::NoWidgets widgets;
        services::BoardService(context, reminders, widgets, *m_log).initializeDefaultBoards(now);
        const auto report =
            DataIntegrityService(context, *m_log)
                .repair({.now = now, .onMergedBoard = [&](const auto& from, const auto& to) {
                             prepared.mergedBoards.emplace_back(from, to);
                         }});
        if (report.damaged > 0) {
            throw store::StoreError(store::StoreErrorCase::damaged);
        }
        if (auto notice = noticeOnSetAside(report, at)) {
            prepared.notices.push_back(*std::move(notice));
        }
    }
    Work work;
    const auto document = createBackup(*container, now, work).document;
    backup::validate(document, *m_log);
    writeBackup(document, at.parent_path() / kBackupName, work);
    storeMarkers::set(at, storeMarkers::kPreparedForCloud);
    return prepared;
}

} // namespace korvex::storage
