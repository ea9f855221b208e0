#pragma once

#include "base/Log.h"
#include "base/Signal.h"
#include "base/Uuid.h"
#include "store/ChangeSet.h"
#include "store/ModelConfiguration.h"
#include "store/Schema.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvex::store {

class StoreConnection;

/// What a check of the store found: one plain sentence each; empty when it is sound.
struct StoreCheckReport {
    std::size_t recordCount = 0;
    /// Something cannot be read, or is not what was saved last.
    bool isDamaged = false;
    std::vector<std::string> problems;
};

/// One open store. Several contexts can work on it; other processes and other containers of this
/// one can have it open too. It shares nothing with those, so each thread may have containers of
/// its own; "main thread" in this folder means the one thread to which a container, its contexts
/// and their records belong. Contexts must end before their container.
class ModelContainer {
public:
    /// Opens, creates or upgrades the store; creation and upgrade are all or nothing. Never
    /// overwrites a file that it cannot read as a store of this schema: throws StoreError instead.
    /// A store whose folder or file cannot be written opens for reading only (`allowsSave()` is
    /// false).
    static std::unique_ptr<ModelContainer>
    open(const Schema& schema, ModelConfiguration configuration, base::LogSink& log);
    ~ModelContainer();

    const Schema& schema() const { return m_schema; }
    const ModelConfiguration& configuration() const { return m_configuration; }
    bool allowsSave() const;

    /// Which store this is. Another one has another; a copy has the same.
    const base::Uuid& storeID() const;

    /// What was noticed while opening and what the user should know, in full sentences.
    const std::vector<std::string>& notices() const;

    /// This opening has upgraded the store from an older version of the schema.
    bool wasUpgraded() const;
    /// The last revision is not the one that the programs on this machine have left, so the file
    /// was copied or put back here, or has lost its newest changes. Every opener finds it so until
    /// one adopts it.
    bool isFromElsewhere() const;
    /// The store is this machine's as it is now: to be called once it was held to the rules. Does
    /// nothing where it is already, or is only read. Throws StoreError `busy`.
    void adopt();

    /// The store's revision: one more with each save, whoever saved. Cheap: a look at a counter
    /// while no other process has written.
    std::int64_t revision() const;

    /// What was noted with the last `ContentReplacement`; absent where there was none. Throws
    /// StoreError.
    std::optional<std::string> replacementNote() const;

    /// Emitted after every save of a context of this container; during a step, at its end.
    /// Observers must not throw.
    base::Signal<const ChangeSet&>& didSave() { return m_didSave; }

    /// How long steps wait from now on for other programs before they give up with `busy`; at first
    /// it is the configuration's `lockTimeout`. Opening may well wait for a migration, while who
    /// sits in front of a window would take a wait for a fault.
    void setPatience(std::chrono::milliseconds patience);
    std::chrono::milliseconds patience() const;

    /// Reads everything, as it is at this moment, and compares it with its checksums; others may
    /// write meanwhile. `advance` is told the records as they are read; what it throws ends it.
    /// Damage is reported; throws StoreError where the store cannot be read for another reason.
    StoreCheckReport check(const std::function<void(std::size_t records)>& advance = {}) const;

    /// Moves what the journal holds into the store file. For long-lived programs, when idle and at
    /// the end; saves do it themselves when the journal is long.
    void checkpoint();

    /// For a program that ends without ending its containers, which do it themselves: leaves no
    /// journal of more than 256 KiB, so that the store file alone is nearly whole. Waits a moment
    /// for other programs and then lets it be.
    void shortenJournal() noexcept;

    /// For the store's own sources.
    StoreConnection& connection() const { return *m_connection; }

private:
    ModelContainer(const Schema& schema, ModelConfiguration configuration);

    Schema m_schema;
    ModelConfiguration m_configuration;
    std::unique_ptr<StoreConnection> m_connection;
    base::Signal<const ChangeSet&> m_didSave;
};

} // namespace korvex::store
