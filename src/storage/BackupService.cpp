#include "storage/BackupService.h"

#include "base/FileReplacement.h"
#include "model/Entry.h"
#include "model/ServiceErrors.h"
#include "services/BoardService.h"
#include "storage/DataIntegrityService.h"
#include "store/ContentReplacement.h"

#include <algorithm>
#include <utility>

namespace korvex::storage {

namespace {

using backup::BackupDocument;
using backup::BackupError;
using backup::BackupErrorCase;
using model::Board;
using model::Entry;

/// "Today" and "Inbox" are what older documents call the Inbox by, without an identifier.
std::optional<std::string> systemIdentifierOf(const BackupDocument::BoardRecord& board) {
    if (board.systemIdentifier || !board.isSystem) {
        return board.systemIdentifier;
    }
    if (board.name == "Today") {
        return "today";
    }
    return board.name == "Inbox" ? std::optional<std::string>("inbox") : std::nullopt;
}

Board boardOf(BackupDocument::BoardRecord record) {
    auto identifier = systemIdentifierOf(record);
    return Board({.id = record.id,
                  .name = std::move(record.name),
                  .createdAt = record.createdAt,
                  .updatedAt = record.updatedAt,
                  .sortOrder = record.sortOrder,
                  .isSystem = record.isSystem,
                  .isArchived = record.isArchived.value_or(false),
                  .icon = std::move(record.icon),
                  .iconColor = std::move(record.iconColor),
                  .systemIdentifier = std::move(identifier)});
}

/// On no board yet.
Entry entryOf(BackupDocument::EntryRecord record) {
    return Entry({.id = record.id,
                  .typeRawValue = std::move(record.type),
                  .content = std::move(record.content),
                  .richTextData = std::move(record.richTextData),
                  .attachmentData = {.isRead = true, .bytes = std::move(record.attachmentData)},
                  .createdAt = record.createdAt,
                  .updatedAt = record.updatedAt,
                  .sortOrder = record.sortOrder,
                  .isCompleted = record.isCompleted,
                  .completedAt = record.completedAt,
                  .dueDay = record.dueDay,
                  .dueDate = record.dueDate,
                  .dueStartDate = record.dueStartDate,
                  .reminderDate = record.reminderDate});
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

/// Throws BackupError `storeChanged` when the store does not hold any more what the snapshot has.
void checkRevision(store::ModelContainer& container, const RecoverySnapshot& snapshot, Work& work) {
    if (container.revision() == snapshot.revision) {
        return;
    }
    // Something was saved, which need not have changed anything that a backup has.
    const auto now = createBackup(container, snapshot.exportedAt, work);
    if (!holdsBackup(snapshot.file, now.document, work)) {
        throw BackupError(BackupErrorCase::storeChanged);
    }
}

void replace(store::ModelContext& context, BackupDocument document, Work& work) {
    work.beginForGood(Stage::replacing, document.entries.size());
    store::ContentReplacement replacement(context);
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
        auto entry = entryOf(std::exchange(record, {}));
        entry.setBoard(&board);
        replacement.add(entry);
        work.advance(1);
    }
}

} // namespace

BackupService::BackupService(store::ModelContext& context, services::ReminderReconciling& reminders,
                             services::WidgetReloading& widgets, base::LogSink& log,
                             services::UndoManager* undo)
    : m_context(&context),
      m_reminders(&reminders),
      m_widgets(&widgets),
      m_undo(undo),
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

std::vector<Board*> BackupService::finish(PreparedRestore prepared, base::Instant now, Work& work,
                                          const RestoreHooks& hooks) const {
    work.checkCancellation();
    if (hooks.beforeReplace) {
        hooks.beforeReplace();
    }
    validateReplacement();
    // Contexts save when they are told to and never by themselves: nothing needs to be kept from
    // that meanwhile.
    {
        // The main context has nothing pending, so another one can do it without its records, and
        // they are as they were if it fails.
        store::ModelContext context(m_context->container());
        // Nobody else saves from the check to the end.
        const store::LockedStep step(context);
        checkRevision(m_context->container(), prepared.snapshot, work);
        try {
            replace(context, std::move(prepared.document), work);
            services::NoReminders reminders;
            services::NoWidgets widgets;
            services::BoardService(context, reminders, widgets, *m_sink)
                .initializeDefaultBoards(now, services::BoardService::SaveChanges::no);
            DataIntegrityService(context, *m_sink)
                .repair({.saveChanges = DataIntegrityService::SaveChanges::no,
                         .contents = DataIntegrityService::Contents::leave, // validated
                         .now = now});
            if (hooks.beforeSave) {
                hooks.beforeSave();
            }
            context.save();
        } catch (...) {
            m_log.error("Restore failed; transaction rolled back and recovery snapshot retained");
            throw;
        }
    }
    if (const auto& becomes = prepared.snapshot.becomes) {
        if (const auto error = base::moveFile(prepared.snapshot.file, *becomes)) {
            // The next undo finds it.
            m_log.warning("The recovery snapshot is not in its place: " + error.message());
        }
    }
    if (m_undo) {
        m_undo->forgetEverything();
    }
    m_context->refresh();
    m_reminders->requestReconcile();
    m_widgets->reloadTodoWidgets();
    m_log.info("Restored backup; recovery snapshot retained locally");
    return services::BoardService(*m_context, *m_reminders, *m_widgets, *m_sink).boards();
}

std::vector<Board*> BackupService::restore(BackupDocument document,
                                           const std::filesystem::path& recoveryFile,
                                           base::Instant now, Work& work,
                                           const RestoreHooks& hooks) const {
    work.checkCancellation();
    backup::validate(document, *m_sink);
    validateReplacement();
    return finish(prepareRestore(std::move(document), m_context->container(), recoveryFile, now,
                                 *m_sink, work),
                  now, work, hooks);
}

std::vector<Board*> BackupService::undoRestore(const std::filesystem::path& recoveryFile,
                                               base::Instant now, Work& work) const {
    validateReplacement();
    return finish(prepareUndo(m_context->container(), recoveryFile, now, *m_sink, work), now, work);
}

} // namespace korvex::storage
