#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"
#include "app/QuickEntryRequest.h"
#include "app/SettingsWriter.h"
#include "app/StoreLocation.h"
#include "app/UserFolders.h"
#include "base/Clock.h"
#include "desktop/Arguments.h"
#include "desktop/Background.h"
#include "desktop/Hotkey.h"
#include "desktop/LastWindow.h"
#include "desktop/Launches.h"
#include "desktop/MainWindowOwner.h"
#include "desktop/QuickEntry.h"
#include "desktop/Reminders.h"
#include "desktop/StandIns.h"
#include "desktop/StoreOpening.h"
#include "desktop/Watchers.h"
#include "platform/bus/Bus.h"
#include "platform/javascriptcore/ScriptModule.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/system/SingleInstance.h"
#include "platform/system/StartupTrace.h"
#include "platform/system/TerminationWatcher.h"
#include "platform/systemd/JournalLog.h"
#include "storage/BackgroundThreads.h"
#include "ui/kit/style/QuietStyle.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/theme/Theme.h"
#include "ui/kit/words/Language.h"
#include "ui/kit/words/Refusal.h"
#include "ui/workspace/ProgramName.h"
#include "ui/workspace/WorkspaceOwner.h"

#include <QApplication>
#include <QTimer>

#include <chrono>
#include <cstdlib>
#include <optional>

#ifdef KORVEX_GALLERY
#include "ui/gallery/Gallery.h"
#endif

using namespace korvex;

namespace {

constexpr int kStoreUnusable = 3;
constexpr std::chrono::seconds kLongestStart{2};
constexpr std::chrono::seconds kLongestEnd{2};
/// The bus delivers what it starts a program for as soon as that has its name.
constexpr std::chrono::seconds kUntilAsked{5};

/// Until the user ends it; the exit status.
int run(int argc, char* argv[], base::LogSink& log, storage::BackgroundThreads& threads) {
    const platform::system::StartupTrace trace;
    desktop::Arguments arguments(argc, argv);
    const auto directory = app::dataDirectory(arguments.dataDirectory());
    const auto file = app::storeFile(directory);
    platform::system::SingleInstance instance(directory);
    if (arguments.areClear() && instance.handOver(arguments.launch())) {
        return 0;
    }
    app::FileUserDefaults defaults(app::FileUserDefaults::defaultFile(), &log);
    app::AppPreferences preferences(defaults, log);
    const auto isUsersOwn = app::isUsersOwn(directory);
    const auto boards =
        isUsersOwn ? ui::Navigation::LastBoard::kept : ui::Navigation::LastBoard::forgotten;
    const auto missing = app::missingStoreNotice(directory); // opening makes a new one
    const auto open = [&] {
        return desktop::StoreOpening(
            file,
            {.isBoard = arguments.launch().action != app::kQuickEntryAction,
             .board = ui::Navigation::launchBoardID(preferences, boards)},
            log);
    };
    std::optional<desktop::StoreOpening> opening;
    if (arguments.areClear()) {
        opening = open();
    }

    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("korvex-desktop"));
    QApplication::setApplicationDisplayName(QStringLiteral("Korvex"));
    QApplication::setDesktopFileName(QLatin1String(app::kDesktopName));
    QApplication::setWindowIcon(ui::IconSet::program());
    const auto locale = ui::setUpLanguage(application);
    arguments.answer(application);
#ifdef KORVEX_GALLERY
    if (const auto look = arguments.gallery()) {
        return ui::runGallery(*look);
    }
#endif
    if (!arguments.areClear() && instance.handOver(arguments.launch())) {
        return 0;
    }
    platform::qt::QtRunLoop runLoop;
    desktop::EarlyLaunches early(instance);
    instance.listen(runLoop);
    ui::Theme theme(preferences);
    const ui::InstalledStyle style(theme);
    theme.loadFonts(); // while the store is being read

    const desktop::StandIns standIns({.storeFile = file,
                                      .program = ui::programName(directory),
                                      .theme = theme,
                                      .instance = instance});
    auto taken = standIns.takeStore(opening ? *std::move(opening) : open(), open);
    if (!taken) {
        instance.close(); // nobody is there to come forward any more
        return kStoreUnusable;
    }
    auto& store = *taken;
    if (isUsersOwn) { // of no other store do the preferences tell
        for (const auto& [from, to] : store.mergedBoards) {
            preferences.remapBoard(from, to);
        }
    }
    auto& container = *store.container;
    const app::SettingsWriter writer(defaults, runLoop);
    const base::SystemClock clock;
    const platform::javascriptcore::ScriptModule script(
        platform::javascriptcore::ScriptModule::defaultFile(), log);
    platform::bus::Bus bus(platform::bus::WhichBus::session, runLoop, log);
    desktop::Reminders reminders(
        bus, runLoop, file,
        isUsersOwn ? desktop::Reminders::Store::usersOwn : desktop::Reminders::Store::another, log);
    std::optional<desktop::Hotkey> hotkey;
    if (isUsersOwn) { // it captures into that store
        hotkey.emplace(preferences, runLoop, log);
    }
    const ui::WorkspaceOwner owner({.container = container,
                                    .context = std::move(store.context),
                                    .isUsersOwn = isUsersOwn,
                                    .preferences = preferences,
                                    .defaults = defaults,
                                    .clock = clock,
                                    .runLoop = runLoop,
                                    .threads = threads,
                                    .log = log,
                                    .reminders = reminders.center(),
                                    .widgets = reminders.widgets(),
                                    .quickEntry = hotkey ? &hotkey->setup() : nullptr,
                                    .locale = locale,
                                    .makeEngine = script.engineFactory(),
                                    .resources = script.resources(),
                                    .state = app::userFolder("XDG_STATE_HOME", ".local/state")});
    const auto& workspace = owner.workspace();
    reminders.follow(workspace.context);
    while (const auto refused =
               ui::refusal([&] { workspace.boards.initializeDefaultBoards(clock.now()); })) {
        if (workspace.boards.inboxBoard()) {
            break;
        }
        if (standIns.showError(*refused) == desktop::StandIns::AfterError::quit) {
            instance.close();
            return kStoreUnusable;
        }
    }

    using StartedFor = desktop::Background::StartedFor;
    const desktop::Background background(preferences, workspace.quickEntry,
                                         arguments.isBackground() ? StartedFor::background
                                                                  : StartedFor::windows);
    desktop::LastWindow lastWindow;
    lastWindow.setStays([&] { return hotkey && hotkey->isStarted() && background.stays(); });
    desktop::MainWindowOwner mainWindow(workspace, theme);
    desktop::QuickEntry quickEntry(workspace, theme);
    desktop::Launches launches(mainWindow, quickEntry, runLoop);
    desktop::Watchers watchers({.container = container,
                                .workspace = workspace,
                                .theme = theme,
                                .mainWindow = mainWindow,
                                .launches = launches,
                                .bus = bus});
    for (const auto& launch : early.take()) {
        launches.take(launch);
    }
    const auto launching =
        instance.launched().connect([&](const app::Launch& launch) { launches.take(launch); });
    // What need not stand before there is something to be seen.
    const auto startRest = [&] {
        watchers.start();
        // A desktop may ask the user for it, in the place of a panel that is there for itself; and
        // once it is there the program may stay.
        if (hotkey && (arguments.isBackground() || mainWindow.windowIfMade())) {
            hotkey->start([&](const app::HotkeyPress& press) { launches.take(press); });
        }
    };
    mainWindow.setWhenMade([&](ui::MainWindow& window) {
        QObject::connect(&window, &ui::MainWindow::quitAccepted, &lastWindow, [&] {
            if (quickEntry.mayEnd()) {
                QApplication::exit();
            }
        });
        QObject::connect(&window, &ui::MainWindow::firstPainted, &watchers, [&] {
            trace.report("first paint");
            startRest();
            window.offerDrafts();
        });
        QTimer::singleShot(kLongestStart, &watchers, startRest); // also of one that comes later
    });
    const auto capturing = quickEntry.ready().connect([&] {
        trace.report("quick entry");
        QTimer::singleShot(0, &watchers, startRest); // once it is painted
    });
    // A window that starts out of sight, minimised or on another desktop, is not painted.
    const auto isOutOfSight = arguments.isBackground() || arguments.isForBus();
    QTimer::singleShot(isOutOfSight ? std::chrono::seconds(0) : kLongestStart, &watchers,
                       startRest);
    if (arguments.isForBus()) {
        QTimer::singleShot(kUntilAsked, &watchers, [&] { launches.beginUnlessAsked(); });
    }
    const auto storeAll = [&] {
        quickEntry.keepDraft();
        if (auto* const window = mainWindow.windowIfMade()) {
            window->storeAll();
        }
    };
    // A log-out asks every window first and ends the programs then.
    QObject::connect(
        &application, &QGuiApplication::commitDataRequest, &watchers,
        [&] {
            storeAll();
            defaults.writeLeft();
        },
        Qt::DirectConnection);
    platform::system::TerminationWatcher termination(runLoop);
    const auto ending = termination.requested().connect([&] {
        storeAll();
        QApplication::exit();
    });
    auto notices = std::move(store.notices);
    if (missing) {
        notices.push_back(*missing);
    }
    mainWindow.setNotices(notices);
    const auto captured = quickEntry.hidden().connect([&] {
        if (!notices.empty() && !arguments.isBackground() && !mainWindow.windowIfMade()) {
            mainWindow.window().show(); // only it can say them, and the panel had the keyboard
        }
        lastWindow.look();
    });
    launches.begin(arguments.launch());
    const auto status = QApplication::exec();
    instance.close();
    // What a long day left in the journal moves into the store file; where that fails the journal
    // keeps it.
    if (const auto refused = ui::refusal([&] { container.checkpoint(); })) {
        log.write(base::LogLevel::warning, "Desktop", refused->toStdString());
    }
    return status;
}

} // namespace

int main(int argc, char* argv[]) {
    base::StandardErrorLog standardError(base::LogLevel::warning);
    platform::systemd::JournalLog log(standardError);
    storage::BackgroundThreads threads;
    const auto status = run(argc, argv, log, threads);
    if (!threads.waitUntilEnded(kLongestEnd)) {
        // One waits for a folder that does not answer, and uses the log when that does.
        std::_Exit(status);
    }
    return status;
}
