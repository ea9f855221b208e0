#include "storage/SharedModelContainer.h"

#include "app/StoreLocation.h"
#include "model/SchemaVersions.h"
#include "storage/SharedStoreError.h"
#include "storage/StoreMarkers.h"
#include "store/StoreError.h"

namespace korvex::storage {

namespace {

using Which = SharedStoreErrorCase;

std::filesystem::path storeFile(const SharedModelContainer::Options& options) {
    auto file = options.storeURL.value_or(app::storeFile(app::dataDirectory({})));
    if (!file.is_absolute()) {
        throw SharedStoreError(Which::appGroupUnavailable);
    }
    return file;
}

void checkThatItIsPrepared(const std::filesystem::path& file,
                           const SharedModelContainer::Options& options) {
    if (!storeMarkers::isSet(file, storeMarkers::kPrepared)) {
        throw SharedStoreError(Which::notPrepared);
    }
    storeMarkers::checkThatNothingIsGone(file);
    if (options.cloudKitIdentifier && !storeMarkers::isSet(file, storeMarkers::kPreparedForCloud)) {
        throw SharedStoreError(Which::cloudMigrationRequired);
    }
}

} // namespace

const store::Schema& SharedModelContainer::schema() {
    return model::currentSchema();
}

store::ModelConfiguration
SharedModelContainer::configuration(const std::filesystem::path& at,
                                    const std::optional<std::string>& cloudKitIdentifier) {
    return {.file = at, .cloudContainerIdentifier = cloudKitIdentifier.value_or(std::string())};
}

std::unique_ptr<store::ModelContainer> SharedModelContainer::make(const Options& options,
                                                                  base::LogSink& log) {
    if (options.isStoredInMemoryOnly) {
        return store::ModelContainer::open(schema(), {}, log);
    }
    const auto file = storeFile(options);
    if (options.existingStoreOnly) {
        checkThatItIsPrepared(file, options);
    }
    const auto open = [&](const std::optional<std::string>& cloud) {
        using Configuration = store::ModelConfiguration;
        auto made = configuration(file, cloud);
        made.whenMissing = options.existingStoreOnly ? Configuration::Missing::refuse
                                                     : Configuration::Missing::create;
        made.whenOlder =
            options.whenOlder.value_or(options.existingStoreOnly ? Configuration::Older::refuse
                                                                 : Configuration::Older::upgrade);
        made.lockTimeout = options.lockTimeout.value_or(made.lockTimeout);
        return store::ModelContainer::open(schema(), made, log);
    };
    try {
        if (options.cloudKitIdentifier) {
            try {
                return open(options.cloudKitIdentifier);
            } catch (const store::StoreError&) {
                base::Logger(log, "SharedStore")
                    .warning("Cloud store setup failed; attempting the same local store");
            }
        }
        return open(std::nullopt);
    } catch (const store::StoreError& error) {
        if (options.existingStoreOnly && error.which() == store::StoreErrorCase::needsUpgrade) {
            throw SharedStoreError(Which::cloudMigrationRequired);
        }
        throw;
    }
}

std::unique_ptr<store::ModelContainer>
SharedModelContainer::openExisting(const std::filesystem::path& file,
                                   store::ModelConfiguration::Older whenOlder, base::LogSink& log) {
    storeMarkers::checkThatNothingIsGone(file);
    return store::ModelContainer::open(schema(),
                                       {.file = file,
                                        .whenMissing = store::ModelConfiguration::Missing::refuse,
                                        .whenOlder = whenOlder},
                                       log);
}

void SharedModelContainer::checkThatItIsAStore(const std::filesystem::path& file,
                                               base::LogSink& log) {
    try {
        store::ModelContainer::open(schema(), {.file = file, .allowsSave = false}, log);
    } catch (const store::StoreError& error) {
        if (error.which() != store::StoreErrorCase::needsUpgrade) {
            throw;
        }
    }
}

} // namespace korvex::storage
