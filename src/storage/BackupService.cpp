#include "storage/BackupService.h"

#include "model/Entry.h"
#include "model/ServiceErrors.h"
#include "services/BoardService.h"
#include "storage/DataIntegrityService.h"
#include "store/ContentReplacement.h"
#include "store/StoreError.h"

#include <algorithm>
#include <utility>

namespace korvex::storage {

namespace {

using backup::BackupDocument;
using backup::BackupError;
using backup::BackupErrorCase;
using model::Board;
using model::Entry;

Board boardOf(BackupDocument::BoardRecord record) {
    return Board({.id = record.id,
                  .name = std::move(record.name),
                  .createdAt = record.createdAt,
                  .updatedAt = record.updatedAt,
                  .sortOrder = record.sortOrder,
                  .isSystem = record.isSystem,
                  .isArchived = record.isArchived.value_or(false),
                  .icon = std::move(record.icon),
                  .iconColor = std::move(record.iconColor),
                  .systemIdentifier = std::move(record.systemIdentifier)});
}

/// The boards of a document by their identifiers.
class BoardTable {
public:
    void add(Board& board) { m_boards.push_back(&board); }
    void sort() { std::sort(m_boards.begin(), m_boards.end(), isBefore); }
    /// Throws `invalidDocument`.
    Board& at(const base::Uuid& id) {
        // Entries mostly come board by board.
        if (!m_last || m_last->id() != id) {
            const auto found = std::lower_bound(
                m_boards.begin(), m_boards.end(), id,
                [](const Board* board, const base::Uuid& wanted) { return board->id() < wanted; });
            if (found == m_boards.end() || (*found)->id() != id) {
                throw BackupError(BackupErrorCase::invalidDocument);
            }
            m_last = *found;
        }
        return *m_last;
    }

private:
    static bool isBefore(const Board* left, const Board* right) { return left->id() < right->id(); }

    std::vector<Board*> m_boards;
    Board* m_last = nullptr;
};

void replace(store::ModelContext& context, BackupDocument document, std::string note, Work& work) {
    work.beginForGood(Stage::replacing, document.entries.size());
    store::ContentReplacement replacement(context, std::move(note));
    BoardTable boards;
    for (auto& record : document.boards) {
        auto board = boardOf(std::move(record));
        replacement.add(board);
        boards.add(*context.find<Board>(board.id()));
    }
    boards.sort();
    for (auto& record : document.entries) {
        auto& board = boards.at(record.boardID);
        // Each is let go as soon as the store has it.
        Entry entry(backup::fieldsOf(std::exchange(record, {})));
        entry.setBoard(&board);
        replacement.add(entry);
        work.advance(1);
    }
}

/// Where the disk fails at the very end, what was written may still turn out to be there: the next
/// start would read it. Any other failure of a save is one.
void save(store::ModelContext& context, RecoveryFolder& folder) {
    folder.beginSaving();
    try {
        context.save();
    } catch (const store::StoreError& error) {
        if (error.which() != store::StoreErrorCase::inputOutput) {
            folder.saveFailed();
        }
        throw;
    }
}

} // namespace

BackupService::BackupService(store::ModelContext& context, services::ReminderReconciling& reminders,
                             services::WidgetReloading& widgets, base::LogSink& log)
    : m_context(&context),
      m_reminders(&reminders),
      m_widgets(&widgets),
      m_sink(&log),
      m_log(log, "Backup") {}

bool BackupService::isCloudBacked(const store::ModelContainer& container) {
    return !container.configuration().cloudContainerIdentifier.empty();
}

void BackupService::validateReplacement() const {
    const auto& container = m_context->container();
    // What is kept in step elsewhere would come back from there, or be lost there too.
    if (isCloudBacked(container)) {
        throw BackupError(BackupErrorCase::cloudRestoreUnsupported);
    }
    if (m_context->hasChanges()) {
        throw BackupError(BackupErrorCase::pendingChanges);
    }
    if (!container.allowsSave()) {
        throw model::EntryServiceError(model::EntryServiceErrorCase::readOnlyStore);
    }
}

std::optional<Restored> BackupService::finish(PreparedRestore& prepared, base::Instant now,
                                              Work& work,
                                              const std::function<void()>& beforeSave) const {
    work.checkCancellation();
    validateReplacement();
    auto& container = m_context->container();
    Restored restored;
    // Contexts save when they are told to and never by themselves: nothing needs to be kept from
    // that meanwhile.
    {
        // The main context has nothing pending, so another one can do it without its records, and
        // they are as they were if it fails.
        store::ModelContext context(container);
        // Nobody else saves from the check to the end.
        const store::LockedStep step(context);
        work.checkCancellation();
        if (container.revision() != prepared.snapshot.revision) {
            return std::nullopt;
        }
        auto backup = std::exchange(prepared.backup, std::nullopt).value();
        restored.boardCount = backup.document().boards.size();
        restored.entryCount = backup.document().entries.size();
        restored.madeAt = backup.document().exportedAt;
        try {
            replace(context, std::move(backup).take(), prepared.snapshot.identity, work);
            services::NoReminders reminders;
            services::NoWidgets widgets;
            services::BoardService boards(context, reminders, widgets, *m_sink);
            boards.initializeDefaultBoards(now, services::BoardService::SaveChanges::no);
            DataIntegrityService(context, *m_sink)
                .repair({.saveChanges = DataIntegrityService::SaveChanges::no,
                         .contents = DataIntegrityService::Contents::leave, // validated
                         .now = now});
            if (beforeSave) {
                beforeSave();
            }
            save(context, *prepared.folder);
        } catch (...) {
            m_log.error("Restore failed; transaction rolled back and recovery snapshot retained");
            throw;
        }
    }
    restored.snapshot = prepared.folder->saved(m_log);
    m_log.info("Restored backup; recovery snapshot retained locally");
    // It is done: who is told of it too late learns of it with the next change.
    const auto tell = [this](const auto& telling) {
        try {
            telling();
        } catch (const std::exception& error) {
            m_log.warning(std::string("After a restore: ") + error.what());
        }
    };
    tell([this] { m_context->refresh(); });
    tell([this] { m_reminders->requestReconcile(); });
    tell([this] { m_widgets->reloadTodoWidgets(); });
    tell([&] {
        restored.boards =
            services::BoardService(*m_context, *m_reminders, *m_widgets, *m_sink).boards();
    });
    return restored;
}

Restored BackupService::finishAfter(PreparedRestore prepared, base::Instant now, Work& work,
                                    const RestoreHooks& hooks) const {
    work.checkCancellation();
    if (hooks.beforeReplace) {
        hooks.beforeReplace();
    }
    for (int followed = 0;; ++followed) {
        if (auto restored = finish(prepared, now, work, hooks.beforeSave)) {
            return std::move(*restored);
        }
        if (followed == kFollowedRevisions) {
            refuseChanged(prepared.kind);
        }
        followRevision(prepared, m_context->container(), work);
    }
}

Restored BackupService::restore(ValidBackup backup, const std::filesystem::path& recoveryFile,
                                base::Instant now, Work& work, const RestoreHooks& hooks) const {
    work.checkCancellation();
    validateReplacement();
    return finishAfter(
        prepareRestore(std::move(backup), m_context->container(), recoveryFile, now, *m_sink, work),
        now, work, hooks);
}

Restored BackupService::restore(BackupDocument document, const std::filesystem::path& recoveryFile,
                                base::Instant now, Work& work, const RestoreHooks& hooks) const {
    work.checkCancellation();
    return restore(ValidBackup(std::move(document), *m_sink), recoveryFile, now, work, hooks);
}

Restored BackupService::undoRestore(const std::filesystem::path& recoveryFile, base::Instant now,
                                    Work& work, const RestoreHooks& hooks) const {
    work.checkCancellation();
    validateReplacement();
    return finishAfter(
        prepareUndo(m_context->container(), recoveryFile, std::nullopt, now, *m_sink, work), now,
        work, hooks);
}

} // namespace korvex::storage
