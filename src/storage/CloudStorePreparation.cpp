#include "storage/CloudStorePreparation.h"

#include "services/BoardService.h"
#include "services/Collaborators.h"
#include "storage/BackupService.h"
#include "storage/DataIntegrityService.h"
#include "storage/SharedModelContainer.h"
#include "storage/SharedStoreError.h"
#include "storage/StoreMarkers.h"
#include "store/ModelContext.h"
#include "store/StoreFile.h"

namespace korvex::storage {

void CloudStorePreparation::prepare(const std::filesystem::path& at, base::Instant now) const {
    if (storeMarkers::isSet(at, storeMarkers::kPreparedForCloud)) {
        return;
    }
    std::error_code ignored;
    if (!std::filesystem::exists(at, ignored)) {
        throw SharedStoreError(SharedStoreErrorCase::incompleteStore);
    }
    store::StoreFile(at).copyTo(store::StoreFile(at).keptName("BeforeCloudV11"));
    const auto container =
        store::ModelContainer::open(SharedModelContainer::schema(),
                                    {.file = at,
                                     .whenMissing = store::ModelConfiguration::Missing::refuse,
                                     .whenOlder = store::ModelConfiguration::Older::upgrade},
                                    *m_log);
    {
        store::ModelContext context(*container);
        services::NoReminders reminders;
        services::NoWidgets widgets;
        services::BoardService(context, reminders, widgets, *m_log).initializeDefaultBoards(now);
        DataIntegrityService(context, *m_log).repair({.now = now});
    }
    Work work;
    exportBackup(*container, at.parent_path() / kBackupName, now, *m_log, work);
    storeMarkers::set(at, storeMarkers::kPreparedForCloud);
}

} // namespace korvex::storage
