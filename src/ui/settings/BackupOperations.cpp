#include "ui/settings/BackupOperations.h"

#include "storage/ErrorsOnly.h"
#include "storage/RestoreWords.h"
#include "store/StoreError.h"
#include "ui/kit/words/FolderText.h"
#include "ui/kit/words/Refusal.h"
#include "ui/settings/BackupPlaces.h"
#include "ui/settings/BackupWords.h"

#include <utility>

namespace korvex::ui {

namespace {

namespace fs = std::filesystem;
using storage::PreparedRestore;
using storage::Work;

/// While another program writes, this comes again a moment later.
constexpr std::chrono::milliseconds kBetweenTries{250};
constexpr int kWaits = 20;

/// While it lives, steps wait for no other program.
class NoPatience {
public:
    explicit NoPatience(store::ModelContainer& container)
        : m_container(container), m_before(container.patience()) {
        container.setPatience(std::chrono::milliseconds::zero());
    }
    ~NoPatience() { m_container.setPatience(m_before); }
    NoPatience(const NoPatience&) = delete;
    NoPatience& operator=(const NoPatience&) = delete;

private:
    store::ModelContainer& m_container;
    std::chrono::milliseconds m_before;
};

} // namespace

BackupOperations::BackupOperations(const Workspace& workspace, EditingWindows windows,
                                   QObject* parent)
    : QObject(parent), m_workspace(workspace), m_windows(std::move(windows)) {}

fs::path BackupOperations::recoveryFile() const {
    return storage::recoveryFile(
        m_workspace.context.container().configuration().file.parent_path());
}

bool BackupOperations::mayImport() const {
    return !isUnderWay() && !storage::BackupService::isCloudBacked(m_workspace.context.container());
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
    m_kind = words.kind;
    m_doing = words.doing;
    m_failure = words.failure;
    m_progress = {};
    m_answer = {};
    m_isCancelled = false;
    m_patience = storage::kLongestSilence;
    m_task = std::make_unique<storage::BackgroundTask>(
        m_workspace.threads, m_workspace.runLoop, std::move(work),
        [this, done](std::future<Result> outcome) {
            m_task.reset();
            m_advance.reset();
            end([&] { done(outcome.get()); });
        },
        [this](const storage::Progress& progress) {
            m_progress = progress;
            expectAdvance();
            Q_EMIT changed();
        });
    expectAdvance();
    Q_EMIT changed();
}

void BackupOperations::expectAdvance() {
    m_advance = m_workspace.runLoop.callAfter(m_patience, [this] {
        m_advance.reset();
        if (m_isCancelled) {
            leave();
        } else {
            Q_EMIT changed();
        }
    });
}

void BackupOperations::leave() {
    m_task.reset();
    if (m_prepared) {
        letGo(std::exchange(m_prepared, nullptr)); // the thread may hold it too
    }
    m_answer.done = m_kind == Kind::exporting
                        ? tr("Cancelled. The chosen folder does not answer: whether the file is "
                             "there, or still appears, is not known.")
                        : tr("Cancelled. Nothing was changed.");
    Q_EMIT changed();
    Q_EMIT ended();
}

QString BackupOperations::doing() const {
    return m_isCancelled ? tr("Cancelling")
           : isSilent()  ? tr("%1: no answer for minutes").arg(m_doing)
                         : m_doing;
}

QString BackupOperations::loss() const {
    if (!isUnderWay()) {
        return {};
    }
    switch (m_kind) {
    case Kind::exporting:
        return tr("A backup is being exported. If Korvex quits now, that is cancelled and "
                  "nothing is exported.");
    case Kind::importing:
        return tr("A backup is being imported. If Korvex quits now, that is cancelled and your "
                  "boards and entries stay as they are.");
    case Kind::takingBack:
        return tr("The last replacement is being taken back. If Korvex quits now, that is "
                  "cancelled and your boards and entries stay as they are.");
    }
    return {};
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
        if (auto prepared = std::exchange(m_prepared, nullptr)) {
            prepared->folder.reset(); // at once: the next replacement asks for it
            letGo(std::move(prepared));
        }
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

void BackupOperations::exportTo(const fs::path& chosen) {
    if (isUnderWay() || !mayBegin()) {
        return;
    }
    start(
        {Kind::exporting, tr("Exporting"),
         tr("Could not export the backup. Check the selected location and try again.")},
        [chosen, store = m_workspace.context.container().configuration().file,
         now = m_workspace.now(), &log = m_workspace.log](Work& work) {
            return storage::exportBackup(*storage::openForReading(store, log),
                                         BackupPlaces::completed(chosen), now, log, work);
        },
        [this](const storage::BackupSummary&) { m_answer.done = tr("Backup exported."); });
}

void BackupOperations::import(const fs::path& file) {
    const Words words{Kind::importing, tr("Preparing the import"),
                      tr("Could not restore the backup. Your previous data has been retained."),
                      tr("Backup restored. A recovery copy of the previous data is kept locally.")};
    if (isUnderWay() || !mayBegin() || !mayReplace(words.failure)) {
        return;
    }
    start(
        {Kind::importing, tr("Reading the backup"),
         tr("Could not read this backup. Your current data has not been changed.")},
        [file, &log = m_workspace.log](Work& work) {
            auto document = storage::readBackup(file, work);
            work.begin(storage::Stage::checking);
            return std::make_shared<storage::ValidBackup>(std::move(document), log);
        },
        [this, words](std::shared_ptr<storage::ValidBackup> backup) {
            if (m_isCancelled) {
                letGo(std::move(backup));
                throw storage::Cancelled();
            }
            const auto question =
                tr("Importing this backup will replace your current boards, text entries and "
                   "todos with %Ln (entry|entries). A local recovery backup will be saved first.",
                   nullptr, static_cast<int>(backup->document().entries.size()));
            ask(question, tr("Import"), words,
                [backup = std::move(backup),
                 store = m_workspace.context.container().configuration().file,
                 recovery = recoveryFile(), &log = m_workspace.log](Work& work, base::Instant now) {
                    return storage::prepareRestore(std::move(*backup),
                                                   *storage::openForReading(store, log), recovery,
                                                   now, log, work);
                });
        });
}

void BackupOperations::takeBack(const storage::BackupSummary& kept) {
    const auto filled = [contents = contentsText(kept),
                         moment = momentText(kept.exportedAt, m_workspace.dates)](
                            const char* text) { return translated(text).arg(contents, moment); };
    const Words words{Kind::takingBack, tr("Preparing to take it back"),
                      tr("Could not take this back. Your data is as it was."),
                      filled(storage::kTakenBack)};
    if (isUnderWay() || !mayBegin() || !mayReplace(words.failure)) {
        return;
    }
    ask(filled(storage::kTakeBackQuestion), tr("Take back"), words,
        [store = m_workspace.context.container().configuration().file, recovery = recoveryFile(),
         asked = storage::AskedSnapshot{.exportedAt = kept.exportedAt, .entries = kept.entries},
         &log = m_workspace.log](Work& work, base::Instant now) {
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
    giveUp();
    m_prepare = std::move(prepare);
    m_asked = std::move(words);
    Q_EMIT changed(); // the question gives the keyboard back to where it finds it
    Q_EMIT asked(question, action);
}

void BackupOperations::giveUp() {
    if (m_prepare) {
        letGo(std::make_shared<Prepare>(std::exchange(m_prepare, nullptr)));
    }
}

void BackupOperations::letGo(std::shared_ptr<void> backup) {
    // Nobody waits for its end.
    const storage::BackgroundTask task(
        m_workspace.threads, m_workspace.runLoop,
        [given = std::move(backup)](Work&) mutable { given.reset(); }, {});
}

void BackupOperations::confirm() {
    // Something may have been typed since the question.
    if (!m_prepare || isUnderWay() || !mayBegin() || !mayReplace(m_asked.failure)) {
        giveUp();
        return;
    }
    start(
        m_asked,
        [prepare = std::exchange(m_prepare, nullptr), now = m_workspace.now()](Work& work) {
            return prepare(work, now);
        },
        [this](PreparedRestore prepared) {
            m_prepared = std::make_shared<PreparedRestore>(std::move(prepared));
            m_waits = 0;
            m_followed = 0;
            replace();
        });
}

std::optional<storage::Restored> BackupOperations::finish() {
    // For the store the timer does the waiting, or nobody could cancel it.
    std::optional<NoPatience> noPatience(m_workspace.context.container());
    std::optional<base::Subscription> isTold;
    Work work(
        [&](const storage::Progress& progress) {
            if (!isTold) {
                noPatience.reset();
                isTold = m_windows.holdUp();
            }
            m_doing = tr("Replacing your boards and entries");
            m_progress = progress;
            Q_EMIT changed();
        },
        [this] { return m_isCancelled; });
    return m_workspace.backup.finish(*m_prepared, m_workspace.now(), work);
}

void BackupOperations::replace() {
    std::optional<storage::Restored> restored;
    try {
        restored = finish();
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
        m_prepared.reset();
        tellReplaced(*restored);
    } else {
        prepareAgain();
    }
}

void BackupOperations::prepareAgain() {
    if (++m_followed > storage::BackupService::kFollowedRevisions) {
        storage::refuseChanged(m_prepared->kind);
    }
    start(
        {m_kind, tr("Looking at what was saved meanwhile"), m_failure},
        [prepared = m_prepared, store = m_workspace.context.container().configuration().file,
         &log = m_workspace.log](Work& work) {
            storage::followRevision(*prepared, *storage::openForReading(store, log), work);
            return true;
        },
        [this](bool) { replace(); });
}

void BackupOperations::tellReplaced(const storage::Restored& restored) {
    m_answer.done = m_asked.done;
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

void BackupOperations::cancel(std::chrono::seconds patience) {
    if (isSilent()) {
        leave();
        return;
    }
    if (m_isCancelled && patience <= m_patience) {
        return;
    }
    m_isCancelled = true;
    m_patience = patience;
    if (m_task) {
        m_task->cancel();
        expectAdvance();
    }
    Q_EMIT changed();
}

} // namespace korvex::ui
