#include "store/PendingRecords.h"

#include <algorithm>
#include <iterator>

namespace korvex::store {

namespace {

bool isChanged(const Record* record) {
    return record->isLive() && record->hasChanges();
}

std::vector<base::Uuid> identifiers(const std::vector<Record*>& records) {
    std::vector<base::Uuid> ids;
    ids.reserve(records.size());
    for (const auto* record : records) {
        ids.push_back(record->id());
    }
    return ids;
}

} // namespace

bool PendingRecords::isEmpty() const {
    return inserted.empty() && deleted.empty() &&
           std::none_of(touched.begin(), touched.end(),
                        [](const Record* record) { return record->hasChanges(); });
}

bool PendingRecords::concern(const RecordType& type) const {
    const auto isAmong = [&](const std::vector<Record*>& records) {
        return std::any_of(records.begin(), records.end(),
                           [&](const Record* record) { return &record->storedType() == &type; });
    };
    return isAmong(inserted) || isAmong(touched) || isAmong(deleted);
}

bool PendingRecords::isPending(const Record& record) {
    return record.isLive() && (record.isInserted() || record.hasChanges());
}

void PendingRecords::visit(const RecordType& type,
                           const std::function<void(Record&)>& visit) const {
    for (const auto* records : {&inserted, &touched}) {
        for (auto* record : *records) {
            if (&record->storedType() == &type && isPending(*record)) {
                visit(*record);
            }
        }
    }
}

std::vector<Record*> PendingRecords::changed() const {
    std::vector<Record*> records;
    std::copy_if(touched.begin(), touched.end(), std::back_inserter(records), isChanged);
    return records;
}

ChangeSet PendingRecords::changeSet() const {
    return {.inserted = identifiers(inserted),
            .updated = identifiers(changed()),
            .deleted = identifiers(deleted)};
}

} // namespace korvex::store
