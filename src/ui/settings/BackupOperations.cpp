#include "ui/settings/BackupOperations.h"

#include "storage/ErrorsOnly.h"
#include "ui/kit/words/Refusal.h"

#include <utility>

namespace korvex::ui {

namespace {

namespace fs = std::filesystem;
using storage::PreparedRestore;
using storage::Work;

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
    m_progress = {};
    m_answer = {};
    m_task = std::make_unique<storage::BackgroundTask>(
        m_workspace.threads, m_workspace.runLoop,
        [work = storage::withErrorsOnly(std::move(work))](
            Work& mine) mutable -> std::optional<Result> {
            try {
                return work(mine);
            } catch (const storage::Cancelled&) {
                return std::nullopt;
            }
        },
        [this, failure = words.failure, done](std::future<std::optional<Result>> outcome) {
            m_task.reset();
            const auto refused = refusal([&] {
                if (auto result = outcome.get()) {
                    done(std::move(*result));
                } else {
                    m_answer.done = tr("Cancelled. Nothing was changed.");
                }
            });
            m_isReplacing = false;
            if (refused) {
                refuse(failure, *refused);
            }
            Q_EMIT changed();
        },
        [this](const storage::Progress& progress) {
            m_progress = progress;
            Q_EMIT changed();
        });
    Q_EMIT changed();
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
            backup::validate(document, log);
            return std::make_shared<backup::BackupDocument>(std::move(document));
        },
        [this, words](const std::shared_ptr<backup::BackupDocument>& document) {
            const auto question =
                tr("Importing this backup will replace your current boards, text entries and "
                   "todos with %n (entry|entries). A local recovery backup will be saved first.",
                   nullptr, static_cast<int>(document->entries.size()));
            ask(question, tr("Import"), words,
                [document, store = m_workspace.context.container().configuration().file,
                 recovery = recoveryFile(), now = m_workspace.now(),
                 &log = m_workspace.log](Work& work) {
                    return storage::prepareRestore(std::move(*document),
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
            .arg(toQString(m_workspace.dates.formats().dayAndShortTime(kept.exportedAt)));
    ask(question, tr("Take back"), words,
        [store = m_workspace.context.container().configuration().file, recovery = recoveryFile(),
         now = m_workspace.now(), &log = m_workspace.log](Work& work) {
            return storage::prepareUndo(*storage::openForReading(store, log), recovery, now, log,
                                        work);
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
        start(m_asked, std::move(prepare),
              [this](PreparedRestore prepared) { replace(std::move(prepared)); });
    }
}

void BackupOperations::replace(PreparedRestore prepared) {
    const auto isUndo = prepared.snapshot.becomes.has_value();
    m_isReplacing = true;
    m_doing = tr("Replacing your boards and entries");
    const auto tell = [this](const storage::Progress& progress) {
        m_progress = progress;
        Q_EMIT changed();
    };
    tell({.stage = storage::Stage::replacing});
    Work work(tell);
    m_workspace.backup.finish(std::move(prepared), m_workspace.now(), work);
    m_isReplacing = false;
    m_answer.done = isUndo ? tr("The import was taken back. What it brought is kept locally.")
                           : tr("Backup restored. A recovery copy of the previous data is kept "
                                "locally.");
    m_windows.storeReplaced();
    Q_EMIT replaced();
}

void BackupOperations::refuse(const QString& failure, const QString& reason) {
    m_answer = {.refusal = failure + QLatin1Char('\n') + reason};
}

void BackupOperations::cancel() {
    if (m_task) {
        m_task->cancel();
    }
}

} // namespace korvex::ui
