#include "ui/settings/BackupOperations.h"

#include "storage/ErrorsOnly.h"
#include "store/StoreError.h"
#include "ui/kit/words/Refusal.h"
#include "ui/settings/BackupWords.h"

#include <utility>

namespace korvex::ui {

namespace {

namespace fs = std::filesystem;
using storage::PreparedRestore;
using storage::Work;

/// While another program writes, the windows wait for it a moment at a time.
constexpr std::chrono::milliseconds kBetweenTries{250};
constexpr int kWaits = 20;
constexpr int kRounds = 3;

} // namespace

BackupOperations::BackupOperations(const Workspace& workspace, EditingWindows windows,
                                   QObject* parent)
    : QObject(parent), m_workspace(workspace), m_windows(std::move(windows)) {}

fs::path BackupOperations::recoveryFile() const {
    return storage::recoveryFile(
        m_workspace.context.container().configuration().file.parent_path());
}

bool BackupOperations::mayBegin() {
    const auto refused = m_windows.settleEdits();
    m_answer = {.refusal = refused.value_or(QString())};
    Q_EMIT changed();
    return !refused;
}

/// Runs it on a thread. It returns what `done` is given on this one; both may throw.
template <typename Function, typename Done>
void BackupOperations::start(Words words, Function work, Done done) {
    using Result = std::invoke_result_t<Function&, Work&>;
    m_doing = words.doing;
    m_failure = words.failure;
    m_progress = {};
    m_answer = {};
    m_isCancelled = false;
    m_task = std::make_unique<storage::BackgroundTask>(
        m_workspace.threads, m_workspace.runLoop,
        [work = storage::withErrorsOnly(std::move(work))](Work& mine) mutable -> Result {
            return work(mine);
        },
        [this, done](std::future<Result> outcome) {
            m_task.reset();
            end([&] { done(outcome.get()); });
        },
        [this](const storage::Progress& progress) {
            m_progress = progress;
            Q_EMIT changed();
        });
    Q_EMIT changed();
}

void BackupOperations::end(const std::function<void()>& work) {
    auto isCancelled = false;
    const auto refused = refusal([&] {
        try {
            storage::withErrorsOnly(work)();
        } catch (const storage::Cancelled&) {
            isCancelled = true;
        } catch (const base::Error& error) {
            storage::logFailure(m_workspace.log, error);
            throw;
        }
    });
    if (refused || isCancelled) {
        m_prepared.reset();
        m_answer = {.done = tr("Cancelled. Nothing was changed.")};
    }
    if (refused) {
        refuse(m_failure, *refused);
    }
    Q_EMIT changed();
    if (!isUnderWay()) {
        Q_EMIT ended();
    }
}

void BackupOperations::exportTo(const fs::path& file) {
    if (isUnderWay() || !mayBegin()) {
        return;
    }
    start(
        {tr("Exporting"),
         tr("Could not export the backup. Check the selected location and try again.")},
        [file, store = m_workspace.context.container().configuration().file,
         now = m_workspace.now(), &log = m_workspace.log](Work& work) {
            return storage::exportBackup(*storage::openForReading(store, log), file, now, log,
                                         work);
        },
        [this](const storage::BackupSummary&) { m_answer.done = tr("Backup exported."); });
}

void BackupOperations::import(const fs::path& file) {
    const Words words{tr("Preparing the import"),
                      tr("Could not restore the backup. Your previous data has been retained.")};
    if (isUnderWay() || !mayBegin() || !mayReplace(words.failure)) {
        return;
    }
    start(
        {tr("Reading the backup"),
         tr("Could not read this backup. Your current data has not been changed.")},
        [file, &log = m_workspace.log](Work& work) {
            auto document = storage::readBackup(file, work);
            work.begin(storage::Stage::checking);
            return std::make_shared<storage::ValidBackup>(std::move(document), log);
        },
        [this, words](const std::shared_ptr<storage::ValidBackup>& backup) {
            if (m_isCancelled) {
                throw storage::Cancelled();
            }
            const auto question =
                tr("Importing this backup will replace your current boards, text entries and "
                   "todos with %n (entry|entries). A local recovery backup will be saved first.",
                   nullptr, static_cast<int>(backup->document().entries.size()));
            ask(question, tr("Import"), words,
                [backup, store = m_workspace.context.container().configuration().file,
                 recovery = recoveryFile(), now = m_workspace.now(),
                 &log = m_workspace.log](Work& work) {
                    return storage::prepareRestore(std::move(*backup),
                                                   *storage::openForReading(store, log), recovery,
                                                   now, log, work);
                });
        });
}

void BackupOperations::takeBack(const storage::BackupSummary& kept) {
    const Words words{tr("Preparing to take the import back"),
                      tr("Could not take the import back. Your data is as it was.")};
    if (isUnderWay() || !mayBegin() || !mayReplace(words.failure)) {
        return;
    }
    const auto question =
        tr("Taking the last import back will replace your current boards, text entries and todos "
           "with the %n (entry|entries) of %1. This can be taken back in the same way.",
           nullptr, static_cast<int>(kept.entries))
            .arg(momentText(kept.exportedAt, m_workspace.dates));
    ask(question, tr("Take back"), words,
        [store = m_workspace.context.container().configuration().file, recovery = recoveryFile(),
         asked = storage::AskedSnapshot{.exportedAt = kept.exportedAt, .entries = kept.entries},
         now = m_workspace.now(), &log = m_workspace.log](Work& work) {
            return storage::prepareUndo(*storage::openForReading(store, log), recovery, asked, now,
                                        log, work);
        });
}

bool BackupOperations::mayReplace(const QString& failure) {
    const auto refused = refusal([this] { m_workspace.backup.validateReplacement(); });
    if (refused) {
        refuse(failure, *refused);
        Q_EMIT changed();
    }
    return !refused;
}

void BackupOperations::ask(const QString& question, const QString& action, Words words,
                           Prepare prepare) {
    m_prepare = std::move(prepare);
    m_asked = std::move(words);
    Q_EMIT changed(); // the question gives the keyboard back to where it finds it
    Q_EMIT asked(question, action);
}

void BackupOperations::giveUp() {
    if (m_prepare) {
        // To let go of a large backup takes long as well.
        m_letGo = std::make_unique<storage::BackgroundTask>(
            m_workspace.threads, m_workspace.runLoop,
            [given = std::exchange(m_prepare, nullptr)](Work&) mutable { given = nullptr; },
            [this](const std::future<void>&) { m_letGo.reset(); });
    }
}

void BackupOperations::confirm() {
    auto prepare = std::exchange(m_prepare, nullptr);
    // Something may have been typed since the question.
    if (prepare && !isUnderWay() && mayBegin()) {
        start(m_asked, std::move(prepare), [this](PreparedRestore prepared) {
            m_prepared = std::make_shared<PreparedRestore>(std::move(prepared));
            m_waits = 0;
            m_rounds = 0;
            replace();
        });
    }
}

void BackupOperations::replace() {
    Work work(
        [this](const storage::Progress& progress) {
            m_doing = tr("Replacing your boards and entries");
            m_progress = progress;
            Q_EMIT changed();
        },
        [this] { return m_isCancelled; });
    std::optional<storage::Restored> restored;
    try {
        restored = m_workspace.backup.finish(*m_prepared, m_workspace.now(), work);
    } catch (const store::StoreError& error) {
        if (error.which() != store::StoreErrorCase::busy || !m_prepared->backup ||
            ++m_waits > kWaits) {
            throw;
        }
        m_doing = tr("Waiting for another program");
        m_progress = {.stage = storage::Stage::checking};
        m_timer =
            m_workspace.runLoop.callAfter(kBetweenTries, [this] { end([this] { replace(); }); });
        return;
    }
    if (restored) {
        tellReplaced(std::exchange(m_prepared, nullptr)->kind, *restored);
    } else {
        prepareAgain();
    }
}

void BackupOperations::prepareAgain() {
    if (++m_rounds > kRounds) {
        storage::refuseChanged(m_prepared->kind);
    }
    start(
        {tr("Looking at what was saved meanwhile"), m_failure},
        [prepared = m_prepared, store = m_workspace.context.container().configuration().file,
         &log = m_workspace.log](Work& work) {
            storage::followRevision(*prepared, *storage::openForReading(store, log), work);
            return true;
        },
        [this](bool) { replace(); });
}

void BackupOperations::tellReplaced(PreparedRestore::Kind kind, const storage::Restored& restored) {
    m_answer.done = kind == PreparedRestore::Kind::undo
                        ? tr("The import was taken back. What it brought is kept locally.")
                        : tr("Backup restored. A recovery copy of the previous data is kept "
                             "locally.");
    if (restored.snapshot != recoveryFile()) {
        m_answer.done += QLatin1Char(' ') + tr("It is in %1.").arg(folderText(restored.snapshot));
    }
    // It is done, whatever becomes of showing it.
    try {
        m_windows.storeReplaced();
    } catch (const std::exception& error) {
        base::Logger(m_workspace.log, "Backup")
            .warning(std::string("After a restore: ") + error.what());
    }
}

void BackupOperations::refuse(const QString& failure, const QString& reason) {
    m_answer = {.refusal = failure + QLatin1Char('\n') + reason};
}

void BackupOperations::cancel() {
    m_isCancelled = true;
    if (m_task) {
        m_task->cancel();
    }
}

} // namespace korvex::ui
