// How long the window holds an event up while an automatic backup of 100,000 formatted texts, 100
// MB, is made: the longest that a timer which is always due had to wait for its turn, with the
// board of these texts in sight and the settings, which show how far it is. Against one frame of a
// screen. "idle" is the same while nothing is done.

#include "services/Collaborators.h"
#include "storage/BackupService.h"
#include "support/BenchWindow.h"
#include "support/Frames.h"
#include "support/LargeBackup.h"
#include "ui/settings/SettingsWindow.h"

#include <QAction>
#include <QTimer>

#include <optional>
#include <stdexcept>
#include <utility>

namespace {

using namespace korvex;
using Clock = std::chrono::steady_clock;

constexpr int kBackupsPane = 2;
/// The new backup is looked at after it has been made.
constexpr std::chrono::seconds kAfterwards{1};
constexpr std::chrono::seconds kIdle{5};

void fill(bench::OpenStore& store) {
    services::NoReminders reminders;
    services::NoWidgets widgets;
    base::StandardErrorLog log(base::LogLevel::error);
    storage::Work work;
    const auto snapshot = store.container().configuration().file.parent_path() / "snapshot";
    storage::BackupService(store.context(), reminders, widgets, log)
        .restore(bench::largeBackup(), snapshot, bench::kNow, work);
}

/// The times between the turns that the timer gets, in seconds: what any event waits that comes
/// just after one.
template <typename Condition>
std::vector<double> waitsWhile(Condition&& goesOn) {
    std::vector<double> waits;
    auto last = Clock::now();
    QTimer timer;
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, &timer, [&] {
        const auto now = Clock::now();
        waits.push_back(std::chrono::duration<double>(now - last).count());
        last = now;
    });
    timer.start(1);
    while (goesOn()) {
        QApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return waits;
}

std::vector<double> waitsFor(Clock::duration time) {
    return waitsWhile([end = Clock::now() + time] { return Clock::now() < end; });
}

/// The board in sight, the settings over it, and a folder for the backups.
class Daily {
public:
    Daily() : m_window(fill), m_backups(m_window.workspace().automaticBackups) {
        auto& window = m_window.window();
        window.findChild<ui::Navigation*>()->openBoard(*m_window.boards().back());
        for (auto* const action : window.findChildren<QAction*>()) {
            if (action->shortcut() == QKeySequence(Qt::CTRL | Qt::Key_Comma)) {
                action->trigger();
            }
        }
        for (auto* const each : QApplication::topLevelWidgets()) {
            if (auto* const settings = qobject_cast<ui::SettingsWindow*>(each)) {
                settings->showPane(kBackupsPane);
            }
        }
        m_backups.chooseFolder(m_folder.path());
        bench::settle();
    }

    std::vector<double> backUp() {
        std::optional<Clock::time_point> end;
        auto waits = waitsWhile([&, hasBegun = false]() mutable {
            if (!std::exchange(hasBegun, true)) {
                m_backups.backUpNow(); // counts too
            }
            if (!m_backups.isRunning() && !end) {
                end = Clock::now() + kAfterwards;
            }
            return !end || Clock::now() < *end;
        });
        if (const auto& failure = m_backups.errorMessage()) {
            throw std::runtime_error(*failure + " " + m_backups.errorReason());
        }
        return waits;
    }

private:
    bench::Scratch m_folder;
    bench::BenchWindow m_window;
    storage::AutomaticBackupService& m_backups;
};

void whileBackedUp(benchmark::State& state) {
    bench::application();
    Daily daily;
    for (auto _ : state) {
        bench::report(state, daily.backUp());
    }
}

void idle(benchmark::State& state) {
    bench::application();
    const Daily daily;
    for (auto _ : state) {
        bench::report(state, waitsFor(kIdle));
    }
}

const bool kAreAdded = [] {
    bench::add("korvex", whileBackedUp);
    bench::add("idle", idle);
    bench::addFrame();
    return true;
}();

} // namespace
