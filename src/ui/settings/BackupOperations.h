#pragma once

#include "base/Signal.h"
#include "storage/BackgroundTask.h"
#include "storage/BackupService.h"
#include "ui/workspace/Workspace.h"

#include <QObject>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace korvex::ui {

/// What the windows in which entries are edited do for who replaces the store under them.
struct EditingWindows {
    /// Stores what is being edited. Says why that could not be done.
    std::function<std::optional<QString>()> settleEdits;
    /// Says, at once, that all windows are held up, until what it gives ends.
    std::function<base::Subscription()> holdUp;
    /// Shows what the store holds by now; what could not be stored is offered there.
    std::function<void()> storeReplaced;
};

/// Exports the store, replaces it by a backup and takes that back, as its user goes through it: one
/// at a time, with a question before anything is replaced, and on a thread of its own but for the
/// replacement. Main thread; what it does ends with it.
class BackupOperations final : public QObject {
    Q_OBJECT

public:
    BackupOperations(const Workspace& workspace, EditingWindows windows, QObject* parent);

    /// Stores what is being edited; where that cannot be done the answer says so.
    bool mayBegin();
    /// To what becomes of the name that was chosen (`BackupPlaces::completed`).
    void exportTo(const std::filesystem::path& chosen);
    /// Reads the backup, then asks.
    void import(const std::filesystem::path& file);
    /// Asks whether the last replacement is to be taken back, which brings what `kept` says and
    /// nothing else.
    void takeBack(const storage::BackupSummary& kept);
    /// The answers to a question.
    void confirm();
    void giveUp();
    /// Ends what is under way, soon. What has not advanced for so long after that, or did not for
    /// minutes before, waits for a place that does not answer, and is left to itself.
    void cancel(std::chrono::seconds patience = storage::kLongestSilenceAfterCancel);

    bool isUnderWay() const { return m_task || m_prepared; }
    /// What of it comes to nothing if the program ends now; empty while nothing is under way.
    QString loss() const;
    /// Nothing is under way, and this is a store that can be replaced.
    bool mayImport() const;
    /// What is under way, and how far it is.
    QString doing() const;
    const storage::Progress& progress() const { return m_progress; }

    /// What came of the last operation; all empty while one is under way, and before the first.
    struct Answer {
        QString done;
        QString refusal;
    };
    const Answer& answer() const { return m_answer; }

    /// Where what the last import replaced is kept, if there was one.
    std::filesystem::path recoveryFile() const;

Q_SIGNALS:
    /// Something else is under way, or it is further, or there is an answer.
    void changed();
    /// `confirm` or `giveUp` is to be called.
    void asked(const QString& question, const QString& action);
    /// The store and what is kept of the former one may be others.
    void ended();

private:
    using Prepare = std::function<storage::PreparedRestore(storage::Work&, base::Instant now)>;
    enum class Kind { exporting, importing, takingBack };
    struct Words {
        Kind kind = Kind::exporting;
        QString doing;
        /// Said when it fails, above the reason.
        QString failure;
        /// Said when the store is replaced.
        QString done = {};
    };

    template <typename Function, typename Done>
    void start(Words words, Function work, Done done);
    void ask(const QString& question, const QString& action, Words words, Prepare prepare);
    /// What is prepared becomes the store, if nothing has come in between.
    void replace();
    std::optional<storage::Restored> finish();
    /// Somebody has saved something since it was prepared.
    void prepareAgain();
    void expectAdvance();
    /// Nothing on a thread has advanced for minutes.
    bool isSilent() const { return m_task && !m_advance; }
    /// The thread goes on alone, if it does, as far as to where it notices that nobody waits for
    /// it.
    void leave();
    /// The last of what is under way, on this thread; what it fails for is the answer.
    void end(const std::function<void()>& work);
    void tellReplaced(const storage::Restored& restored);
    void refuse(const QString& failure, const QString& reason);
    /// To let go of a large backup takes long, so it is done in the background.
    void letGo(std::shared_ptr<void> backup);
    /// Whether the store can be replaced; else the answer says why not.
    bool mayReplace(const QString& failure);

    const Workspace& m_workspace;
    EditingWindows m_windows;
    /// Of what was under way last.
    Kind m_kind = Kind::exporting;
    QString m_doing;
    QString m_failure;
    storage::Progress m_progress;
    Answer m_answer;
    /// What was asked about; null while nothing is.
    Prepare m_prepare;
    /// Of what was asked about last.
    Words m_asked;
    /// On its way into the store; null for none.
    std::shared_ptr<storage::PreparedRestore> m_prepared;
    /// How often another program had the store, and how often it had saved something.
    int m_waits = 0;
    int m_followed = 0;
    std::unique_ptr<base::RunLoop::Timer> m_timer;
    bool m_isCancelled = false;
    /// With what is under way.
    std::chrono::seconds m_patience = storage::kLongestSilence;
    /// Null where nothing runs on a thread.
    std::unique_ptr<storage::BackgroundTask> m_task;
    /// Fires when that has not advanced for too long; null from then on, until it advances.
    std::unique_ptr<base::RunLoop::Timer> m_advance;
};

} // namespace korvex::ui
