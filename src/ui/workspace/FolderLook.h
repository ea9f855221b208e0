#pragma once

#include "base/RunLoop.h"
#include "storage/BackgroundTask.h"
#include "ui/kit/overlays/FileQuestion.h"

#include <QString>

#include <functional>
#include <memory>

namespace korvex::ui {

/// Asks for files in a folder that was remembered. That may be on a share that does not answer by
/// now, and a look there may take for ever: it is looked at on another thread, and asked among the
/// user's documents where there is no answer in a moment. Main thread; what it is given outlives
/// it.
class FolderLook {
public:
    FolderLook(storage::BackgroundThreads& threads, base::RunLoop& runLoop)
        : m_threads(threads), m_runLoop(runLoop) {}

    /// As `FileQuestion::ask`, a moment later where the question names a folder: not where the
    /// asker is not in sight any more then, nor where something else is asked before.
    void ask(FileQuestion question, QWidget& asker, FileQuestion::Receive receive);

private:
    void look();
    void open(const QString& folder);

    storage::BackgroundThreads& m_threads;
    base::RunLoop& m_runLoop;
    /// Asks in the folder that it is given; null where nobody waits for that.
    std::function<void(const QString& folder)> m_ask;
    /// The one that is looked at; the look is null once it has answered.
    QString m_folder;
    std::unique_ptr<storage::BackgroundTask> m_look;
    /// Null where nobody waits any longer.
    std::unique_ptr<base::RunLoop::Timer> m_patience;
};

} // namespace korvex::ui
